#pragma once

#include "platform/Accessibility.h"
#include "platform/Value.h"

#include <memory>
#include <optional>
#include <string>

namespace vardel {

// Keys of a power-management assertion record, as the platform names them.
namespace AssertionKey {
inline constexpr const char* level = "AssertLevel";
inline constexpr const char* type = "AssertType";
inline constexpr const char* trueType = "AssertionTrueType";
inline constexpr const char* name = "AssertName";
inline constexpr const char* onBehalfOfPID = "AssertionOnBehalfOfPID";
inline constexpr const char* processName = "Process Name";
inline constexpr const char* startedAt = "AssertStartWhen";
inline constexpr const char* resourcesUsed = "ResourcesUsed";
} // namespace AssertionKey

struct AssertionsByProcess {
    // The platform's status; 0 is success.
    int status = 0;
    // The owning process id as decimal text → list of assertion records (dictionaries with the
    // AssertionKey keys). Nothing when the call failed. Shared with the platform rather than copied:
    // it is read every second and changes seldom.
    std::shared_ptr<const Value::Dictionary> assertions;
};

// Both dictionaries' records by process; a process in both keeps the records of each.
Value::Dictionary mergedAssertions(Value::Dictionary assertions, const Value::Dictionary& more);

// The system's power-management assertions and the processes that hold them.
class PowerManagement {
public:
    virtual ~PowerManagement() = default;

    virtual AssertionsByProcess copyAssertionsByProcess() = 0;
    // The executable path of any process, application or not; nothing when it is unknown.
    virtual std::optional<std::string> pathForProcess(ProcessIdentifier) = 0;
};

} // namespace vardel
