// `vardel report` for one day of a store that holds a year: 365 working days of 720 spans each (an
// application switch every 40 seconds for 8 hours), 262,800 spans in all. Reports the time to open
// the store, read the day and format its report, for the first, a middle and the last day.

#include "product/Database.h"
#include "product/LocalCalendar.h"
#include "support/TemporaryFolder.h"
#include "tools/VardelCommand.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <sstream>
#include <stdexcept>

namespace vardel {
namespace {

constexpr int days = 365;
constexpr int spansPerDay = 720;
constexpr double spanSeconds = 40;
constexpr double workStartsAfterMidnight = 9 * 3600;

RecordedActivity activity(int index)
{
    static const char* const names[] = { "Editor", "Browser", "Mail", "Terminal" };
    const char* name = names[index % 4];
    RecordedActivity recorded;
    recorded.bundleIdentifier = std::string("com.example.") + name;
    recorded.applicationName = name;
    recorded.windowTitle = std::string(name) + " window " + std::to_string(index % 97);
    return recorded;
}

// The store is filled once per process: a day at a time, as the tracker writes it.
class YearStore {
public:
    YearStore()
    {
        auto opened = Database::open(folder_.path());
        if (!opened.ok())
            throw std::runtime_error(opened.error().message);
        auto database = std::move(opened).value();
        Date day = *LocalCalendar::parseDay("2025-01-01");
        for (int index = 0; index < days; ++index) {
            dayNames_.push_back(LocalCalendar::formatDay(day));
            std::vector<ActivitySpan> spans;
            spans.reserve(spansPerDay);
            for (int span = 0; span < spansPerDay; ++span) {
                double start = day.secondsSince1970 + workStartsAfterMidnight + span * spanSeconds;
                spans.push_back({ std::nullopt, Date { start }, Date { start + spanSeconds }, activity(span) });
            }
            if (auto failed = database->saveActivitySpans(spans))
                throw std::runtime_error(failed->message);
            day = LocalCalendar::startOfNextDay(day);
        }
    }
    const std::filesystem::path& folder() const { return folder_.path(); }
    const std::string& dayName(int index) const { return dayNames_.at(static_cast<size_t>(index)); }

private:
    testing::TemporaryFolder folder_;
    std::vector<std::string> dayNames_;
};

void dayReportOnAYear(benchmark::State& state)
{
    static YearStore store;
    std::string folder = store.folder().string();
    auto environment = [&folder](const char* name) -> const char* {
        return std::string_view(name) == "VARDEL_DATA_DIR" ? folder.c_str() : nullptr;
    };
    std::vector<std::string> arguments = { "report", "--date", store.dayName(static_cast<int>(state.range(0))) };
    size_t reportBytes = 0;
    for (auto _ : state) {
        std::ostringstream output;
        std::ostringstream errors;
        if (VardelCommand::run(arguments, output, errors, environment, Date { 0 }) != VardelCommand::successStatus) {
            state.SkipWithError(errors.str().c_str());
            break;
        }
        reportBytes = output.str().size();
    }
    state.counters["report_bytes"] = static_cast<double>(reportBytes);
    state.counters["spans_in_store"] = days * spansPerDay;
}

BENCHMARK(dayReportOnAYear)->Arg(0)->Arg(days / 2)->Arg(days - 1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace vardel
