#pragma once

#include "platform/Value.h"

#include <cstdint>
#include <ostream>
#include <string>

namespace vardel {

// One change reported by the file-system event watcher.
class SCEvent {
public:
    SCEvent(uint64_t eventId, Date eventDate, std::string eventPath, uint32_t eventFlag)
        : eventId_(eventId)
        , eventDate_(eventDate)
        , eventPath_(std::move(eventPath))
        , eventFlag_(eventFlag)
    {
    }

    static SCEvent eventWithEventId(uint64_t eventId, Date eventDate, std::string eventPath, uint32_t eventFlag)
    {
        return { eventId, eventDate, std::move(eventPath), eventFlag };
    }

    // The event stream's identifier.
    uint64_t eventId() const { return eventId_; }
    // When the watcher received the event, not when the change happened.
    Date eventDate() const { return eventDate_; }
    // The changed folder, without a trailing "/".
    const std::string& eventPath() const { return eventPath_; }
    uint32_t eventFlag() const { return eventFlag_; }

    std::string description() const;

    bool operator==(const SCEvent&) const = default;

private:
    uint64_t eventId_;
    Date eventDate_;
    std::string eventPath_;
    uint32_t eventFlag_;
};

std::ostream& operator<<(std::ostream&, const SCEvent&);

} // namespace vardel
