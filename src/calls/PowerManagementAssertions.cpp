#include "calls/PowerManagementAssertions.h"

#include "platform/JsonText.h"
#include "platform/Platform.h"
#include "platform/PowerManagement.h"
#include "platform/ProcessWide.h"
#include "platform/ValueJson.h"
#include "product/TextHelpers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iostream>
#include <limits>
#include <string_view>

namespace vardel {

namespace {

using Assertion = PowerManagementAssertions::Assertion;
using PIDAndRunningApplication = PowerManagementAssertions::PIDAndRunningApplication;
using Logger = PowerManagementAssertions::Logger;

// Assertions of a lower level are released or merely informational.
constexpr int64_t activeAssertionLevel = 255;
constexpr std::array<std::string_view, 2> meetingAssertionTypes { "PreventUserIdleSystemSleep",
    "PreventUserIdleDisplaySleep" };
constexpr std::array<std::string_view, 2> audioInResources { "audio-in", "BuiltInMicrophoneDevice" };
constexpr std::array<std::string_view, 2> audioOutResources { "audio-out", "BuiltInSpeakerDevice" };

struct Settings {
    bool treatOnACallLikeAudioInAndOut = true;
    bool treatWebRTCLikeAudioInAndOut = false;
    bool suppressUSBAudioDevices = false;
    double maximumAssertionAgeInSeconds = 4 * 60 * 60;
};

ProcessWide<Settings> settings([] {
    const PreferenceStore& preferences = platform().productPreferences();
    Settings read;
    read.treatOnACallLikeAudioInAndOut
        = preferences.getBool("PowerManagementAssertions_treatOnACallLikeAudioInAndOutAssertions").value_or(true);
    read.treatWebRTCLikeAudioInAndOut
        = preferences.getBool("PowerManagementAssertions_treatWebRTCLikeAudioInAndOutAssertions").value_or(false);
    read.suppressUSBAudioDevices
        = preferences.getBool("PowerManagementAssertions_suppressUSBAudioDevices").value_or(false);
    read.maximumAssertionAgeInSeconds
        = preferences.getDouble("RunningCallDetector_maximumPMAssertionAge").value_or(4 * 60 * 60);
    return read;
});

ProcessWide<bool> dumpRecordedAssertions([] {
    const PreferenceStore& defaults = platform().standardUserDefaults();
    return defaults.getBool("PowerManagementAssertions_dumpRecordedAssertions").value_or(false);
});

template<size_t count> bool isOneOf(std::string_view text, const std::array<std::string_view, count>& members)
{
    return std::find(members.begin(), members.end(), text) != members.end();
}

std::optional<ProcessIdentifier> processIdentifierFromDecimal(std::string_view text)
{
    ProcessIdentifier pid = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), pid);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return pid;
}

std::optional<ProcessIdentifier> processIdentifierFromNumber(const Value& value)
{
    auto integer = value.asInteger();
    if (!integer || *integer < std::numeric_limits<ProcessIdentifier>::min()
        || *integer > std::numeric_limits<ProcessIdentifier>::max())
        return std::nullopt;
    return static_cast<ProcessIdentifier>(*integer);
}

// The number of records, when the whole dictionary has the documented shape (decimal owner pids,
// lists of records); anything else means the call's result cannot be trusted at all.
std::optional<size_t> recordCountIfWellFormed(const Value::Dictionary& assertionsByProcess)
{
    size_t count = 0;
    for (const auto& [key, list] : assertionsByProcess) {
        if (!processIdentifierFromDecimal(key) || !list.asList())
            return std::nullopt;
        for (const Value& record : *list.asList()) {
            if (!record.asDictionary())
                return std::nullopt;
        }
        count += list.asList()->size();
    }
    return count;
}

// Every record with its owner, in the system's order, straight from the platform's dictionaries:
// a sample copies only what it keeps. The dictionary must have the documented shape.
template<typename Visit> void forEachRecord(const Value::Dictionary& assertionsByProcess, Visit visit)
{
    for (const auto& [key, list] : assertionsByProcess) {
        ProcessIdentifier owner = *processIdentifierFromDecimal(key);
        for (const Value& record : *list.asList())
            visit(owner, *record.asDictionary());
    }
}

const Value* member(const Value::Dictionary& record, std::string_view key)
{
    auto found = record.find(key);
    return found == record.end() ? nullptr : &found->second;
}

std::optional<ProcessIdentifier> onBehalfOfProcess(const Value::Dictionary& record)
{
    const Value* value = member(record, AssertionKey::onBehalfOfPID);
    return value ? processIdentifierFromNumber(*value) : std::nullopt;
}

// The members of one assertion record that a snapshot reads, found in one pass over the record
// instead of one search per member: a sample reads every record the system lists.
struct RecordFields {
    const Value* level = nullptr;
    const std::string* type = nullptr;
    const std::string* trueType = nullptr;
    const std::string* name = nullptr;
    const Value* onBehalfOfPID = nullptr;
    const std::string* processName = nullptr;
    const Value* startedAt = nullptr;
    const Value* resourcesUsed = nullptr;

    explicit RecordFields(const Value::Dictionary& record)
    {
        // Views compare their lengths first, so most keys are told apart without comparing text.
        using Key = std::string_view;
        for (const auto& [recordKey, value] : record) {
            Key key = recordKey;
            if (key == Key(AssertionKey::level))
                level = &value;
            else if (key == Key(AssertionKey::type))
                type = value.asText();
            else if (key == Key(AssertionKey::trueType))
                trueType = value.asText();
            else if (key == Key(AssertionKey::name))
                name = value.asText();
            else if (key == Key(AssertionKey::onBehalfOfPID))
                onBehalfOfPID = &value;
            else if (key == Key(AssertionKey::processName))
                processName = value.asText();
            else if (key == Key(AssertionKey::startedAt))
                startedAt = &value;
            else if (key == Key(AssertionKey::resourcesUsed))
                resourcesUsed = &value;
        }
    }
};

std::optional<std::string_view> viewOf(const std::string* text)
{
    return text ? std::optional<std::string_view>(*text) : std::nullopt;
}

bool hasActiveLevel(const RecordFields& fields)
{
    return fields.level && fields.level->asInteger() == activeAssertionLevel;
}

bool hasMeetingType(const RecordFields& fields)
{
    auto isMeetingType = [](const std::string* type) { return type && isOneOf(*type, meetingAssertionTypes); };
    return isMeetingType(fields.type) || isMeetingType(fields.trueType);
}

bool isSuppressedUSBAudio(const std::string* name, const Settings& current)
{
    return current.suppressUSBAudioDevices && name && name->find("USBAudio") != std::string::npos;
}

// Only a list of texts counts.
const Value::List* resourcesUsed(const Value* value)
{
    const Value::List* list = value ? value->asList() : nullptr;
    if (!list)
        return nullptr;
    bool allTexts = std::all_of(list->begin(), list->end(), [](const Value& resource) { return resource.asText(); });
    return allTexts ? list : nullptr;
}

// Fills the snapshot's own entry, so that the assertion is never copied or moved.
void fillAssertion(Assertion& assertion, const RecordFields& fields, ProcessIdentifier owner)
{
    auto onBehalfOf = fields.onBehalfOfPID ? processIdentifierFromNumber(*fields.onBehalfOfPID) : std::nullopt;
    assertion.pid = onBehalfOf.value_or(owner);
    assertion.processName = viewOf(fields.processName);
    assertion.type = viewOf(fields.type);
    assertion.name = viewOf(fields.name);
    assertion.startedAt = fields.startedAt ? fields.startedAt->asDate() : std::nullopt;
    assertion.resourcesUsed = resourcesUsed(fields.resourcesUsed);
}

// Assertions that outlive any plausible call were left behind by a process, not held for a call.
bool isTooOld(const std::optional<Date>& startedAt, Date now, const Settings& current)
{
    return startedAt && now.secondsSince1970 - startedAt->secondsSince1970 >= current.maximumAssertionAgeInSeconds;
}

// The root locale lowercases ASCII letters as ASCII does, so plain ASCII names, the usual ones,
// skip the Unicode case mapping.
std::string lowercased(std::string_view text)
{
    bool isAscii = std::all_of(text.begin(), text.end(), [](char character) { return (character & 0x80) == 0; });
    if (!isAscii)
        return TextHelpers::lowercased(text);
    std::string lowered(text);
    for (char& character : lowered) {
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    }
    return lowered;
}

// Some call applications only name the call, without announcing their audio devices.
bool nameAnnouncesCall(const std::optional<std::string_view>& name, const Settings& current)
{
    if (!name)
        return false;
    std::string lowercasedName = lowercased(*name);
    if (current.treatWebRTCLikeAudioInAndOut
        && TextHelpers::contains(lowercasedName, "webrtc has active peerconnections"))
        return true;
    return (current.treatOnACallLikeAudioInAndOut && TextHelpers::contains(lowercasedName, "on a call"))
        || TextHelpers::contains(lowercasedName, "call in progress");
}

template<size_t count>
bool namesResourceOf(const Value::List& resources, const std::array<std::string_view, count>& kind)
{
    return std::any_of(resources.begin(), resources.end(),
        [&](const Value& resource) { return isOneOf(std::string_view(*resource.asText()), kind); });
}

void classify(const Assertion& assertion, const Settings& current, PowerManagementAssertions& snapshot)
{
    if (nameAnnouncesCall(assertion.name, current)) {
        snapshot.pidsOfAppsWithAudioInAssertion.insert(assertion.pid);
        snapshot.pidsOfAppsWithAudioOutAssertion.insert(assertion.pid);
        return;
    }
    if (!assertion.resourcesUsed)
        return;
    bool namesInput = namesResourceOf(*assertion.resourcesUsed, audioInResources);
    bool namesOutput = namesResourceOf(*assertion.resourcesUsed, audioOutResources);
    if (namesInput && namesOutput)
        snapshot.pidsOfAppsWithBothAssertions.insert(assertion.pid);
    else if (namesInput)
        snapshot.pidsOfAppsWithAudioInAssertion.insert(assertion.pid);
    else if (namesOutput)
        snapshot.pidsOfAppsWithAudioOutAssertion.insert(assertion.pid);
}

void takeRecord(const Value::Dictionary& record, ProcessIdentifier owner, Date now, const Settings& current,
    PowerManagementAssertions& snapshot)
{
    RecordFields fields(record);
    if (!hasActiveLevel(fields) || !hasMeetingType(fields) || isSuppressedUSBAudio(fields.name, current))
        return;
    if (isTooOld(fields.startedAt ? fields.startedAt->asDate() : std::nullopt, now, current))
        return;
    Assertion& assertion = snapshot.assertions.emplace_back();
    fillAssertion(assertion, fields, owner);
    classify(assertion, current, snapshot);
}

// Processes that hold both audio directions, whether in one assertion or in separate ones.
std::set<ProcessIdentifier> meetingRelatedProcesses(const PowerManagementAssertions& snapshot)
{
    std::set<ProcessIdentifier> meetingRelated;
    auto holdsOutput = [&](ProcessIdentifier pid) {
        return snapshot.pidsOfAppsWithAudioOutAssertion.contains(pid)
            || snapshot.pidsOfAppsWithBothAssertions.contains(pid);
    };
    for (const auto* inputs : { &snapshot.pidsOfAppsWithAudioInAssertion, &snapshot.pidsOfAppsWithBothAssertions }) {
        std::copy_if(inputs->begin(), inputs->end(), std::inserter(meetingRelated, meetingRelated.end()), holdsOutput);
    }
    return meetingRelated;
}

std::optional<RunningApplication> runningApplication(
    ProcessIdentifier pid, const std::vector<RunningApplication>& runningApplications)
{
    for (const RunningApplication& application : runningApplications) {
        if (application.processIdentifier == pid)
            return application;
    }
    return std::nullopt;
}

std::optional<RunningApplication> runningApplication(ProcessIdentifier pid)
{
    return runningApplication(pid, platform().workspace().runningApplications());
}

std::optional<std::string> withoutInvisibleControlCharacters(const std::optional<std::string>& text)
{
    if (!text)
        return std::nullopt;
    return TextHelpers::removingInvisibleControlCharacters(*text);
}

PowerManagementAssertions::ApplicationIdentity identityOf(
    const std::optional<RunningApplication>& application, ProcessIdentifier pid)
{
    if (!application)
        return PowerManagementAssertions::applicationFromExecutablePath(pid);
    PowerManagementAssertions::ApplicationIdentity identity { application->bundleIdentifier,
        withoutInvisibleControlCharacters(application->localizedName) };
    // Helper processes without a bundle identifier of their own live inside their application's
    // bundle.
    if (!identity.bundleIdentifier) {
        auto fromPath = PowerManagementAssertions::applicationFromExecutablePath(pid);
        identity.bundleIdentifier = fromPath.bundleIdentifier;
        if (!identity.name)
            identity.name = fromPath.name;
    }
    return identity;
}

// Browsers and chat applications hold their assertions from a renderer or helper process.
std::optional<std::string> displayedApplicationName(const std::optional<std::string>& name)
{
    if (!name)
        return std::nullopt;
    return TextHelpers::removingSuffixIfPresent(TextHelpers::removingSuffixIfPresent(*name, " (Renderer)"), " Helper");
}

PIDAndRunningApplication meetingRelatedApplication(ProcessIdentifier pid, const PowerManagementAssertions& snapshot,
    const std::vector<RunningApplication>& runningApplications)
{
    auto application = runningApplication(pid, runningApplications);
    auto identity = identityOf(application, pid);
    return PIDAndRunningApplication {
        .pid = pid,
        .application = std::move(application),
        .bundleIdentifier = identity.bundleIdentifier,
        .applicationName = displayedApplicationName(identity.name),
        .audioInAndOutAssertionsHaveBeenRecordedSeparately = snapshot.pidsOfAppsWithAudioInAssertion.contains(pid),
    };
}

void appendIfPresent(
    std::vector<std::string>& parts, std::string_view label, const std::optional<std::string_view>& value)
{
    if (value)
        parts.push_back(std::string(label) + ": " + std::string(*value));
}

// Sorted, each once: the resources are a set.
std::string describeQuoted(const Value::List& texts)
{
    std::set<std::string> sorted;
    for (const Value& text : texts)
        sorted.insert(*text.asText());
    std::vector<std::string> quoted;
    quoted.reserve(sorted.size());
    for (const std::string& text : sorted)
        quoted.push_back("\"" + text + "\"");
    return "[" + TextHelpers::joined(quoted, ", ") + "]";
}

std::string describe(const std::set<ProcessIdentifier>& pids)
{
    std::vector<std::string> numbers;
    numbers.reserve(pids.size());
    for (ProcessIdentifier pid : pids)
        numbers.push_back(std::to_string(pid));
    return "[" + TextHelpers::joined(numbers, ", ") + "]";
}

std::string describe(const RunningApplication& application)
{
    std::vector<std::string> parts { "pid: " + std::to_string(application.processIdentifier) };
    appendIfPresent(parts, "bundleIdentifier", application.bundleIdentifier);
    appendIfPresent(parts, "localizedName", application.localizedName);
    return "RunningApplication(" + TextHelpers::joined(parts, ", ") + ")";
}

// Every process the dictionary names, as owner or as the process an assertion is held for.
std::set<ProcessIdentifier> processesNamedIn(const Value::Dictionary& assertionsByProcess)
{
    std::set<ProcessIdentifier> pids;
    forEachRecord(assertionsByProcess, [&](ProcessIdentifier owner, const Value::Dictionary& record) {
        pids.insert(owner);
        if (auto onBehalfOf = onBehalfOfProcess(record))
            pids.insert(*onBehalfOf);
    });
    return pids;
}

void logProcessIdentity(const Logger& logger, ProcessIdentifier pid)
{
    auto application = runningApplication(pid);
    auto alternative = PowerManagementAssertions::applicationFromExecutablePath(pid);
    auto orNil = [](const std::optional<std::string>& text) { return text.value_or("(nil)"); };
    logger("PID: " + std::to_string(pid));
    logger("bundleIdentifier: " + orNil(application ? application->bundleIdentifier : std::nullopt));
    logger("localizedName: " + orNil(application ? application->localizedName : std::nullopt));
    logger("executableURL: " + orNil(application ? application->executablePath : std::nullopt));
    logger("alternativeBundleIdentifier: " + orNil(alternative.bundleIdentifier));
    logger("alternativeLocalizedName: " + orNil(alternative.name));
    logger("");
}

void logDerivation(
    const Logger& logger, const Value::Dictionary& assertionsByProcess, const PowerManagementAssertions& snapshot)
{
    logger("PowerManagementAssertions.pmAssertionsDictionary:");
    logger(jsonText(ValueJson::encode(Value(assertionsByProcess)), 4));
    logger("\n" + snapshot.description());
    logger("\nInfo for *all* processes found in the assertions dictionary:\n");
    for (ProcessIdentifier pid : processesNamedIn(assertionsByProcess))
        logProcessIdentity(logger, pid);
}

Logger effectiveLogger(const Logger& logger)
{
    if (logger || !dumpRecordedAssertions.get())
        return logger;
    return [](const std::string& line) { std::cout << line << '\n'; };
}

} // namespace

PowerManagementAssertions::PowerManagementAssertions(const Logger& logger)
{
    Date now = platform().clock().now();
    AssertionsByProcess result = platform().powerManagement().copyAssertionsByProcess();
    if (result.status != 0 || !result.assertions)
        return;
    records = result.assertions;
    auto recordCount = recordCountIfWellFormed(*result.assertions);
    if (!recordCount)
        return;
    assertions.reserve(*recordCount);
    const Settings& current = settings.get();
    forEachRecord(*result.assertions, [&](ProcessIdentifier owner, const Value::Dictionary& record) {
        takeRecord(record, owner, now, current, *this);
    });
    std::set<ProcessIdentifier> meetingRelated = meetingRelatedProcesses(*this);
    if (!meetingRelated.empty()) {
        std::vector<RunningApplication> running = platform().workspace().runningApplications();
        for (ProcessIdentifier pid : meetingRelated)
            appsWithMeetingRelatedPMAssertions.push_back(meetingRelatedApplication(pid, *this, running));
    }
    if (Logger activeLogger = effectiveLogger(logger))
        logDerivation(activeLogger, *result.assertions, *this);
}

PowerManagementAssertions::ApplicationIdentity PowerManagementAssertions::applicationFromExecutablePath(
    ProcessIdentifier pid)
{
    auto executablePath = platform().powerManagement().pathForProcess(pid);
    if (!executablePath)
        return {};
    size_t bundleExtension = executablePath->rfind(".app");
    if (bundleExtension == std::string::npos)
        return {};
    auto bundle = platform().workspace().applicationBundleAtPath(
        executablePath->substr(0, bundleExtension + std::string_view(".app").size()));
    if (!bundle)
        return {};
    return { bundle->bundleIdentifier, withoutInvisibleControlCharacters(bundle->localizedName) };
}

std::string PowerManagementAssertions::description() const
{
    std::vector<std::string> assertionLines;
    for (const Assertion& assertion : assertions)
        assertionLines.push_back("\t\t" + assertion.description());
    std::vector<std::string> applicationLines;
    for (const PIDAndRunningApplication& application : appsWithMeetingRelatedPMAssertions)
        applicationLines.push_back("\t\t" + application.description());
    return TextHelpers::joined(
        {
            "PowerManagementAssertions",
            "\tassertions:\n" + TextHelpers::joined(assertionLines, "\n"),
            "\tpidsOfAppsWithAudioOutAssertion: " + describe(pidsOfAppsWithAudioOutAssertion),
            "\tpidsOfAppsWithAudioInAssertion: " + describe(pidsOfAppsWithAudioInAssertion),
            "\tpidsOfAppsWithBothAssertions: " + describe(pidsOfAppsWithBothAssertions),
            "\tappsWithMeetingRelatedPMAssertions:\n" + TextHelpers::joined(applicationLines, "\n"),
        },
        "\n");
}

std::string PowerManagementAssertions::Assertion::description() const
{
    std::vector<std::string> parts { "pid: " + std::to_string(pid) };
    appendIfPresent(parts, "processName", processName);
    appendIfPresent(parts, "type", type);
    appendIfPresent(parts, "name", name);
    if (startedAt)
        parts.push_back("startedAt: " + ValueJson::formatIso8601(*startedAt));
    if (resourcesUsed)
        parts.push_back("resourcesUsed: " + describeQuoted(*resourcesUsed));
    return "Assertion(" + TextHelpers::joined(parts, ", ") + ")";
}

std::string PowerManagementAssertions::PIDAndRunningApplication::description() const
{
    std::vector<std::string> parts { "pid: " + std::to_string(pid) };
    appendIfPresent(parts, "applicationName", applicationName);
    appendIfPresent(parts, "bundleIdentifier", bundleIdentifier);
    if (application)
        parts.push_back("application: " + describe(*application));
    parts.push_back(std::string("audioInAndOutSeparate: ")
        + (audioInAndOutAssertionsHaveBeenRecordedSeparately ? "true" : "false"));
    return "PIDAndRunningApplication(" + TextHelpers::joined(parts, ", ") + ")";
}

} // namespace vardel
