// Whole window dumps compared with the expected texts in golden/. After an intended change of the
// format, run the tests with VARDEL_REGENERATE_GOLDEN=1 to rewrite those files, and review the diff.

#include "diagnostics/AccessibilityDumper.h"
#include "support/ScriptedDesktopTest.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace vardel {
namespace {

using namespace vardel::testing;

const std::filesystem::path testFolder = std::filesystem::path(VARDEL_TESTS_DIR) / "diagnostics";

// With VARDEL_REGENERATE_GOLDEN=1 the file is written instead of compared.
void expectGolden(const std::string& name, const std::string& actual)
{
    auto file = testFolder / "golden" / (name + ".txt");
    const char* regenerate = std::getenv("VARDEL_REGENERATE_GOLDEN");
    if (regenerate && std::string(regenerate) == "1") {
        std::ofstream(file, std::ios::binary) << actual;
        return;
    }
    std::stringstream expected;
    expected << std::ifstream(file, std::ios::binary).rdbuf();
    EXPECT_EQ(actual, expected.str()) << "differs from " << file;
}

// A browser whose main window holds two pages in scroll areas, one with an embedded frame, and
// whose focused window shows a page that only a hit test at its centre finds; a notes editor whose
// focused window is its main window, with a further window; an installed reader that is not running.
Json fixtureApplications()
{
    return Json::parse(std::ifstream(testFolder / "fixtures/applications.json"));
}

class AccessibilityDumperWindowsTest : public ScriptedDesktopTest {
protected:
    std::string dump(const Json& scenario, const std::string& bundleIdentifier,
        const std::optional<std::string>& query = std::nullopt)
    {
        load(scenario);
        std::ostringstream output;
        std::ostringstream errors;
        desktop().redirectStandardStreams(output, errors);
        AccessibilityDumper::dumpWindowsForApplicationWithBundleIdentifier(bundleIdentifier, query);
        EXPECT_EQ(errors.str(), "");
        return output.str();
    }
};

TEST_F(AccessibilityDumperWindowsTest, WindowsAreDumpedWithTheirWebAreas)
{
    expectGolden("web-areas", dump(fixtureApplications(), "com.example.Browser"));
}

TEST_F(AccessibilityDumperWindowsTest, ASearchFindsMatchesInWindowsAndInsideWebAreas)
{
    expectGolden("search-web-areas", dump(fixtureApplications(), "com.example.Browser", "role=AXLink"));
}

TEST_F(AccessibilityDumperWindowsTest, ADeepTreeIsCutAtTheLevelBound)
{
    Json innermost = node("AXStaticText", { { "AXValue", "Level 23" } });
    for (int level = 22; level >= 1; --level)
        innermost = node("AXGroup", { { "AXTitle", "Level " + std::to_string(level) } },
            level == 20 ? Json { innermost, node("AXImage") } : Json { innermost });
    Json window = node("AXWindow", { { "id", "editor" }, { "AXTitle", "Deep" } }, { innermost });
    Json ui = node(
        "AXApplication", { { "AXMainWindow", ref("editor") }, { "AXFocusedWindow", ref("editor") } }, { window });
    expectGolden("deep-tree", dump(desktopWith(application(502, "com.example.Deep", ui)), "com.example.Deep"));
}

TEST_F(AccessibilityDumperWindowsTest, AFocusedMainWindowIsDumpedOnceAndOtherWindowsByIndex)
{
    expectGolden("focused-is-main", dump(fixtureApplications(), "com.example.Notes"));

    // The dump first asks the application to publish its whole tree.
    auto processes = events("process");
    ASSERT_EQ(processes.size(), 1u);
    EXPECT_EQ(processes[0]["arguments"], Json({ "write", "com.example.Notes", "voiceOverOnOffKey", "-bool", "true" }));
}

TEST_F(AccessibilityDumperWindowsTest, AnApplicationThatIsNotRunningIsNotFound)
{
    expectGolden("not-running", dump(fixtureApplications(), "com.example.Reader"));
    EXPECT_EQ(dump(fixtureApplications(), "com.example.Missing"), "Application 'com.example.Missing' not found.\n");
}

TEST_F(AccessibilityDumperWindowsTest, WindowsWithoutContentAreCalledOutOnStandardError)
{
    Json ui = node("AXApplication", { { "AXMainWindow", ref("page") } },
        { node("AXWindow", { { "id", "page" }, { "AXTitle", "Example" } }) });
    load(desktopWith(application(503, "org.chromium.Chromium", ui)));
    std::ostringstream output;
    std::ostringstream errors;
    desktop().redirectStandardStreams(output, errors);
    AccessibilityDumper::dumpWindowsForApplicationWithBundleIdentifier("org.chromium.Chromium", std::nullopt);
    EXPECT_NE(output.str().find("role='AXWindow' title='Example'"), std::string::npos);
    EXPECT_NE(errors.str().find("expose no content"), std::string::npos);
    EXPECT_NE(errors.str().find("--force-renderer-accessibility"), std::string::npos);
}

} // namespace
} // namespace vardel
