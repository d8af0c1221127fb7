#include "calls/PowerManagementAssertions.h"

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

// The assertion records one process owns, as the system lists them.
struct OwnedRecords {
    ProcessIdentifier owner = 0;
    std::vector<const Value::Dictionary*> records;
};

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

// The whole dictionary must have the documented shape; anything else means the call's result cannot
// be trusted at all.
std::optional<std::vector<OwnedRecords>> readAssertionsByProcess(const Value::Dictionary& assertionsByProcess)
{
    std::vector<OwnedRecords> byProcess;
    for (const auto& [key, list] : assertionsByProcess) {
        auto owner = processIdentifierFromDecimal(key);
        if (!owner || !list.asList())
            return std::nullopt;
        OwnedRecords owned { *owner, {} };
        for (const Value& record : *list.asList()) {
            if (!record.asDictionary())
                return std::nullopt;
            owned.records.push_back(record.asDictionary());
        }
        byProcess.push_back(std::move(owned));
    }
    return byProcess;
}

const Value* member(const Value::Dictionary& record, std::string_view key)
{
    auto found = record.find(key);
    return found == record.end() ? nullptr : &found->second;
}

std::optional<std::string> textMember(const Value::Dictionary& record, std::string_view key)
{
    const Value* value = member(record, key);
    if (!value || !value->asText())
        return std::nullopt;
    return *value->asText();
}

std::optional<ProcessIdentifier> onBehalfOfProcess(const Value::Dictionary& record)
{
    const Value* value = member(record, AssertionKey::onBehalfOfPID);
    return value ? processIdentifierFromNumber(*value) : std::nullopt;
}

bool hasActiveLevel(const Value::Dictionary& record)
{
    const Value* level = member(record, AssertionKey::level);
    return level && level->asInteger() == activeAssertionLevel;
}

bool hasMeetingType(const Value::Dictionary& record)
{
    auto isMeetingType = [&](std::string_view key) {
        auto type = textMember(record, key);
        return type && isOneOf(*type, meetingAssertionTypes);
    };
    return isMeetingType(AssertionKey::type) || isMeetingType(AssertionKey::trueType);
}

bool isSuppressedUSBAudio(const std::optional<std::string>& name)
{
    return settings.get().suppressUSBAudioDevices && name && name->find("USBAudio") != std::string::npos;
}

std::optional<std::set<std::string>> resourcesUsed(const Value::Dictionary& record)
{
    const Value* value = member(record, AssertionKey::resourcesUsed);
    auto resources = value ? value->asTextList() : std::nullopt;
    if (!resources)
        return std::nullopt;
    return std::set<std::string>(resources->begin(), resources->end());
}

Assertion assertionFrom(const Value::Dictionary& record, ProcessIdentifier owner)
{
    const Value* startedAt = member(record, AssertionKey::startedAt);
    return Assertion {
        .pid = onBehalfOfProcess(record).value_or(owner),
        .processName = textMember(record, AssertionKey::processName),
        .type = textMember(record, AssertionKey::type),
        .name = textMember(record, AssertionKey::name),
        .startedAt = startedAt ? startedAt->asDate() : std::nullopt,
        .resourcesUsed = resourcesUsed(record),
    };
}

// Assertions that outlive any plausible call were left behind by a process, not held for a call.
bool isTooOld(const Assertion& assertion, Date now)
{
    return assertion.startedAt
        && now.secondsSince1970 - assertion.startedAt->secondsSince1970 >= settings.get().maximumAssertionAgeInSeconds;
}

// Some call applications only name the call, without announcing their audio devices.
bool nameAnnouncesCall(const std::optional<std::string>& name)
{
    if (!name)
        return false;
    std::string lowercasedName = TextHelpers::lowercased(*name);
    if (settings.get().treatWebRTCLikeAudioInAndOut
        && TextHelpers::contains(lowercasedName, "webrtc has active peerconnections"))
        return true;
    return (settings.get().treatOnACallLikeAudioInAndOut && TextHelpers::contains(lowercasedName, "on a call"))
        || TextHelpers::contains(lowercasedName, "call in progress");
}

template<size_t count>
bool namesResourceOf(const std::set<std::string>& resources, const std::array<std::string_view, count>& kind)
{
    return std::any_of(
        resources.begin(), resources.end(), [&](const std::string& resource) { return isOneOf(resource, kind); });
}

void classify(const Assertion& assertion, PowerManagementAssertions& snapshot)
{
    if (nameAnnouncesCall(assertion.name)) {
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

void takeRecord(const Value::Dictionary& record, ProcessIdentifier owner, Date now, PowerManagementAssertions& snapshot)
{
    if (!hasActiveLevel(record) || !hasMeetingType(record))
        return;
    if (isSuppressedUSBAudio(textMember(record, AssertionKey::name)))
        return;
    Assertion assertion = assertionFrom(record, owner);
    if (isTooOld(assertion, now))
        return;
    snapshot.assertions.push_back(assertion);
    classify(assertion, snapshot);
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

std::optional<RunningApplication> runningApplication(ProcessIdentifier pid)
{
    for (RunningApplication& application : platform().workspace().runningApplications()) {
        if (application.processIdentifier == pid)
            return std::move(application);
    }
    return std::nullopt;
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

PIDAndRunningApplication meetingRelatedApplication(ProcessIdentifier pid, const PowerManagementAssertions& snapshot)
{
    auto application = runningApplication(pid);
    auto identity = identityOf(application, pid);
    return PIDAndRunningApplication {
        .pid = pid,
        .application = std::move(application),
        .bundleIdentifier = identity.bundleIdentifier,
        .applicationName = displayedApplicationName(identity.name),
        .audioInAndOutAssertionsHaveBeenRecordedSeparately = snapshot.pidsOfAppsWithAudioInAssertion.contains(pid),
    };
}

void appendIfPresent(std::vector<std::string>& parts, std::string_view label, const std::optional<std::string>& value)
{
    if (value)
        parts.push_back(std::string(label) + ": " + *value);
}

std::string describeQuoted(const std::set<std::string>& texts)
{
    std::vector<std::string> quoted;
    for (const std::string& text : texts)
        quoted.push_back("\"" + text + "\"");
    return "[" + TextHelpers::joined(quoted, ", ") + "]";
}

std::string describe(const std::set<ProcessIdentifier>& pids)
{
    std::vector<std::string> numbers;
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
std::set<ProcessIdentifier> processesNamedIn(const std::vector<OwnedRecords>& byProcess)
{
    std::set<ProcessIdentifier> pids;
    for (const OwnedRecords& owned : byProcess) {
        pids.insert(owned.owner);
        for (const Value::Dictionary* record : owned.records) {
            if (auto onBehalfOf = onBehalfOfProcess(*record))
                pids.insert(*onBehalfOf);
        }
    }
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

void logDerivation(const Logger& logger, const Value::Dictionary& assertionsByProcess,
    const std::vector<OwnedRecords>& byProcess, const PowerManagementAssertions& snapshot)
{
    logger("PowerManagementAssertions.pmAssertionsDictionary:");
    logger(ValueJson::encode(Value(assertionsByProcess)).dump(4));
    logger("\n" + snapshot.description());
    logger("\nInfo for *all* processes found in the assertions dictionary:\n");
    for (ProcessIdentifier pid : processesNamedIn(byProcess))
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
    auto byProcess = readAssertionsByProcess(*result.assertions);
    if (!byProcess)
        return;
    for (const OwnedRecords& owned : *byProcess) {
        for (const Value::Dictionary* record : owned.records)
            takeRecord(*record, owned.owner, now, *this);
    }
    for (ProcessIdentifier pid : meetingRelatedProcesses(*this))
        appsWithMeetingRelatedPMAssertions.push_back(meetingRelatedApplication(pid, *this));
    if (Logger activeLogger = effectiveLogger(logger))
        logDerivation(activeLogger, *result.assertions, *byProcess, *this);
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
