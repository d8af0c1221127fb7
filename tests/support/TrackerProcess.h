#pragma once

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace vardel::testing {

// The scenario files the tests run the tracker on.
inline const std::filesystem::path scenarios = VARDEL_SCENARIOS_DIR;

// Runs the vardel-tracker executable on a scenario and collects what it left behind.
struct TrackerRun {
    int exitStatus = -1;
    std::string standardError;
    std::vector<nlohmann::ordered_json> trace;

    std::vector<nlohmann::ordered_json> events(const std::string& name) const
    {
        std::vector<nlohmann::ordered_json> matching;
        for (const auto& event : trace) {
            if (event["event"] == name)
                matching.push_back(event);
        }
        return matching;
    }
};

inline std::string readFile(const std::filesystem::path& path)
{
    std::ifstream file(path);
    std::stringstream contents;
    contents << file.rdbuf();
    return contents.str();
}

inline std::string quoted(const std::string& text)
{
    return "'" + text + "'";
}

// The data folder, when given, is kept for the caller; otherwise a temporary one is removed afterwards.
inline TrackerRun runTracker(const std::filesystem::path& scenario, const std::string& arguments = "",
    const std::optional<std::filesystem::path>& dataFolder = std::nullopt)
{
    auto folder = std::filesystem::temp_directory_path()
        / ("vardel-run-" + std::to_string(::getpid()) + "-" + scenario.stem().string());
    std::filesystem::create_directories(folder);
    auto tracePath = folder / "trace.jsonl";
    auto errorPath = folder / "stderr.txt";
    std::filesystem::remove(tracePath);
    std::string command = "VARDEL_DESKTOP=" + quoted(scenario.string()) + " VARDEL_TRACE=" + quoted(tracePath.string())
        + " VARDEL_DATA_DIR=" + quoted(dataFolder.value_or(folder / "data").string()) + " "
        + quoted(VARDEL_TRACKER_PATH) + " " + arguments + " 2>" + quoted(errorPath.string());
    TrackerRun run;
    int status = std::system(command.c_str());
    run.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.standardError = readFile(errorPath);
    std::istringstream lines(readFile(tracePath));
    for (std::string line; std::getline(lines, line);)
        run.trace.push_back(nlohmann::ordered_json::parse(line));
    std::filesystem::remove_all(folder);
    return run;
}

} // namespace vardel::testing
