#pragma once

#include "platform/Value.h"

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace vardel {

// The user's command `vardel`: reports from the activity store and the scripting commands of the
// running tracker.
//
//   vardel report [--date YYYY-MM-DD] [--json]    the day's timeline and totals
//   vardel entries [--date YYYY-MM-DD] [--json]   the day's time entries
//   vardel pause [SECONDS]                        pauses tracking (until resumed without SECONDS)
//   vardel resume                                 resumes tracking
class VardelCommand {
public:
    static constexpr int successStatus = 0;
    // The store or the tracker could not give what was asked.
    static constexpr int failureStatus = 1;
    static constexpr int usageStatus = 2;

    using EnvironmentLookup = std::function<const char*(const char* name)>;

    // Runs the command line (without the program name); `now` decides which day is today.
    static int run(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors,
        const EnvironmentLookup&, Date now);

    static const char* usage();

private:
    static int report(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors,
        const EnvironmentLookup&, Date now);
    static int entries(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors,
        const EnvironmentLookup&, Date now);
    static int sendToTracker(
        const std::string& request, std::ostream& output, std::ostream& errors, const EnvironmentLookup&);
};

} // namespace vardel
