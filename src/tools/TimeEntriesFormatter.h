#pragma once

#include "product/TaskActivity.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace vardel {

// How `vardel entries` shows a day's time entries.
class TimeEntriesFormatter {
public:
    // One line per entry, earliest first: its times, duration, title and project.
    static std::string text(const std::vector<TaskActivity>&, const std::string& day);
    static nlohmann::ordered_json json(const std::vector<TaskActivity>&, const std::string& day);
};

} // namespace vardel
