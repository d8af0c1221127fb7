#pragma once

#include "platform/EventTrace.h"
#include "platform/Log.h"
#include "platform/TimeEntryEditor.h"
#include "platform/ValueJson.h"

namespace vardel::linux_desktop {

// The product's editor is not part of this process on Linux: a proposal is logged and traced, and
// never saved from here.
class TracedTimeEntryEditor final : public TimeEntryEditor {
public:
    TracedTimeEntryEditor(EventTrace& trace, Log& log)
        : trace_(trace)
        , log_(log)
    {
    }

    void present(const TimeEntryProposal& proposal, std::function<void(const TimeEntryProposal&)>) override
    {
        log_.info("Time entry proposed: " + proposal.heading + ": " + proposal.title);
        trace_.write("editor",
            { { "heading", proposal.heading }, { "start", ValueJson::formatIso8601(proposal.start) },
                { "end", ValueJson::formatIso8601(proposal.end) }, { "title", proposal.title },
                { "project", proposal.project ? nlohmann::ordered_json(*proposal.project) : nullptr } });
    }

private:
    EventTrace& trace_;
    Log& log_;
};

} // namespace vardel::linux_desktop
