#include "platform/linux/LinuxPowerManagement.h"

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/linux/ApplicationIdentity.h"
#include "platform/linux/AudioStreamList.h"

#include <algorithm>
#include <filesystem>

namespace vardel::linux_desktop {

namespace {

// The first snapshot waits this long for the audio server's first answer; later ones never wait.
constexpr std::chrono::milliseconds firstListingTimeout(1000);

bool equalIgnoringAsciiCase(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    });
}

// An application id names an application by its desktop entry, its identifier, its name or its
// program.
bool isNamedBy(const RunningApplication& application, const std::string& applicationId)
{
    auto matches
        = [&](const std::optional<std::string>& name) { return name && equalIgnoringAsciiCase(*name, applicationId); };
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
    if (!settled_) {
        streams_.waitUntilSettled(firstListingTimeout);
        settled_ = true;
    }
    logNotices();
    auto inhibitorAssertions = inhibitors_.assertions(
        [this](const std::string& applicationId) { return runningApplicationWithId(applicationId); });
    auto streamAssertions = currentStreamAssertions();
    if (inhibitorAssertions.empty())
        return { 0, std::move(streamAssertions) };
    return { 0, std::make_shared<const Value::Dictionary>(mergedAssertions(*streamAssertions, inhibitorAssertions)) };
}

// The records of the streams are made again only when the streams changed, or while one of them has
// not been traced to a running application yet: at one sample a second, streams change seldom.
std::shared_ptr<const Value::Dictionary> LinuxPowerManagement::currentStreamAssertions()
{
    uint64_t generation = streams_.generation();
    if (generation == streamGeneration_ && everyStreamOwned_)
        return streamAssertions_;
    std::vector<AudioStream> evidence = streams_.evidence();
    std::set<ProcessIdentifier> applications
        = evidence.empty() ? std::set<ProcessIdentifier> {} : runningApplicationPids();
    streamAssertions_
        = std::make_shared<const Value::Dictionary>(AudioStreamList::assertionsOf(evidence, applications));
    everyStreamOwned_ = std::all_of(evidence.begin(), evidence.end(), [&](const AudioStream& stream) {
        return AudioStreamList::owningApplication(stream, applications).has_value();
    });
    streamGeneration_ = generation;
    return streamAssertions_;
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
