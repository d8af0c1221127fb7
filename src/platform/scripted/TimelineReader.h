#pragma once

#include "platform/JsonCursor.h"
#include "platform/scripted/Scenario.h"

#include <vector>

namespace vardel::scripted {

class ScenarioReader;

// Reads the timeline's steps, in order, and follows their effect on running applications and
// element ids so that each step may only name what exists at its time.
class TimelineReader {
public:
    explicit TimelineReader(ScenarioReader& scenario)
        : scenario_(scenario)
    {
    }

    std::vector<TimelineStep> read(const JsonCursor& timeline);

private:
    TimelineStep readStep(const JsonCursor&, double earliest);
    void readApplicationChanges(const JsonCursor&, TimelineStep&);
    void readAttributeChanges(const JsonCursor& set, TimelineStep&);
    static void readWorldChanges(const JsonCursor&, TimelineStep&);
    static void readInteractions(const JsonCursor&, TimelineStep&);
    static NotificationResponse readResponse(const JsonCursor&);
    static MenuInteraction readMenu(const JsonCursor&);
    static ScriptCommand readScript(const JsonCursor&);
    static ModifierKeys readKeys(const JsonCursor&);

    ScenarioReader& scenario_;
};

} // namespace vardel::scripted
