#include "tools/VardelCommand.h"

#include "platform/JsonText.h"
#include "platform/linux/ScriptingCommandServer.h"
#include "product/ActivitySummary.h"
#include "product/DamagedStores.h"
#include "product/DataFolder.h"
#include "product/Database.h"
#include "product/LocalCalendar.h"
#include "tools/ActivityReportFormatter.h"
#include "tools/ScriptingCommandClient.h"
#include "tools/TimeEntriesFormatter.h"

#include <charconv>
#include <cmath>

namespace vardel {

namespace {

struct Day {
    std::string name;
    Date start;
    Date end;
};

std::optional<Day> dayOf(const std::optional<std::string>& requested, Date now, std::ostream& errors)
{
    std::optional<Date> start = requested ? LocalCalendar::parseDay(*requested) : LocalCalendar::startOfDay(now);
    if (!start) {
        errors << "vardel: \"" << *requested << "\" is not a date; write it YYYY-MM-DD\n";
        return std::nullopt;
    }
    return Day { LocalCalendar::formatDay(*start), *start, LocalCalendar::startOfNextDay(*start) };
}

// The store is only read: a folder without one has recorded nothing yet, and none is made.
std::unique_ptr<Database> openStore(const VardelCommand::EnvironmentLookup& environment, std::ostream& errors)
{
    auto folder = DataFolder::fromEnvironment(environment);
    if (!folder) {
        errors << "vardel: the data folder is unknown; set VARDEL_DATA_DIR or HOME\n";
        return nullptr;
    }
    std::error_code ignored;
    if (!std::filesystem::exists(*folder / Database::fileName, ignored)) {
        errors << "vardel: nothing has been recorded yet (no " << (*folder / Database::fileName).string() << ")\n";
        return nullptr;
    }
    auto opened = Database::open(*folder);
    if (!opened.ok()) {
        errors << "vardel: " << opened.error().message << "\n";
        return nullptr;
    }
    for (const auto& kept : DamagedStores::list(*folder))
        errors << "vardel: note: " << DamagedStores::describe(*folder, kept) << "\n";
    return std::move(opened).value();
}

bool isValidPause(const std::string& seconds)
{
    double value = 0;
    auto [end, error] = std::from_chars(seconds.data(), seconds.data() + seconds.size(), value);
    return error == std::errc() && end == seconds.data() + seconds.size() && std::isfinite(value) && value >= 0;
}

int usageError(std::ostream& errors, const std::string& problem)
{
    errors << "vardel: " << problem << "\n" << VardelCommand::usage();
    return VardelCommand::usageStatus;
}

struct DayOptions {
    std::optional<std::string> day;
    bool json = false;
};

std::optional<DayOptions> parseDayOptions(const std::vector<std::string>& arguments, std::ostream& errors)
{
    DayOptions options;
    for (size_t index = 0; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        if (argument == "--json") {
            options.json = true;
        } else if (argument == "--date" && index + 1 < arguments.size()) {
            options.day = arguments[++index];
        } else if (argument.starts_with("--date=")) {
            options.day = argument.substr(7);
        } else {
            usageError(errors, argument == "--date" ? "--date needs a day" : "unknown argument \"" + argument + "\"");
            return std::nullopt;
        }
    }
    return options;
}

// Reads the options, finds the day and opens the store, reads the day with read(store, day) and
// prints what it gave with print(value, day, json); the command's exit status.
template<typename Read, typename Print>
int readDay(const std::vector<std::string>& arguments, Date now, const VardelCommand::EnvironmentLookup& environment,
    std::ostream& errors, Read read, Print print)
{
    auto options = parseDayOptions(arguments, errors);
    if (!options)
        return VardelCommand::usageStatus;
    auto day = dayOf(options->day, now, errors);
    if (!day)
        return VardelCommand::usageStatus;
    auto store = openStore(environment, errors);
    if (!store)
        return VardelCommand::failureStatus;
    auto result = read(*store, *day);
    if (!result.ok()) {
        errors << "vardel: " << result.error().message << "\n";
        return VardelCommand::failureStatus;
    }
    print(result.value(), *day, options->json);
    return VardelCommand::successStatus;
}

} // namespace

const char* VardelCommand::usage()
{
    return "usage: vardel report [--date YYYY-MM-DD] [--json]\n"
           "       vardel entries [--date YYYY-MM-DD] [--json]\n"
           "       vardel pause [SECONDS]\n"
           "       vardel resume\n";
}

int VardelCommand::run(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors,
    const EnvironmentLookup& environment, Date now)
{
    if (arguments.empty())
        return usageError(errors, "a command is needed");
    const std::string& command = arguments[0];
    std::vector<std::string> rest(arguments.begin() + 1, arguments.end());
    if (command == "report")
        return report(rest, output, errors, environment, now);
    if (command == "entries")
        return entries(rest, output, errors, environment, now);
    if (command == "pause") {
        if (rest.size() > 1)
            return usageError(errors, "pause takes at most one argument");
        if (!rest.empty() && !isValidPause(rest[0]))
            return usageError(errors, "\"" + rest[0] + "\" is not a number of seconds");
        return sendToTracker(rest.empty() ? "pause" : "pause " + rest[0], output, errors, environment);
    }
    if (command == "resume") {
        if (!rest.empty())
            return usageError(errors, "resume takes no argument");
        return sendToTracker("resume", output, errors, environment);
    }
    if (command == "help" || command == "--help" || command == "-h") {
        output << usage();
        return successStatus;
    }
    return usageError(errors, "unknown command \"" + command + "\"");
}

int VardelCommand::report(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors,
    const EnvironmentLookup& environment, Date now)
{
    return readDay(
        arguments, now, environment, errors,
        [](Database& store, const Day& day) { return store.activitySpansInRange(day.start, day.end); },
        [&](const auto& spans, const Day& day, bool json) {
            auto summary = ActivitySummary::of(spans, day.start, day.end);
            if (json)
                output << jsonText(ActivityReportFormatter::json(summary, day.name), 2) << "\n";
            else
                output << ActivityReportFormatter::text(summary, day.name);
        });
}

int VardelCommand::entries(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors,
    const EnvironmentLookup& environment, Date now)
{
    return readDay(
        arguments, now, environment, errors,
        [](Database& store, const Day& day) { return store.entriesInRange(day.start, day.end); },
        [&](const auto& entries, const Day& day, bool json) {
            if (json)
                output << jsonText(TimeEntriesFormatter::json(entries, day.name), 2) << "\n";
            else
                output << TimeEntriesFormatter::text(entries, day.name);
        });
}

int VardelCommand::sendToTracker(
    const std::string& request, std::ostream& output, std::ostream& errors, const EnvironmentLookup& environment)
{
    auto socket = ScriptingCommandServer::socketPath(environment);
    if (!socket) {
        errors << "vardel: XDG_RUNTIME_DIR is not set, so the tracker cannot be reached\n";
        return failureStatus;
    }
    auto outcome = ScriptingCommandClient::send(*socket, request);
    if (outcome.status != ScriptingCommandClient::Outcome::Status::answered) {
        errors << "vardel: " << outcome.text << "\n";
        return failureStatus;
    }
    if (outcome.text.starts_with("ok: ")) {
        output << outcome.text.substr(4) << "\n";
        return successStatus;
    }
    errors << "vardel: the tracker refused: " << outcome.text << "\n";
    return failureStatus;
}

} // namespace vardel
