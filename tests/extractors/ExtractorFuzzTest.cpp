// Every extractor meets random trees: wrong types, references that make cycles through AXParent and
// AXChildren, deep and wide trees and hostile text. Each sample must end, quickly and without a crash.

#include "activity/VDInfoExtractor.h"
#include "support/ScriptedDesktopTest.h"

#include <random>

namespace vardel {
namespace {

using namespace vardel::testing;

const char* const bundleIdentifiers[] = { "com.apple.FinalCut", "org.mozilla.firefox", "com.apple.Safari",
    "company.thebrowser.dia", "com.openai.atlas", "com.apple.mail", "com.apple.Notes", "com.tinyspeck.slackmacgap",
    "com.hnc.Discord", "com.amazon.Amazon-Chime", "net.whatsapp.WhatsApp", "WhatsApp",
    "org.whispersystems.signal-desktop", "notion.id", "com.microsoft.teams2", "com.microsoft.Outlook",
    "com.github.GitHubClient", "com.readdle.SparkDesktop", "com.openai.chat", "com.mimestream.Mimestream",
    "com.superhuman.electron", "com.google.Chrome", "com.adobe.PremierePro.24", "com.adobe.AfterEffects",
    "com.example.Unknown", "com.google.Chrome.app.abcdef", "com.apple.Safari.WebApp.1" };

const char* const attributeNames[] = { "AXRole", "AXSubrole", "AXTitle", "AXValue", "AXDescription", "AXURL",
    "AXDocument", "AXIdentifier", "AXDOMIdentifier", "AXDOMClassList", "AXChildren", "AXParent", "AXWindows",
    "AXSelectedRows", "AXContents", "AXChildrenInNavigationOrder", "AXModal", "AXFullScreen", "AXPosition", "AXSize",
    "AXSelected", "AXDisclosedByRow", "AXHelp", "AXEnhancedUserInterface", "AXMainWindow", "AXFocusedWindow" };

const char* const roles[] = { "AXWindow", "AXGroup", "AXWebArea", "AXScrollArea", "AXButton", "AXStaticText",
    "AXHeading", "AXToolbar", "AXSheet", "AXLink", "AXTable", "AXRow", "AXOutline", "AXTextArea", "AXTextField",
    "AXSplitGroup", "AXPopUpButton", "AXTabGroup", "AXCell" };

const char* const texts[] = { "", " ", "Inbox", "Acme - general - Slack", "Acme | design | Slack", "Friends - Discord",
    "\u2022 x \u2022", "\u200E\u202Ehostile\u202C", "Edited \u2014 ", "*", "(3)", "https://meet.example/abc",
    "file:///tmp/a b.txt", "Private Browsing", "\xF0\x9F\x98\x80\xF0\x9F\x98\x80", "ChatGPT", "New Chat",
    "toolbar-button", "app-container", "nameFieldLabel", "a\nb\tc" };

class TreeGenerator {
public:
    explicit TreeGenerator(unsigned seed)
        : random_(seed)
    {
    }

    Json scenario(const std::string& bundleIdentifier)
    {
        ids_.clear();
        Json ui = element(0);
        ui["AXRole"] = "AXApplication";
        ui["AXMainWindow"] = randomReference();
        ui["AXFocusedWindow"] = randomReference();
        if (chance(4))
            ui["AXTitle"] = std::string(20000, 'x') + " - Slack";
        Json app = application(501, bundleIdentifier, ui);
        app["localizedName"] = pick(texts);
        Json scenario = desktopWith(app);
        scenario["preferences"] = { { "advancedAccessibilityTrackingEnabled", chance(2) } };
        return scenario;
    }

private:
    Json element(int depth)
    {
        Json made = { { "id", "e" + std::to_string(ids_.size()) }, { "AXRole", pick(roles) } };
        ids_.push_back(made["id"]);
        int attributeCount = static_cast<int>(random_() % 6);
        for (int index = 0; index < attributeCount; ++index)
            made[pick(attributeNames)] = value(0);
        if (depth < 25 && ids_.size() < 400) {
            int childCount = depth < 2 ? 1 + static_cast<int>(random_() % 6) : static_cast<int>(random_() % 3);
            Json children = Json::array();
            for (int index = 0; index < childCount; ++index)
                children.push_back(element(depth + 1));
            made["children"] = std::move(children);
        }
        return made;
    }

    Json value(int depth)
    {
        switch (random_() % 9) {
        case 0:
            return pick(texts);
        case 1:
            return static_cast<int>(random_() % 2000) - 1000;
        case 2:
            return chance(2);
        case 3:
            return { { "url", pick(texts) } };
        case 4:
            return { { "point", { random_() % 3000, random_() % 3000 } } };
        case 5:
            return { { "size", { random_() % 3000, random_() % 3000 } } };
        case 6:
            return randomReference();
        case 7: {
            Json list = Json::array();
            for (int index = 0; depth < 2 && index < static_cast<int>(random_() % 4); ++index)
                if (Json member = value(depth + 1); !member.is_null())
                    list.push_back(std::move(member));
            return list;
        }
        default:
            return nullptr;
        }
    }

    // A reference to an element made so far, which often makes a cycle.
    Json randomReference() { return ids_.empty() ? Json(nullptr) : ref(ids_[random_() % ids_.size()]); }

    bool chance(unsigned oneIn) { return random_() % oneIn == 0; }

    template<size_t N> const char* pick(const char* const (&choices)[N]) { return choices[random_() % N]; }

    std::mt19937 random_;
    std::vector<std::string> ids_;
};

class ExtractorFuzzTest : public ScriptedDesktopTest { };

TEST_F(ExtractorFuzzTest, RandomTreesNeverCrashOrHangAnExtractor)
{
    TreeGenerator generator(20261123);
    for (int round = 0; round < 6; ++round) {
        for (const char* bundleIdentifier : bundleIdentifiers) {
            ProcessWideState::resetAll();
            load(generator.scenario(bundleIdentifier));
            auto activity = VDInfoExtractor::currentActivity();
            ASSERT_TRUE(activity) << bundleIdentifier;
            VDInfoExtractor::callInfoExtractorForActivity(*activity);
        }
    }
}

} // namespace
} // namespace vardel
