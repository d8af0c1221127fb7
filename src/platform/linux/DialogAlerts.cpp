#include "platform/linux/DialogAlerts.h"

#include "platform/linux/DialogProcess.h"

namespace vardel::linux_desktop {

namespace {

nlohmann::json requestJson(const AlertRequest& request)
{
    return { { "message", request.message }, { "informativeText", request.informativeText },
        { "buttons", request.buttons }, { "showsSuppressionButton", request.showsSuppressionButton },
        { "suppressionState", request.suppressionState } };
}

// A button the alert has, and the check box's state; nothing for any other answer.
std::optional<AlertResponse> response(const nlohmann::json& answer, const AlertRequest& request)
{
    if (!answer.is_object() || !answer.contains("button") || !answer["button"].is_number_integer())
        return std::nullopt;
    int button = answer["button"].get<int>();
    int buttons = std::max<int>(1, static_cast<int>(request.buttons.size()));
    if (button < 1 || button > buttons)
        return std::nullopt;
    bool suppression = answer.value("suppressionState", request.suppressionState);
    return AlertResponse { button, suppression };
}

} // namespace

DialogAlerts::DialogAlerts(std::optional<std::string> program, Log& log)
    : program_(std::move(program))
    , log_(log)
    , unattended_(log)
{
}

AlertResponse DialogAlerts::runModal(const AlertRequest& request)
{
    if (!program_)
        return unattended_.runModal(request);
    auto dialog = DialogProcess::start(*program_, "alert", requestJson(request));
    if (!dialog) {
        log_.warning("Cannot start " + *program_ + " to show an alert");
        return unattended_.runModal(request);
    }
    dialog->readToEnd();
    auto answer = dialog->answer();
    if (auto answered = answer ? response(*answer, request) : std::nullopt)
        return *answered;
    log_.warning("The alert was closed without an answer");
    return unattended_.runModal(request);
}

} // namespace vardel::linux_desktop
