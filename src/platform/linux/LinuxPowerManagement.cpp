#include "platform/linux/LinuxPowerManagement.h"

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/linux/ApplicationIdentity.h"
#include "platform/linux/AudioStreamList.h"

#include <algorithm>
#include <filesystem>

namespace vardel::linux_desktop {

namespace {

bool equalIgnoringAsciiCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
        [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b)); });
}

// An application id names an application by its desktop entry, its identifier, its name or its
// program.
bool isNamedBy(const RunningApplication& application, const std::string& applicationId)
{
    auto matches = [&](const std::optional<std::string>& name) {
        return name && equalIgnoringAsciiCase(*name, applicationId);
    };
    auto stemOf = [](const std::optional<std::string>& path) -> std::optional<std::string> {
        if (!path)
            return std::nullopt;
        return std::filesystem::path(*path).stem().string();
    };
    auto fileNameOf = [](const std::optional<std::string>& path) -> std::optional<std::string> {
        if (!path)
            return std::nullopt;
        return std::filesystem::path(*path).filename().string();
    };
    return matches(application.bundleIdentifier) || matches(application.localizedName)
        || matches(stemOf(application.bundlePath)) || matches(fileNameOf(application.executablePath));
}

} // namespace

LinuxPowerManagement::LinuxPowerManagement(Workspace& workspace, Clock& clock, Log& log)
    : workspace_(workspace)
    , log_(log)
    , streams_([&clock] { return clock.now(); })
{
}

AssertionsByProcess LinuxPowerManagement::copyAssertionsByProcess()
{
    logNotices();
    std::vector<AudioStream> evidence = streams_.evidence();
    Value::Dictionary streamAssertions = evidence.empty()
        ? Value::Dictionary {}
        : AudioStreamList::assertionsOf(evidence, runningApplicationPids());
    auto inhibitorAssertions = inhibitors_.assertions(
        [this](const std::string& applicationId) { return runningApplicationWithId(applicationId); });
    return { 0, mergedAssertions(std::move(streamAssertions), inhibitorAssertions) };
}

std::optional<std::string> LinuxPowerManagement::pathForProcess(ProcessIdentifier pid)
{
    return ApplicationIdentity::executableOf(pid);
}

std::set<ProcessIdentifier> LinuxPowerManagement::runningApplicationPids()
{
    std::set<ProcessIdentifier> pids;
    for (const RunningApplication& application : workspace_.runningApplications())
        pids.insert(application.processIdentifier);
    return pids;
}

std::optional<ProcessIdentifier> LinuxPowerManagement::runningApplicationWithId(const std::string& applicationId)
{
    for (const RunningApplication& application : workspace_.runningApplications()) {
        if (isNamedBy(application, applicationId))
            return application.processIdentifier;
    }
    return std::nullopt;
}

void LinuxPowerManagement::logNotices()
{
    for (const std::string& notice : streams_.takeNotices())
        log_.info(notice);
}

} // namespace vardel::linux_desktop
