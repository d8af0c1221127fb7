#pragma once

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vardel::testing {

// The events of a running tracker's trace (VARDEL_TRACE).
using Trace = std::vector<nlohmann::json>;

// The events so far; a last line the tracker is still writing is left for later.
inline Trace readTrace(const std::filesystem::path& path)
{
    Trace events;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line) && !file.eof();) {
        if (!line.empty())
            events.push_back(nlohmann::json::parse(line));
    }
    return events;
}

} // namespace vardel::testing
