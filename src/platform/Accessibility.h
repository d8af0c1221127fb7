#pragma once

#include "platform/AXUIElement.h"
#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vardel {

using ProcessIdentifier = int32_t;

// Accessibility error codes, with the platform's values.
using AXError = int32_t;
namespace AXErrorCode {
inline constexpr AXError success = 0;
inline constexpr AXError failure = -25200;
inline constexpr AXError illegalArgument = -25201;
inline constexpr AXError invalidUIElement = -25202;
inline constexpr AXError cannotComplete = -25204;
inline constexpr AXError attributeUnsupported = -25205;
inline constexpr AXError actionUnsupported = -25206;
inline constexpr AXError notImplemented = -25208;
inline constexpr AXError apiDisabled = -25211;
inline constexpr AXError noValue = -25212;
} // namespace AXErrorCode

template<typename T> struct AXResult {
    AXError error = AXErrorCode::success;
    std::optional<T> value;

    static AXResult failure(AXError error) { return { error, std::nullopt }; }
    static AXResult success(T value) { return { AXErrorCode::success, std::move(value) }; }
    bool ok() const { return error == AXErrorCode::success && value.has_value(); }
};

// The desktop's accessibility interface: other applications' element trees, read synchronously and
// bounded by the messaging time-out.
class Accessibility {
public:
    virtual ~Accessibility() = default;

    // Whether this process is trusted to use accessibility.
    virtual bool isProcessTrusted() = 0;

    virtual std::optional<AXUIElement> createApplication(ProcessIdentifier) = 0;
    virtual std::optional<AXUIElement> createSystemWide() = 0;

    virtual AXResult<Value> copyAttributeValue(const AXUIElement&, std::string_view attribute) = 0;
    virtual AXResult<std::vector<std::string>> copyAttributeNames(const AXUIElement&) = 0;
    virtual AXResult<std::vector<std::string>> copyActionNames(const AXUIElement&) = 0;
    virtual AXResult<std::string> copyActionDescription(const AXUIElement&, std::string_view action) = 0;
    virtual AXError performAction(const AXUIElement&, std::string_view action) = 0;
    virtual AXError setAttributeValue(const AXUIElement&, std::string_view attribute, const Value&) = 0;
    virtual AXResult<bool> isAttributeSettable(const AXUIElement&, std::string_view attribute) = 0;
    virtual AXResult<int64_t> attributeValueCount(const AXUIElement&, std::string_view attribute) = 0;
    virtual AXResult<ProcessIdentifier> pid(const AXUIElement&) = 0;
    // The deepest element of the application at a point in top-left-origin global coordinates.
    virtual AXResult<AXUIElement> copyElementAtPosition(const AXUIElement& application, float x, float y) = 0;
    // On the system-wide element this sets the time-out of every element without one of its own.
    virtual AXError setMessagingTimeout(const AXUIElement&, float seconds) = 0;
};

} // namespace vardel
