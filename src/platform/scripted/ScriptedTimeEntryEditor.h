#pragma once

#include "platform/EventTrace.h"
#include "platform/TimeEntryEditor.h"
#include "platform/scripted/Scenario.h"

#include <cstddef>
#include <vector>

namespace vardel::scripted {

// Every editor is traced as it opens and answered at once by the scenario's next editor answer; an
// editor without an answer is cancelled.
class ScriptedTimeEntryEditor final : public TimeEntryEditor {
public:
    ScriptedTimeEntryEditor(const std::vector<EditorAnswer>& answers, EventTrace& trace)
        : answers_(answers)
        , trace_(trace)
    {
    }

    void present(const TimeEntryProposal&, std::function<void(const TimeEntryProposal& saved)> onSave) override;

private:
    const std::vector<EditorAnswer>& answers_;
    size_t nextAnswer_ = 0;
    EventTrace& trace_;
};

} // namespace vardel::scripted
