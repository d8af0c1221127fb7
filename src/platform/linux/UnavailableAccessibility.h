#pragma once

#include "platform/Accessibility.h"

namespace vardel::linux_desktop {

// Accessibility without an accessibility bus: untrusted, so that the logic reads windows from the
// window list; every call answers apiDisabled.
class UnavailableAccessibility final : public Accessibility {
public:
    bool isProcessTrusted() override { return false; }
    std::optional<AXUIElement> createApplication(ProcessIdentifier) override { return std::nullopt; }
    std::optional<AXUIElement> createSystemWide() override { return std::nullopt; }
    AXResult<Value> copyAttributeValue(const AXUIElement&, std::string_view) override { return disabled<Value>(); }
    AXResult<std::vector<std::string>> copyAttributeNames(const AXUIElement&) override
    {
        return disabled<std::vector<std::string>>();
    }
    AXResult<std::vector<std::string>> copyActionNames(const AXUIElement&) override
    {
        return disabled<std::vector<std::string>>();
    }
    AXResult<std::string> copyActionDescription(const AXUIElement&, std::string_view) override
    {
        return disabled<std::string>();
    }
    AXError performAction(const AXUIElement&, std::string_view) override { return AXErrorCode::apiDisabled; }
    AXError setAttributeValue(const AXUIElement&, std::string_view, const Value&) override
    {
        return AXErrorCode::apiDisabled;
    }
    AXResult<bool> isAttributeSettable(const AXUIElement&, std::string_view) override { return disabled<bool>(); }
    AXResult<int64_t> attributeValueCount(const AXUIElement&, std::string_view) override { return disabled<int64_t>(); }
    AXResult<ProcessIdentifier> pid(const AXUIElement&) override { return disabled<ProcessIdentifier>(); }
    AXResult<AXUIElement> copyElementAtPosition(const AXUIElement&, float, float) override
    {
        return disabled<AXUIElement>();
    }
    AXError setMessagingTimeout(const AXUIElement&, float) override { return AXErrorCode::apiDisabled; }

private:
    template<typename T> static AXResult<T> disabled() { return AXResult<T>::failure(AXErrorCode::apiDisabled); }
};

} // namespace vardel::linux_desktop
