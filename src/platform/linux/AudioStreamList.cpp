#include "platform/linux/AudioStreamList.h"

#include <algorithm>

namespace vardel::linux_desktop {

namespace {

// The platform's assertion level for "on".
constexpr int assertionOn = 255;
constexpr const char* streamAssertionType = "PreventUserIdleSystemSleep";

const char* resourceOf(AudioStream::Direction direction)
{
    return direction == AudioStream::Direction::capture ? "audio-in" : "audio-out";
}

Value::Dictionary recordOf(const AudioStream& stream, const std::set<ProcessIdentifier>& runningApplications)
{
    Value::Dictionary record { { AssertionKey::type, streamAssertionType },
        { AssertionKey::trueType, streamAssertionType }, { AssertionKey::name, stream.mediaName },
        { AssertionKey::processName, stream.applicationName }, { AssertionKey::level, assertionOn },
        { AssertionKey::resourcesUsed, Value::List { resourceOf(stream.direction) } } };
    if (stream.firstSeenRunning)
        record.emplace(AssertionKey::startedAt, *stream.firstSeenRunning);
    auto owner = AudioStreamList::owningApplication(stream, runningApplications);
    if (owner && owner != stream.pid)
        record.emplace(AssertionKey::onBehalfOfPID, static_cast<int64_t>(*owner));
    return record;
}

} // namespace

void AudioStreamList::update(AudioStream stream, Date now)
{
    Key key { stream.direction, stream.index };
    if (auto known = streams_.find(key); known != streams_.end()) {
        if (stream.ancestry.empty())
            stream.ancestry = std::move(known->second.ancestry);
        stream.firstSeenRunning = known->second.firstSeenRunning;
    }
    if (!stream.firstSeenRunning && !stream.corked)
        stream.firstSeenRunning = now;
    streams_.insert_or_assign(key, std::move(stream));
}

void AudioStreamList::remove(AudioStream::Direction direction, uint32_t index)
{
    streams_.erase({ direction, index });
}

bool AudioStreamList::knowsAncestryOf(AudioStream::Direction direction, uint32_t index) const
{
    auto known = streams_.find({ direction, index });
    return known != streams_.end() && !known->second.ancestry.empty();
}

std::vector<AudioStream> AudioStreamList::evidence() const
{
    std::vector<AudioStream> evidence;
    for (const auto& [key, stream] : streams_) {
        if (stream.isEvidence())
            evidence.push_back(stream);
    }
    return evidence;
}

std::optional<ProcessIdentifier> AudioStreamList::owningApplication(
    const AudioStream& stream, const std::set<ProcessIdentifier>& runningApplications)
{
    auto found = std::find_if(stream.ancestry.begin(), stream.ancestry.end(),
        [&](ProcessIdentifier pid) { return runningApplications.contains(pid); });
    if (found == stream.ancestry.end())
        return std::nullopt;
    return *found;
}

Value::Dictionary AudioStreamList::assertionsOf(
    const std::vector<AudioStream>& streams, const std::set<ProcessIdentifier>& runningApplications)
{
    std::map<std::string, Value::List> byProcess;
    for (const AudioStream& stream : streams) {
        if (stream.isEvidence())
            byProcess[std::to_string(*stream.pid)].push_back(recordOf(stream, runningApplications));
    }
    Value::Dictionary assertions;
    for (auto& [pid, records] : byProcess)
        assertions.emplace(pid, Value(std::move(records)));
    return assertions;
}

} // namespace vardel::linux_desktop
