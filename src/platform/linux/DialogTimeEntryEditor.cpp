#include "platform/linux/DialogTimeEntryEditor.h"

#include "platform/linux/DialogProcess.h"

namespace vardel::linux_desktop {

namespace {

nlohmann::json requestJson(const TimeEntryProposal& proposal)
{
    return { { "heading", proposal.heading }, { "title", proposal.title },
        { "project", proposal.project ? nlohmann::json(*proposal.project) : nlohmann::json(nullptr) },
        { "start", proposal.start.secondsSince1970 }, { "end", proposal.end.secondsSince1970 } };
}

// The saved entry; nothing when the editor was cancelled or its answer is not one.
std::optional<TimeEntryProposal> savedEntry(const nlohmann::json& answer, const TimeEntryProposal& proposal)
{
    if (!answer.is_object() || answer.value("saved", false) != true || !answer["title"].is_string()
        || !answer["start"].is_number() || !answer["end"].is_number())
        return std::nullopt;
    TimeEntryProposal saved = proposal;
    saved.title = answer["title"].get<std::string>();
    saved.project = answer["project"].is_string() ? std::optional(answer["project"].get<std::string>()) : std::nullopt;
    saved.start = Date { answer["start"].get<double>() };
    saved.end = Date { answer["end"].get<double>() };
    return saved;
}

} // namespace

DialogTimeEntryEditor::DialogTimeEntryEditor(
    std::optional<std::string> program, PollRunLoop& runLoop, EventTrace& trace, Log& log)
    : program_(std::move(program))
    , runLoop_(runLoop)
    , log_(log)
    , traced_(trace, log)
{
}

DialogTimeEntryEditor::~DialogTimeEntryEditor()
{
    for (auto& [id, session] : sessions_)
        runLoop_.removeSource(session.source);
}

void DialogTimeEntryEditor::present(
    const TimeEntryProposal& proposal, std::function<void(const TimeEntryProposal& saved)> onSave)
{
    traced_.present(proposal, nullptr);
    if (!program_)
        return;
    auto process = DialogProcess::start(*program_, "editor", requestJson(proposal));
    if (!process) {
        log_.warning("Cannot start " + *program_ + " to show the time-entry editor");
        return;
    }
    int id = ++lastSession_;
    int output = process->output();
    sessions_.emplace(id, Session { std::move(process), 0, proposal, std::move(onSave) });
    sessions_[id].source = runLoop_.addReadableSource(output, [this, id] { serve(id); });
}

void DialogTimeEntryEditor::serve(int id)
{
    auto found = sessions_.find(id);
    if (found == sessions_.end() || !found->second.process->readAvailable())
        return;
    Session session = std::move(found->second);
    sessions_.erase(found);
    runLoop_.removeSource(session.source);
    auto answer = session.process->answer();
    session.process.reset();
    if (auto saved = answer ? savedEntry(*answer, session.proposal) : std::nullopt) {
        log_.info("Time entry saved: " + saved->heading + ": " + saved->title);
        if (session.onSave)
            session.onSave(*saved);
    }
}

} // namespace vardel::linux_desktop
