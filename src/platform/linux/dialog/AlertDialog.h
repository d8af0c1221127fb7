#pragma once

#include <nlohmann/json.hpp>

namespace vardel::dialog {

// A modal warning alert: the message, the informative text, the buttons in the order given (the
// first is the default) and the suppression check box. Returns {"button": N, "suppressionState": B},
// or null when the window was closed without an answer.
nlohmann::json runAlert(const nlohmann::json& request);

} // namespace vardel::dialog
