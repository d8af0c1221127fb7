#include "activity/VDInfoExtractor.h"
#include "extractors/AdobeProjectPathInfoExtractor.h"
#include "extractors/CatalystInfoExtractor.h"
#include "extractors/ChatGPTInfoExtractor.h"
#include "extractors/FinalCutInfoExtractor.h"
#include "extractors/GitHubDesktopInfoExtractor.h"
#include "extractors/NotesInfoExtractor.h"
#include "extractors/NotionInfoExtractor.h"
#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;
using OptionalPath = std::optional<std::vector<std::string>>;

Json valuedNode(const std::string& role, const std::string& value)
{
    return node(role, { { "AXValue", value } });
}

// A chain of elements of one role, each the only child of the one before.
Json nested(const std::string& role, int levels, Json innermostChildren)
{
    Json element = node(role, {}, std::move(innermostChildren));
    for (int level = 1; level < levels; ++level)
        element = node(role, {}, { element });
    return element;
}

Json titledWebWindow(Json title, Json webAreaChildren)
{
    return node("AXWindow", { { "AXTitle", std::move(title) } },
        { node("AXScrollArea", {}, { node("AXWebArea", {}, std::move(webAreaChildren)) }) });
}

class DocumentExtractorsTest : public ScriptedDesktopTest {
protected:
    // The record the sampler makes of an application whose main window is the given one.
    VDActivity sample(
        const std::string& bundleIdentifier, const std::string& name, Json window, Json preferences = Json::object())
    {
        Json ui = node("AXApplication", { { "AXMainWindow", ref("main") } }, { withId(std::move(window), "main") });
        Json app = application(501, bundleIdentifier, ui);
        app["localizedName"] = name;
        Json scenario = desktopWith(app);
        scenario["preferences"] = std::move(preferences);
        ProcessWideState::resetAll();
        load(scenario);
        return VDInfoExtractor::currentActivity().value();
    }

    template<typename Extractor>
    VDActivityDetails extract(const std::string& bundleIdentifier, const std::string& name, Json window)
    {
        VDActivity activity = sample(bundleIdentifier, name, std::move(window));
        Extractor::writeDetailsForActivity(activity);
        return activity.details;
    }
};

TEST_F(DocumentExtractorsTest, AdobeTakesTheProjectPathFromTheTitle)
{
    auto adobe = [this](const std::string& title, Json more = Json::object()) {
        more["AXTitle"] = title;
        return extract<AdobeProjectPathInfoExtractor>("com.adobe.PremierePro.24", "Premiere", node("AXWindow", more));
    };
    auto details = adobe("Adobe Premiere Pro 2024 - /Projects/Trailer.prproj *");
    EXPECT_EQ(details.documentPath, "/Projects/Trailer.prproj");
    EXPECT_EQ(details.windowTitle, std::nullopt);

    details = adobe("Adobe After Effects 2024 - /Users/ana/Spot.aep \u2013 Composition 1");
    EXPECT_EQ(details.documentPath, "/Users/ana/Spot.aep");
    EXPECT_EQ(details.windowTitle, "Composition 1");

    // The prefixes are anchored at the start and the extensions are case-sensitive.
    details = adobe("Draft: Adobe Premiere Pro 2024 - /P/Cut.prproj");
    EXPECT_EQ(details.windowTitle, "Draft: Adobe Premiere Pro 2024");
    details = adobe("Adobe Premiere Pro 2024 - /Projects/Trailer.PRPROJ");
    EXPECT_EQ(details.documentPath, std::nullopt);
    EXPECT_EQ(details.windowTitle, "Adobe Premiere Pro 2024 - /Projects/Trailer.PRPROJ");

    details = adobe("Adobe Premiere Pro 2024 - /P/Cut.prproj", { { "AXDocument", "/Existing.prproj" } });
    EXPECT_EQ(details.documentPath, "/Existing.prproj");
    EXPECT_EQ(details.windowTitle, "Adobe Premiere Pro 2024 - /P/Cut.prproj");
}

TEST_F(DocumentExtractorsTest, CatalystReplacesOnlyATitleThatIsTheApplicationsName)
{
    Json heading = node("AXHeading", { { "AXDescription", "Board \u200B1" } });
    Json content = node("AXGroup", { { "AXSubrole", "iOSContentGroup" } }, { nested("AXGroup", 3, { heading }) });
    auto catalyst = [&](Json title, const std::string& name, Json firstChild) {
        return extract<CatalystInfoExtractor>(
            "com.apple.freeform", name, node("AXWindow", { { "AXTitle", title } }, { firstChild }))
            .windowTitle;
    };
    EXPECT_EQ(catalyst("Freeform", "Free\u200Bform", content), "Board 1");
    EXPECT_EQ(catalyst(nullptr, "Freeform", content), "Board 1");
    EXPECT_EQ(catalyst("Boards", "Freeform", content), "Boards");

    Json otherSubrole = content;
    otherSubrole["AXSubrole"] = "AXContentGroup";
    EXPECT_EQ(catalyst("Freeform", "Freeform", otherSubrole), "Freeform");
    Json shallow = node("AXGroup", { { "AXSubrole", "iOSContentGroup" } }, { nested("AXGroup", 2, { heading }) });
    EXPECT_EQ(catalyst("Freeform", "Freeform", shallow), "Freeform");
}

TEST_F(DocumentExtractorsTest, NotesNamesTheSelectedNoteByItsTopmostLine)
{
    auto notes = [this](Json lines, const std::string& title) {
        Json table = node("AXTable", { { "AXSelectedRows", { ref("row") } } },
            { withId(node("AXRow", {}, { node("AXCell", {}, std::move(lines)) }), "row") });
        Json window = node("AXWindow", { { "AXTitle", title } },
            { node("AXSplitGroup", {}, { node("AXScrollArea", {}, { table }) }) });
        return extract<NotesInfoExtractor>("com.apple.Notes", "Notes", window).contextPath;
    };
    auto line = [](const std::string& value, int y) {
        return node("AXStaticText", { { "AXValue", value }, { "AXPosition", { { "point", { 0, y } } } } });
    };
    EXPECT_EQ(notes({ line("9:41 Milk, eggs", 40), line("Groceries", 20) }, "Notes"), OptionalPath({ "Groceries" }));

    std::string longTitle(60, 'x');
    EXPECT_EQ(notes({ line(longTitle, 20) }, "Notes"), OptionalPath({ std::string(49, 'x') + "\u2026" }));

    // An excerpt is no title; the window title stands in unless it is the application's name.
    EXPECT_EQ(notes({ line("\u2026and then", 20) }, "Shopping"), OptionalPath({ "Shopping" }));
    EXPECT_EQ(notes({ line("\u2026and then", 20) }, "Notes"), std::nullopt);
}

TEST_F(DocumentExtractorsTest, NotionCollectsTheBreadcrumbOfTheMainArea)
{
    Json items = { node("AXGroup", {}, { node("AXButton", { { "AXTitle", "Team" } }) }),
        node("AXLink", { { "AXDescription", "Roadmap" } }), node("AXStaticText", { { "AXDescription", "/" } }),
        node("AXGroup", {}, { node("AXLink", { { "AXTitle", "Orphan" } }) }) };
    auto notion = [&](Json branches, Json window = nullptr) {
        if (window.is_null())
            window = titledWebWindow("Roadmap", { nested("AXGroup", 3, std::move(branches)) });
        return extract<NotionInfoExtractor>("notion.id", "Notion", window);
    };
    Json sidebar = node("AXGroup", {}, { nested("AXGroup", 3, { node("AXLink", { { "AXDescription", "Home" } }) }) });
    Json main = nested("AXGroup", 3, { node("AXGroup", {}, items) });
    auto details = notion({ sidebar, node("AXButton"), main });
    EXPECT_EQ(details.contextPath, OptionalPath({ "Team", "Roadmap" }));
    EXPECT_EQ(details.documentPath, std::nullopt);

    // Without a second branch the window title is the document.
    details = notion({ main });
    EXPECT_EQ(details.contextPath, std::nullopt);
    EXPECT_EQ(details.documentPath, "Roadmap");
    Json withDocument = titledWebWindow("Roadmap", {});
    withDocument["AXDocument"] = "https://www.notion.so/roadmap";
    EXPECT_EQ(notion({}, withDocument).documentPath, "https://www.notion.so/roadmap");
}

TEST_F(DocumentExtractorsTest, GitHubDesktopReadsTheCurrentRepositoryButton)
{
    auto button = [](Json classes, const std::string& name) {
        Json lines = node("AXGroup", {},
            { node("AXGroup", {}, { valuedNode("AXStaticText", "Current Repository") }),
                node("AXGroup", {}, { valuedNode("AXStaticText", name) }) });
        return node("AXGroup", { { "AXDOMClassList", std::move(classes) } }, { node("AXButton", {}, { lines }) });
    };
    auto gitHub = [](Json toolbarItems) {
        Json toolbar = node("AXGroup", { { "AXDOMIdentifier", "desktop-app-toolbar" } }, std::move(toolbarItems));
        Json contents = node("AXGroup", { { "AXDOMIdentifier", "desktop-app-contents" } }, { toolbar });
        Json app = nested("AXGroup", 3, { node("AXGroup", { { "AXDOMIdentifier", "title-bar" } }), contents });
        return titledWebWindow("GitHub Desktop", { app });
    };
    auto path = [this](Json window) {
        return extract<GitHubDesktopInfoExtractor>("com.github.GitHubClient", "GitHub Desktop", window).contextPath;
    };
    EXPECT_EQ(path(gitHub({ button({ "toolbar-dropdown", "toolbar-buttons" }, "not this"),
                  button({ "toolbar-button", "repository" }, "vardel-tracker"),
                  button({ "toolbar-button", "branch" }, "main") })),
        OptionalPath({ "vardel-tracker" }));
    EXPECT_EQ(path(gitHub({ button({ "toolbar-button" }, "") })), std::nullopt);
    EXPECT_EQ(path(gitHub({ button("toolbar-button", "vardel-tracker") })), std::nullopt);
}

TEST_F(DocumentExtractorsTest, TheAssistiveTechnologyFlagIsForcedOnlyWhereItMustBe)
{
    Json allowed = { { "advancedAccessibilityTrackingEnabled", true } };
    auto forcedWrites = [&](const std::string& bundleIdentifier, auto write) {
        VDActivity activity = sample(bundleIdentifier, "App", titledWebWindow("Page", {}), allowed);
        write(activity);
        return events("process").size();
    };
    EXPECT_EQ(forcedWrites("com.adobe.AfterEffects", AdobeProjectPathInfoExtractor::writeDetailsForActivity), 1u);
    EXPECT_EQ(forcedWrites("com.github.GitHubClient", GitHubDesktopInfoExtractor::writeDetailsForActivity), 1u);
    EXPECT_EQ(forcedWrites("notion.id", NotionInfoExtractor::writeDetailsForActivity), 0u);
}

class FinalCutTest : public DocumentExtractorsTest {
protected:
    static Json pane(int top, Json children)
    {
        return node("AXGroup",
            { { "AXPosition", { { "point", { 0, top } } } }, { "AXSize", { { "size", { 800, 400 } } } } },
            std::move(children));
    }

    static Json outline(const std::string& id, Json rows, const std::string& selected)
    {
        return withId(node("AXOutline", { { "AXSelectedRows", { ref(selected) } } }, std::move(rows)), id);
    }

    static Json row(const std::string& id, Json cells, Json parent = nullptr)
    {
        return withId(node("AXRow", { { "AXDisclosedByRow", std::move(parent) } }, std::move(cells)), id);
    }

    static Json window(Json panes)
    {
        Json inner = node("AXGroup", {}, { node("AXSplitGroup", {}, std::move(panes)) });
        return node("AXWindow", { { "AXTitle", "Final Cut Pro" } }, { node("AXSplitGroup", {}, { inner }) });
    }
};

TEST_F(FinalCutTest, TheTopmostOutlineComesFirstThenTheSplitOutline)
{
    Json libraryRows = { row("library", { valuedNode("AXTextField", "Library") }),
        row("event", { node("AXCell", {}, { valuedNode("AXStaticText", "Event 1") }) }, ref("library")),
        row("unnamed", { node("AXImage") }, ref("event")) };
    Json library = node(
        "AXScrollArea", { { "AXContents", { ref("sidebar") } } }, { outline("sidebar", libraryRows, "unnamed") });
    Json lower = node("AXScrollArea", { { "AXContents", { ref("lower") } } },
        { outline("lower", { row("lowerRow", { valuedNode("AXTextField", "Too low") }) }, "lowerRow") });
    Json projects = node("AXSplitGroup", {},
        { node("AXScrollArea", {},
            { outline("projects", { row("project", { node("AXGroup", {}, { valuedNode("AXStaticText", "Cut A") }) }) },
                "project") }) });
    Json panes = { pane(500, { lower }), pane(0, { library, projects }) };
    auto details = extract<FinalCutInfoExtractor>("com.apple.FinalCut", "Final Cut Pro", window(panes));
    EXPECT_EQ(details.contextPath, OptionalPath({ "Library", "Event 1", "Cut A" }));
}

TEST_F(FinalCutTest, AnEarlierPathStaysAndCircularAncestryEnds)
{
    Json rows = { row("a", { valuedNode("AXTextField", "A") }, ref("b")),
        row("b", { valuedNode("AXTextField", "B") }, ref("a")) };
    Json area = node("AXScrollArea", { { "AXContents", { ref("circle") } } }, { outline("circle", rows, "a") });
    VDActivity activity = sample("com.apple.FinalCut", "Final Cut Pro", window({ pane(0, { area }) }));
    FinalCutInfoExtractor::writeDetailsForActivity(activity);
    EXPECT_EQ(activity.details.contextPath, OptionalPath({ "B", "A" }));

    activity.details.contextPath = { "Earlier" };
    FinalCutInfoExtractor::writeDetailsForActivity(activity);
    EXPECT_EQ(activity.details.contextPath, OptionalPath({ "Earlier" }));
}

class ChatGPTTest : public DocumentExtractorsTest {
protected:
    static Json item(const std::string& description, int width)
    {
        return node("AXButton", { { "AXDescription", description }, { "AXSize", { { "size", { width, 28 } } } } });
    }

    static Json conversationArea()
    {
        return node(
            "AXGroup", {}, { node("AXSplitGroup", {}, { node("AXList"), node("AXSplitter"), node("AXScrollArea") }) });
    }

    OptionalPath conversation(const std::string& title, Json toolbarItems, bool withArea = true)
    {
        Json children = Json::array({ node("AXToolbar", {}, std::move(toolbarItems)) });
        if (withArea)
            children.push_back(conversationArea());
        return extract<ChatGPTInfoExtractor>(
            "com.openai.chat", "ChatGPT", node("AXWindow", { { "AXTitle", title } }, children))
            .contextPath;
    }
};

TEST_F(ChatGPTTest, TheTitleComesFromWideToolbarItemsThatAreNotTheApplication)
{
    Json items
        = { item("Sidebar", 30), item("Exactly fifty", 50), item("ChatGPT 4o", 120), item("Trip planning", 200) };
    EXPECT_EQ(conversation("ChatGPT", items), OptionalPath({ "Trip planning" }));
    // Only the application's own spelling is skipped.
    EXPECT_EQ(conversation("ChatGPT", { item("chatgpt tips", 200) }), OptionalPath({ "chatgpt tips" }));
}

TEST_F(ChatGPTTest, WindowAndToolbarTitlesAreCombinedWithoutRepeats)
{
    EXPECT_EQ(conversation("Trip planning", { item("Trip planning", 200) }), OptionalPath({ "Trip planning" }));
    EXPECT_EQ(conversation("Work", { item("Trip planning", 200) }), OptionalPath({ "Work, Trip planning" }));
    EXPECT_EQ(conversation("Work, Trip planning", { item("Trip planning, Day 2", 200) }),
        OptionalPath({ "Work, Trip planning, Day 2" }));
    EXPECT_EQ(conversation("Trip planning", {}), OptionalPath({ "Trip planning" }));
}

TEST_F(ChatGPTTest, NewChatOnlyWhenTheConversationAreaIsThere)
{
    EXPECT_EQ(conversation("ChatGPT", { item("ChatGPT 4o", 120) }), OptionalPath({ "New Chat" }));
    EXPECT_EQ(conversation("ChatGPT", { item("ChatGPT 4o", 120) }, false), std::nullopt);
}

} // namespace
} // namespace vardel
