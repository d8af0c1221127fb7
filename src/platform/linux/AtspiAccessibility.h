#pragma once

#include "platform/Accessibility.h"
#include "platform/linux/AtspiCallGuard.h"
#include "platform/linux/AtspiSampleAnswers.h"
#include "platform/linux/X11WindowFacts.h"

#include <map>
#include <memory>

namespace vardel::linux_desktop {

// Other applications' element trees over AT-SPI2, with the attribute names the logic reads
// (docs/linux-desktop.md lists them and the role table). Windows are the application's frames; what
// AT-SPI cannot tell about them (full screen, the active one, titles left empty) comes from X11.
//
// Every call is bounded by the messaging time-out; AtspiCallGuard keeps a frozen application from
// costing a sample more than one time-out. What an application answered is remembered for the rest
// of the sample: a sample starts when the logic asks for an application element, and ends at the
// latest a short while later or at a write.
class AtspiAccessibility final : public Accessibility {
public:
    // Nothing when there is no accessibility bus. The facts may be nullptr.
    static std::unique_ptr<AtspiAccessibility> connect(X11WindowFacts* windowFacts);

    bool isProcessTrusted() override { return true; }
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
    // AT-SPI has one time-out for every call: only the system-wide element sets it; other elements
    // answer notImplemented.
    AXError setMessagingTimeout(const AXUIElement&, float seconds) override;

    // How many calls to applications this object has made, for measuring a sample's cost.
    uint64_t callCount() const { return guard_.callCount(); }

private:
    explicit AtspiAccessibility(X11WindowFacts*);

    X11WindowFacts* windowFacts_;
    AtspiCallGuard guard_;
    AtspiSampleAnswers answers_;
    // Application elements by pid, found once among the desktop's children.
    std::map<ProcessIdentifier, AXUIElement> applications_;
};

} // namespace vardel::linux_desktop
