#pragma once

#include "platform/Alerts.h"
#include "platform/EventTrace.h"
#include "platform/scripted/Scenario.h"

#include <vector>

namespace vardel::scripted {

// Alerts are answered by the scenario's `alertAnswers`, each used once, in order: the first unused
// answer whose message is part of the alert's message. An alert nobody answered gets its first
// button and keeps its check box.
class ScriptedAlerts final : public Alerts {
public:
    ScriptedAlerts(std::vector<AlertAnswer>& answers, EventTrace& trace)
        : answers_(answers)
        , trace_(trace)
    {
    }

    AlertResponse runModal(const AlertRequest&) override;

private:
    AlertResponse answer(const AlertRequest&);

    std::vector<AlertAnswer>& answers_;
    EventTrace& trace_;
};

} // namespace vardel::scripted
