#pragma once

#include "platform/EventTrace.h"
#include "platform/Log.h"
#include "platform/TimeEntryEditor.h"
#include "platform/linux/PollRunLoop.h"
#include "platform/linux/TracedTimeEntryEditor.h"

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace vardel::linux_desktop {

class DialogProcess;

// The time-entry editor as a real window, shown by vardel-dialog. The tracker does not wait for it:
// the answer is read from the run loop when it comes, so that sampling goes on while the window is
// open. Every proposal is also logged and traced as before; without the program it is only that.
class DialogTimeEntryEditor final : public TimeEntryEditor {
public:
    // program: vardel-dialog's path; nothing when it is not installed.
    DialogTimeEntryEditor(std::optional<std::string> program, PollRunLoop& runLoop, EventTrace& trace, Log& log);
    // Windows still open are closed.
    ~DialogTimeEntryEditor() override;
    DialogTimeEntryEditor(const DialogTimeEntryEditor&) = delete;
    DialogTimeEntryEditor& operator=(const DialogTimeEntryEditor&) = delete;

    void present(
        const TimeEntryProposal& proposal, std::function<void(const TimeEntryProposal& saved)> onSave) override;

    // Editors open now.
    size_t openEditors() const { return sessions_.size(); }

private:
    struct Session {
        std::unique_ptr<DialogProcess> process;
        PollRunLoop::SourceId source = 0;
        TimeEntryProposal proposal;
        std::function<void(const TimeEntryProposal&)> onSave;
    };

    void serve(int session);

    std::optional<std::string> program_;
    PollRunLoop& runLoop_;
    Log& log_;
    TracedTimeEntryEditor traced_;
    std::map<int, Session> sessions_;
    int lastSession_ = 0;
};

} // namespace vardel::linux_desktop
