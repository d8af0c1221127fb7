#pragma once

#include "support/ScriptedDesktopTest.h"

#include <random>
#include <string>
#include <vector>

namespace vardel::testing {

// Random scenario trees for fuzzing whatever reads other applications' elements: wrong types,
// references that make cycles through AXParent and AXChildren, deep and wide trees, hostile text.
class RandomElementTrees {
public:
    explicit RandomElementTrees(unsigned seed)
        : random_(seed)
    {
    }

    // A desktop whose frontmost application (pid 501) has a random tree.
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

    // A desktop whose frontmost application (pid 501) has one window, "e0", of random elements
    // levels deep, where the window and every element of a level list the same width elements of the
    // next level as their children: width to the power of levels paths through width * levels elements.
    Json sharedChildrenScenario(const std::string& bundleIdentifier, int levels, int width)
    {
        ids_.clear();
        Json window = sharedChildrenLevel(1, levels, width)[0];
        window["AXRole"] = "AXWindow";
        Json ui = { { "AXRole", "AXApplication" }, { "AXMainWindow", ref("e0") }, { "AXFocusedWindow", ref("e0") },
            { "children", { window } } };
        return desktopWith(application(501, bundleIdentifier, ui));
    }

private:
    static constexpr const char* attributeNames[] = { "AXRole", "AXSubrole", "AXTitle", "AXValue", "AXDescription",
        "AXURL", "AXDocument", "AXIdentifier", "AXDOMIdentifier", "AXDOMClassList", "AXChildren", "AXParent",
        "AXWindows", "AXSelectedRows", "AXContents", "AXChildrenInNavigationOrder", "AXModal", "AXFullScreen",
        "AXPosition", "AXSize", "AXSelected", "AXDisclosedByRow", "AXHelp", "AXEnhancedUserInterface", "AXMainWindow",
        "AXFocusedWindow" };

    static constexpr const char* roles[] = { "AXWindow", "AXGroup", "AXWebArea", "AXScrollArea", "AXButton",
        "AXStaticText", "AXHeading", "AXToolbar", "AXSheet", "AXLink", "AXTable", "AXRow", "AXOutline", "AXTextArea",
        "AXTextField", "AXSplitGroup", "AXPopUpButton", "AXTabGroup", "AXCell" };

    static constexpr const char* texts[] = { "", " ", "Inbox", "Acme - general - Slack", "Acme | design | Slack",
        "Friends - Discord", "\u2022 x \u2022", "\u200E\u202Ehostile\u202C", "Edited \u2014 ", "*", "(3)",
        "https://meet.example/abc", "file:///tmp/a b.txt", "Private Browsing", "\xF0\x9F\x98\x80\xF0\x9F\x98\x80",
        "ChatGPT", "New Chat", "toolbar-button", "app-container", "nameFieldLabel", "a\nb\tc" };

    Json element(int depth)
    {
        Json made = randomAttributes();
        if (depth < 25 && ids_.size() < 400) {
            int childCount = depth < 2 ? 1 + static_cast<int>(random_() % 6) : static_cast<int>(random_() % 3);
            Json children = Json::array();
            for (int index = 0; index < childCount; ++index)
                children.push_back(element(depth + 1));
            made["children"] = std::move(children);
        }
        return made;
    }

    // An element with an id, a role and up to five random attributes.
    Json randomAttributes()
    {
        Json made = { { "id", "e" + std::to_string(ids_.size()) }, { "AXRole", pick(roles) } };
        ids_.push_back(made["id"]);
        int attributeCount = static_cast<int>(random_() % 6);
        for (int index = 0; index < attributeCount; ++index)
            made[pick(attributeNames)] = value(0);
        return made;
    }

    // count elements, each listing the same width elements as its children, levelsBelow times over;
    // the first element of each level holds the next one.
    Json sharedChildrenLevel(int count, int levelsBelow, int width)
    {
        Json elements = Json::array();
        for (int index = 0; index < count; ++index) {
            elements.push_back(randomAttributes());
            elements.back().erase("AXChildren");
        }
        if (levelsBelow == 0)
            return elements;
        Json next = sharedChildrenLevel(width, levelsBelow - 1, width);
        Json references = Json::array();
        for (const Json& child : next)
            references.push_back(reference(child["id"]));
        for (Json& element : elements)
            element["AXChildren"] = references;
        elements[0]["children"] = std::move(next);
        return elements;
    }

    // Called unqualified with a std::string or Json argument, ref would find std::ref through
    // argument-dependent lookup and make a plain text of the id.
    static Json reference(const std::string& id) { return vardel::testing::ref(id); }

    // A reference to an element made so far, which often makes a cycle.
    Json randomReference() { return ids_.empty() ? Json(nullptr) : reference(ids_[random_() % ids_.size()]); }

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

    bool chance(unsigned oneIn) { return random_() % oneIn == 0; }

    template<size_t N> const char* pick(const char* const (&choices)[N]) { return choices[random_() % N]; }

    std::mt19937 random_;
    std::vector<std::string> ids_;
};

} // namespace vardel::testing
