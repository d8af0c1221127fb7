#pragma once

#include "platform/Accessibility.h"
#include "platform/scripted/DesktopWorld.h"
#include "platform/scripted/ScriptedElementReference.h"
#include "platform/scripted/Timeline.h"
#include "platform/scripted/TraceWriter.h"
#include "platform/scripted/VirtualClock.h"

#include <memory>

namespace vardel::scripted {

// Accessibility over the scenario's element trees. A call that would message an application fails
// with -25211 while the process is not trusted, with -25202 once the element is gone, and with
// -25204 after the messaging time-out of virtual time when the application does not respond. The
// pid and the time-out are properties of the reference itself and need no messaging.
class ScriptedAccessibility final : public Accessibility {
public:
    // Until something sets it, the global messaging time-out is the platform's default.
    static constexpr double defaultMessagingTimeout = 6;

    ScriptedAccessibility(DesktopWorld&, Timeline&, const VirtualClock&, TraceWriter&);

    bool isProcessTrusted() override;
    std::optional<AXUIElement> createApplication(ProcessIdentifier) override;
    std::optional<AXUIElement> createSystemWide() override;

    AXResult<Value> copyAttributeValue(const AXUIElement&, std::string_view attribute) override;
    AXResult<std::vector<std::string>> copyAttributeNames(const AXUIElement&) override;
    AXResult<std::vector<std::string>> copyActionNames(const AXUIElement&) override;
    AXResult<std::string> copyActionDescription(const AXUIElement&, std::string_view action) override;
    AXError performAction(const AXUIElement&, std::string_view action) override;
    AXError setAttributeValue(const AXUIElement&, std::string_view attribute, const Value&) override;
    AXResult<bool> isAttributeSettable(const AXUIElement&, std::string_view attribute) override;
    AXResult<int64_t> attributeValueCount(const AXUIElement&, std::string_view attribute) override;
    AXResult<ProcessIdentifier> pid(const AXUIElement&) override;
    AXResult<AXUIElement> copyElementAtPosition(const AXUIElement& application, float x, float y) override;
    AXError setMessagingTimeout(const AXUIElement&, float seconds) override;

private:
    // An element that an accessibility message reached; its tree stays alive while this is held.
    struct Reached {
        std::shared_ptr<ElementTree> tree;
        const ScriptedElementReference* reference;
        ScriptedElement& element() const { return reference->element(); }
    };

    AXResult<Reached> reach(const AXUIElement&);
    AXResult<Value> readAttribute(const AXUIElement&, std::string_view attribute);
    nlohmann::ordered_json elementFields(const Reached&) const;

    DesktopWorld& world_;
    Timeline& timeline_;
    const VirtualClock& clock_;
    TraceWriter& trace_;
    double globalMessagingTimeout_ = defaultMessagingTimeout;
};

} // namespace vardel::scripted
