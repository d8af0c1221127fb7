#pragma once

#include "platform/PowerManagement.h"
#include "platform/linux/AudioStream.h"

#include <map>
#include <set>
#include <utility>
#include <vector>

namespace vardel::linux_desktop {

// The audio server's client streams as the server reports them, and their reading as call evidence:
// a running capture stream is a microphone in use, a running playback stream a speaker.
class AudioStreamList {
public:
    // A new or changed stream. Keeps what was learnt of it before: when it first ran, its parents.
    void update(AudioStream, Date now);
    void remove(AudioStream::Direction, uint32_t index);
    // The server went away: its streams went with it.
    void clear() { streams_.clear(); }

    // Whether the stream is already known with its parents, which need reading only once.
    bool knowsAncestryOf(AudioStream::Direction, uint32_t index) const;
    std::vector<AudioStream> evidence() const;

    // Assertion records keyed by each stream's own process. A stream played or recorded by a child
    // of a running application (a browser's audio service) is held on behalf of that application.
    static Value::Dictionary assertionsOf(
        const std::vector<AudioStream>&, const std::set<ProcessIdentifier>& runningApplications);
    // The nearest of the stream's processes that is a running application.
    static std::optional<ProcessIdentifier> owningApplication(
        const AudioStream&, const std::set<ProcessIdentifier>& runningApplications);

private:
    using Key = std::pair<AudioStream::Direction, uint32_t>;
    std::map<Key, AudioStream> streams_;
};

} // namespace vardel::linux_desktop
