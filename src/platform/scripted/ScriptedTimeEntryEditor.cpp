#include "platform/scripted/ScriptedTimeEntryEditor.h"

#include "platform/ValueJson.h"

namespace vardel::scripted {

void ScriptedTimeEntryEditor::present(
    const TimeEntryProposal& proposal, std::function<void(const TimeEntryProposal& saved)> onSave)
{
    trace_.write("editor",
        { { "heading", proposal.heading }, { "start", ValueJson::formatIso8601(proposal.start) },
            { "end", ValueJson::formatIso8601(proposal.end) }, { "title", proposal.title },
            { "project", proposal.project ? nlohmann::ordered_json(*proposal.project) : nullptr } });
    if (nextAnswer_ >= answers_.size())
        return;
    const EditorAnswer& answer = answers_[nextAnswer_++];
    if (answer.action != EditorAnswer::Action::Save)
        return;
    TimeEntryProposal saved = proposal;
    if (answer.title)
        saved.title = *answer.title;
    if (answer.project)
        saved.project = answer.project;
    onSave(saved);
}

} // namespace vardel::scripted
