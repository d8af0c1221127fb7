// Prints a tracker trace as a person reads it: what was recorded over time, the time per
// application, the warnings logged and how the run ended.
//
//     vardel-trace-summary [TRACE.jsonl | -]

#include "platform/RegularExpression.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Json = nlohmann::json;

// Traces are shallow; a deeper line is hostile and would only cost stack in the recursive JSON code.
constexpr int maximumNestingDepth = 64;
// Longer titles and addresses are shortened so that one span stays on one line.
constexpr int longestShownText = 100;
// Wide enough for "23h 59m 59s", so that descriptions line up.
constexpr int durationWidth = 11;

// The recorded content of consecutive samples that show the same thing.
struct Span {
    double start = 0;
    double end = 0;
    Json activity;
    bool paused = false;
};

struct Trace {
    std::vector<Span> spans;
    // Logged warnings and the exit, in the order they happened.
    std::vector<Json> notices;
};

struct MalformedLine : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Whole seconds, rounded down; the bounds keep a hostile "t" within what an integer holds.
long long wholeSeconds(double seconds)
{
    return static_cast<long long>(std::floor(std::clamp(seconds, 0.0, 1e15)));
}

std::string formatClock(double seconds)
{
    auto whole = wholeSeconds(seconds);
    char text[32];
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
    return text;
}

std::string formatDuration(double seconds)
{
    auto whole = wholeSeconds(seconds);
    std::string text;
    for (auto [amount, unit] : { std::pair { whole / 3600, "h" }, { whole / 60 % 60, "m" }, { whole % 60, "s" } }) {
        if (amount != 0)
            text += (text.empty() ? "" : " ") + std::to_string(amount) + unit;
    }
    return text.empty() ? "0s" : text;
}

// Recorded texts come from other applications' windows: line breaks, terminal controls and
// direction overrides would garble or disguise the output.
std::string displayable(const std::string& text)
{
    static const auto lineBreaking = vardel::RegularExpression::literal("[\\p{Cc}\\p{Zl}\\p{Zp}]+");
    static const auto directionControls = vardel::RegularExpression::literal("\\p{Bidi_Control}");
    static const auto overlong
        = vardel::RegularExpression::literal("^(\\X{" + std::to_string(longestShownText - 1) + "})\\X{2,}$");
    auto flat = directionControls.replacingMatches(lineBreaking.replacingMatches(text, " "));
    return overlong.replacingMatches(flat, "$1…");
}

std::optional<std::string> textField(const Json& object, const char* key)
{
    auto found = object.find(key);
    if (found == object.end() || !found->is_string() || found->get_ref<const std::string&>().empty())
        return std::nullopt;
    return displayable(found->get<std::string>());
}

bool flagField(const Json& object, const char* key)
{
    return object.value(key, Json()) == true;
}

// The application's name, or what stood in for an activity.
std::string spanLabel(const Span& span)
{
    if (span.paused)
        return "(tracking paused)";
    if (!span.activity.is_object())
        return "(nothing recorded)";
    if (auto name = textField(span.activity, "localizedName"))
        return *name;
    return textField(span.activity, "bundleIdentifier").value_or("(unnamed application)");
}

std::optional<std::string> contextPath(const Json& details)
{
    auto found = details.find("contextPath");
    if (found == details.end() || !found->is_array() || found->empty())
        return std::nullopt;
    std::string joined;
    for (const auto& part : *found)
        joined += (joined.empty() ? "" : " › ") + (part.is_string() ? displayable(part.get<std::string>()) : "?");
    return joined;
}

std::string describeDetails(const Json& details)
{
    std::string description;
    auto windowTitle = textField(details, "windowTitle");
    auto documentTitle = textField(details, "documentTitle");
    if (windowTitle)
        description += " — “" + *windowTitle + "”";
    if (documentTitle && documentTitle != windowTitle)
        description += " — “" + *documentTitle + "”";
    for (auto part : { textField(details, "documentPath"), contextPath(details) }) {
        if (part)
            description += " — " + *part;
    }
    return description + (flagField(details, "isPrivate") ? " [private]" : "");
}

std::string describe(const Span& span)
{
    auto description = spanLabel(span);
    if (span.paused || !span.activity.is_object())
        return description;
    auto details = span.activity.value("details", Json());
    if (details.is_object())
        description += describeDetails(details);
    for (auto [key, mark] : { std::pair { "isFullscreen", " [full screen]" }, { "saveSheet", " [save sheet]" } }) {
        if (flagField(span.activity, key))
            description += mark;
    }
    return description;
}

void addSample(Trace& trace, double time, const Json& line)
{
    auto activity = line.value("activity", Json());
    if (!activity.is_null() && !activity.is_object())
        throw MalformedLine("the sample's activity is neither an object nor null");
    // Which windows were read is the tracker's business; a person sees the same activity.
    if (activity.is_object())
        activity.erase("accessibilityWindows");
    bool paused = flagField(line, "paused");
    if (!trace.spans.empty())
        trace.spans.back().end = time;
    if (!trace.spans.empty() && trace.spans.back().activity == activity && trace.spans.back().paused == paused)
        return;
    trace.spans.push_back(Span { time, time, std::move(activity), paused });
}

void addEvent(Trace& trace, const Json& line)
{
    auto time = line.find("t");
    auto event = line.find("event");
    if (time == line.end() || !time->is_number())
        throw MalformedLine("no number \"t\"");
    if (event == line.end() || !event->is_string())
        throw MalformedLine("no text \"event\"");
    if (*event == "sample")
        addSample(trace, time->get<double>(), line);
    else if (*event == "exit" || (*event == "log" && line.value("level", Json()) == "warning"))
        trace.notices.push_back(line);
}

Json parseLine(const std::string& text)
{
    auto limitDepth = [](int depth, Json::parse_event_t, Json&) {
        if (depth > maximumNestingDepth)
            throw MalformedLine("nested deeper than " + std::to_string(maximumNestingDepth) + " levels");
        return true;
    };
    try {
        auto line = Json::parse(text, limitDepth);
        if (!line.is_object())
            throw MalformedLine("not a JSON object");
        return line;
    } catch (const Json::parse_error& error) {
        throw MalformedLine("not valid JSON (at byte " + std::to_string(error.byte) + ")");
    } catch (const Json::exception&) {
        throw MalformedLine("not valid JSON");
    }
}

Trace readTrace(std::istream& input)
{
    Trace trace;
    std::string text;
    for (size_t lineNumber = 1; std::getline(input, text); ++lineNumber) {
        if (text.find_first_not_of(" \t\r") == std::string::npos)
            continue;
        try {
            addEvent(trace, parseLine(text));
        } catch (const MalformedLine& error) {
            throw MalformedLine("line " + std::to_string(lineNumber) + ": " + error.what());
        }
    }
    // Samples are a second apart, so the last one stands for one second.
    if (!trace.spans.empty())
        trace.spans.back().end += 1;
    return trace;
}

void printSpans(const std::vector<Span>& spans)
{
    std::cout << "Recorded activity\n";
    if (spans.empty())
        std::cout << "  (no samples)\n";
    for (const auto& span : spans) {
        std::cout << "  " << formatClock(span.start) << " – " << formatClock(span.end) << "  " << std::left
                  << std::setw(durationWidth) << formatDuration(span.end - span.start) << "  " << describe(span)
                  << '\n';
    }
}

void printTotals(const std::vector<Span>& spans)
{
    if (spans.empty())
        return;
    std::map<std::string, double> totals;
    for (const auto& span : spans)
        totals[spanLabel(span)] += span.end - span.start;
    std::vector<std::pair<std::string, double>> sorted(totals.begin(), totals.end());
    std::stable_sort(sorted.begin(), sorted.end(), [](auto& left, auto& right) { return left.second > right.second; });
    std::cout << "\nTime by application\n";
    for (const auto& [label, seconds] : sorted)
        std::cout << "  " << formatClock(seconds) << "  " << label << '\n';
}

std::string describeNotice(const Json& line)
{
    if (line["event"] == "exit") {
        auto reason = textField(line, "reason");
        return "exit with status " + line.value("status", Json()).dump() + (reason ? " (" + *reason + ")" : "");
    }
    return "warning: " + textField(line, "message").value_or("");
}

void printNotices(const std::vector<Json>& notices)
{
    if (notices.empty())
        return;
    std::cout << "\nWarnings and exit\n";
    for (const auto& notice : notices)
        std::cout << "  " << formatClock(notice["t"].get<double>()) << "  " << describeNotice(notice) << '\n';
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount > 2) {
        std::cerr << "usage: vardel-trace-summary [TRACE.jsonl | -]\n";
        return 2;
    }
    std::string path = argumentCount == 2 ? arguments[1] : "-";
    std::ifstream file;
    if (path != "-")
        file.open(path);
    if (path != "-" && !file) {
        std::cerr << path << ": cannot be opened\n";
        return 1;
    }
    try {
        auto trace = readTrace(path == "-" ? std::cin : file);
        printSpans(trace.spans);
        printTotals(trace.spans);
        printNotices(trace.notices);
    } catch (const MalformedLine& error) {
        std::cerr << (path == "-" ? "standard input" : path) << ": " << error.what() << '\n';
        return 1;
    }
    return 0;
}
