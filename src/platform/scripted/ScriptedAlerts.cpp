#include "platform/scripted/ScriptedAlerts.h"

#include <algorithm>

namespace vardel::scripted {

AlertResponse ScriptedAlerts::runModal(const AlertRequest& request)
{
    AlertResponse response = answer(request);
    nlohmann::ordered_json suppressionOnOpening = nullptr;
    nlohmann::ordered_json suppressionAnswer = nullptr;
    if (request.showsSuppressionButton) {
        suppressionOnOpening = request.suppressionState;
        suppressionAnswer = response.suppressionState;
    }
    trace_.write("alert",
        { { "message", request.message }, { "informative", request.informativeText }, { "buttons", request.buttons },
            { "suppression", suppressionOnOpening }, { "answer", response.button },
            { "suppressionAnswer", suppressionAnswer } });
    return response;
}

AlertResponse ScriptedAlerts::answer(const AlertRequest& request)
{
    AlertResponse response { 1, request.suppressionState };
    auto found = std::find_if(answers_.begin(), answers_.end(),
        [&](const AlertAnswer& answer) { return request.message.find(answer.message) != std::string::npos; });
    if (found == answers_.end())
        return response;
    // A button the alert does not have counts as the first, as closing it would.
    if (found->button >= 1 && found->button <= static_cast<int64_t>(request.buttons.size()))
        response.button = static_cast<int>(found->button);
    if (request.showsSuppressionButton && found->suppression)
        response.suppressionState = *found->suppression;
    answers_.erase(found);
    return response;
}

} // namespace vardel::scripted
