#pragma once

#include "platform/Value.h"

#include <functional>
#include <optional>
#include <string>

namespace vardel {

struct TimeEntryProposal {
    std::string heading;
    Date start;
    Date end;
    std::string title;
    std::optional<std::string> project;
};

// The product's editor for a time entry, shown to the user; the handler runs when the user saves.
class TimeEntryEditor {
public:
    virtual ~TimeEntryEditor() = default;
    virtual void present(const TimeEntryProposal&, std::function<void(const TimeEntryProposal& saved)> onSave) = 0;
};

} // namespace vardel
