#pragma once

#include "platform/Accessibility.h"
#include "platform/Value.h"
#include "platform/Workspace.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vardel {

// One snapshot of the system's power-management assertions, reduced to those that can mean a
// running call, with the processes sorted by the audio directions they hold. A plain value: taken,
// read and dropped on every sample.
struct PowerManagementAssertions {
    // Its texts are views into the records the snapshot holds: a snapshot taken every second copies
    // none of them.
    struct Assertion {
        ProcessIdentifier pid = 0;
        std::optional<std::string_view> processName;
        // The declared type, also when the assertion was accepted for its true type.
        std::optional<std::string_view> type;
        std::optional<std::string_view> name;
        std::optional<Date> startedAt;
        // The resources, when the record lists them and every one is a text.
        const Value::List* resourcesUsed = nullptr;

        std::string description() const;
    };

    struct PIDAndRunningApplication {
        ProcessIdentifier pid = 0;
        std::optional<RunningApplication> application;
        std::optional<std::string> bundleIdentifier;
        std::optional<std::string> applicationName;
        // The microphone was announced by an assertion of its own, not by one combined assertion.
        bool audioInAndOutAssertionsHaveBeenRecordedSeparately = false;

        std::string description() const;
    };

    struct ApplicationIdentity {
        std::optional<std::string> bundleIdentifier;
        std::optional<std::string> name;
    };

    using Logger = std::function<void(const std::string&)>;

    // Takes the snapshot; a failing system call gives an empty one. The logger, when given,
    // receives the raw assertions and the derivation, one text per call.
    explicit PowerManagementAssertions(const Logger& logger = nullptr);

    std::string description() const;

    // The identity of the application bundle that contains the process's executable.
    static ApplicationIdentity applicationFromExecutablePath(ProcessIdentifier);

    // The platform's records, shared with it, which the assertions point into.
    std::shared_ptr<const Value::Dictionary> records;
    std::vector<Assertion> assertions;
    std::set<ProcessIdentifier> pidsOfAppsWithAudioOutAssertion;
    std::set<ProcessIdentifier> pidsOfAppsWithAudioInAssertion;
    std::set<ProcessIdentifier> pidsOfAppsWithBothAssertions;
    std::vector<PIDAndRunningApplication> appsWithMeetingRelatedPMAssertions;
};

} // namespace vardel
