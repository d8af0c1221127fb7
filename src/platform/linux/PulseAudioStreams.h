#pragma once

#include "platform/linux/AudioStream.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vardel::linux_desktop {

// A live list of the audio server's client streams (PulseAudio, or PipeWire through its PulseAudio
// server), kept by libpulse on a thread of its own from the server's stream events, so that reading
// it costs no round trip. Without a server the list is empty and a connection is tried again every
// two seconds; when the server restarts, the list follows the new one.
class PulseAudioStreams {
public:
    using Now = std::function<Date()>;

    // Starts connecting in the background; the clock dates the streams' first run.
    explicit PulseAudioStreams(Now now);
    ~PulseAudioStreams();
    PulseAudioStreams(const PulseAudioStreams&) = delete;
    PulseAudioStreams& operator=(const PulseAudioStreams&) = delete;

    // Waits until the server's streams were first listed, or the server was found unreachable, and
    // says whether that happened in time. A tracker that reads the list once at start-up (a dump)
    // would otherwise see nothing.
    bool waitUntilSettled(std::chrono::milliseconds timeout) const;
    // The streams that may be evidence of a call: running, of a local process, not a level meter.
    std::vector<AudioStream> evidence() const;
    // Changes whenever the list does, so that a reader can keep what it made of the last one.
    uint64_t generation() const;
    bool isConnected() const;
    // What happened to the connection since the last call, as log lines.
    std::vector<std::string> takeNotices();

private:
    struct Client;
    std::unique_ptr<Client> client_;
};

} // namespace vardel::linux_desktop
