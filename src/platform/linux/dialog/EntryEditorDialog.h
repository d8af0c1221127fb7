#pragma once

#include <nlohmann/json.hpp>

namespace vardel::dialog {

// The time-entry editor: the heading, then the title, the project, the start and the end (local
// time, "YYYY-MM-DD HH:MM:SS") and the duration they make, with Cancel and Save. The request and the
// answer carry dates as seconds since 1970: {"heading", "title", "project" (or null), "start", "end"}.
// Returns {"saved": true, "title", "project", "start", "end"} or {"saved": false}.
nlohmann::json runEntryEditor(const nlohmann::json& request);

} // namespace vardel::dialog
