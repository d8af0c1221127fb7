#pragma once

#include "platform/Accessibility.h"
#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vardel::linux_desktop {

// One client stream of the audio server, as far as call evidence needs it.
struct AudioStream {
    enum class Direction { capture, playback };

    uint32_t index = 0;
    Direction direction = Direction::playback;
    // The client's process (application.process.id); nothing for clients on other machines.
    std::optional<ProcessIdentifier> pid;
    std::string applicationName;
    std::string mediaName;
    // A paused stream holds the device without using it.
    bool corked = false;
    // Volume controls and visualisers read levels ("peaks" resampling) or record what a sink plays
    // (its monitor source): neither is somebody speaking or listening.
    bool readsLevelsOnly = false;
    // The process and its parents, nearest first, read when the stream appeared: browsers play and
    // record from a child process.
    std::vector<ProcessIdentifier> ancestry;
    // When the stream was first seen running; nothing while it has never run.
    std::optional<Date> firstSeenRunning;

    bool isEvidence() const { return pid && !corked && !readsLevelsOnly; }
};

} // namespace vardel::linux_desktop
