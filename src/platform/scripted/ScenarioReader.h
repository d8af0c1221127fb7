#pragma once

#include "platform/JsonCursor.h"
#include "platform/scripted/LiveElementLedger.h"
#include "platform/scripted/Scenario.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vardel::scripted {

// Reads and checks a whole scenario. The first problem found ends the reading with a ScenarioError
// naming the file and the JSON path; shape problems of a section come before problems of what it
// refers to.
class ScenarioReader {
public:
    // Relative paths in the scenario are taken relative to baseDirectory (kept as written when it is
    // empty).
    ScenarioReader(std::string sourceName, std::filesystem::path baseDirectory);

    Scenario read(const nlohmann::ordered_json&);

    // The sections that timeline steps share with the top level.
    ApplicationDescription readApplication(const JsonCursor&) const;
    static ApplicationInterface readInterface(const JsonCursor& ui);
    static std::vector<Rect> readScreens(const JsonCursor&);
    static Value::List readWindowList(const JsonCursor&);
    static Value::Dictionary readPowerAssertions(const JsonCursor&);
    static std::optional<RunningTask> readRunningTask(const JsonCursor&);
    // Key → value or null; with pathKeys, each key must be an absolute file path.
    static KeyChanges readKeyChanges(const JsonCursor&, bool pathKeys);

    LiveElementLedger& ledger() { return ledger_; }

private:
    Scenario readRoot(const JsonCursor& root);
    static void readSystem(const JsonCursor& root, Scenario&);
    void readStores(const JsonCursor& root, Scenario&) const;
    static void readScene(const JsonCursor& root, Scenario&);
    static void readProductState(const JsonCursor& root, Scenario&);
    void readApplications(const JsonCursor& root, Scenario&);
    void readProcesses(const JsonCursor& root, Scenario&);
    BundleDescription readSelf(const JsonCursor& root) const;
    static Value::Dictionary readPropertyLists(const JsonCursor& root, const BundleDescription& self);
    static std::vector<std::pair<std::string, Value::Dictionary>> readDomains(const JsonCursor& root);
    static std::vector<AlertAnswer> readAlertAnswers(const JsonCursor& root);
    static std::vector<EditorAnswer> readEditorAnswers(const JsonCursor& root);
    static Value readWindow(const JsonCursor&);
    static double readEnd(const JsonCursor& root, const std::vector<TimelineStep>& timeline);

    std::optional<std::string> optionalPath(const JsonCursor& object, std::string_view key) const;
    std::string resolvedPath(const std::string& path) const;

    std::string sourceName_;
    std::filesystem::path baseDirectory_;
    LiveElementLedger ledger_;
};

} // namespace vardel::scripted
