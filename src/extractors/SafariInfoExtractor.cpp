#include "extractors/SafariInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/UIElementUtilities.h"
#include "platform/Platform.h"
#include "platform/ProcessWide.h"
#include "product/TextHelpers.h"

#include <algorithm>
#include <array>
#include <set>

namespace vardel {

namespace {

using ElementHelpers::ElementList;

constexpr const char* menuBarAttribute = "AXMenuBar";
constexpr const char* roleDescriptionAttribute = "AXRoleDescription";

constexpr const char* historyMenuIdentifier = "SafariHistoryMenu";
constexpr const char* showHistoryItemIdentifier = "ShowHistory";

// Safari puts the profile first: "Work — Apple".
constexpr std::string_view profileSeparator = " \u2014 ";

constexpr const char* stringsFolder = "/System/Library/PrivateFrameworks/Safari.framework/Versions/A/Resources/";
// Keys of Safari's own string table whose translations name a private window.
constexpr std::array<const char*, 4> privatePhraseKeys
    = { "in a private window", "smart search field in a private window",
          "smart search field showing a secure address in a private window", "Private Browsing" };

using PhraseList = std::vector<std::string>;

// The user's languages without their regions ("de-CH" is "de"), each once.
std::vector<std::string> preferredLanguageCodes()
{
    std::vector<std::string> codes;
    for (const std::string& language : platform().preferredLanguages()) {
        std::string code = language.substr(0, language.find_first_of("-_"));
        if (!code.empty() && std::find(codes.begin(), codes.end(), code) == codes.end())
            codes.push_back(std::move(code));
    }
    return codes;
}

// Safari's private-window phrases in the user's languages, lowercased. A language whose strings file
// cannot be read contributes nothing. Empty phrases are left out: the platform's substring test
// never finds an empty text.
PhraseList localisedPrivatePhrases()
{
    std::set<std::string> phrases;
    for (const std::string& code : preferredLanguageCodes()) {
        auto strings = platform().propertyListFiles().read(stringsFolder + code + ".lproj/Localizable.strings");
        const Value::Dictionary* table = strings ? strings->asDictionary() : nullptr;
        if (!table)
            continue;
        for (const char* key : privatePhraseKeys) {
            auto entry = table->find(key);
            if (entry == table->end())
                continue;
            if (const std::string* phrase = entry->second.asText(); phrase && !phrase->empty())
                phrases.insert(TextHelpers::lowercased(*phrase));
        }
    }
    return { phrases.begin(), phrases.end() };
}

ProcessWide<PhraseList> titlePrivatePhrases(localisedPrivatePhrases);

// The address field says "priv…" in its descriptions of a private window even where no strings file
// can be read.
ProcessWide<PhraseList> addressFieldPrivatePhrases([] {
    PhraseList phrases = titlePrivatePhrases.get();
    phrases.emplace_back("priv");
    return phrases;
});

bool mentionsAny(std::string_view text, const PhraseList& phrases)
{
    std::string lowercased = TextHelpers::lowercased(text);
    return std::any_of(phrases.begin(), phrases.end(),
        [&](const std::string& phrase) { return TextHelpers::contains(lowercased, phrase); });
}

std::optional<AXUIElement> elementAttribute(std::string_view attribute, const AXUIElement& element)
{
    auto value = UIElementUtilities::valueOfAttribute(attribute, element);
    if (!value || !value->asElement())
        return std::nullopt;
    return *value->asElement();
}

std::optional<AXUIElement> firstChild(const AXUIElement& element)
{
    ElementList elementChildren = ElementHelpers::children(element);
    return elementChildren.empty() ? std::nullopt : std::optional(elementChildren.front());
}

std::vector<std::string> split(std::string_view text, std::string_view separator)
{
    std::vector<std::string> parts;
    for (size_t start = 0;;) {
        size_t end = text.find(separator, start);
        if (end == std::string_view::npos) {
            parts.emplace_back(text.substr(start));
            return parts;
        }
        parts.emplace_back(text.substr(start, end - start));
        start = end + separator.size();
    }
}

void markPrivateByTitle(VDActivityDetails& details)
{
    if (details.windowTitle && mentionsAny(*details.windowTitle, titlePrivatePhrases.get()))
        details.isPrivate = true;
}

// The history menu among the menu bar's menus: each top-level menu item holds its menu as first child.
std::optional<AXUIElement> historyMenu(const AXUIElement& menuBar)
{
    for (const AXUIElement& menuBarItem : ElementHelpers::children(menuBar)) {
        auto menu = firstChild(menuBarItem);
        if (menu && ElementHelpers::stringAttribute(AX::identifier, *menu) == historyMenuIdentifier)
            return menu;
    }
    return std::nullopt;
}

// Whether the first history item ("Show Work History") names the profile.
bool historyMenuNamesProfile(const AXUIElement& menu, const std::string& profile)
{
    auto item = firstChild(menu);
    if (!item || ElementHelpers::stringAttribute(AX::identifier, *item) != showHistoryItemIdentifier)
        return false;
    auto itemTitle = ElementHelpers::titleText(*item);
    return itemTitle && !profile.empty() && TextHelpers::contains(*itemTitle, profile);
}

// "Work — Apple" becomes "Apple — Work" when "Work" is the window's profile, so that titles of one
// page read alike whatever the profile.
void moveProfileToTheEnd(VDActivity& activity)
{
    auto& title = activity.details.windowTitle;
    if (!title)
        return;
    std::vector<std::string> parts = split(*title, profileSeparator);
    if (parts.size() < 2 || !activity.accessibilityWindows || activity.accessibilityWindows->empty())
        return;
    auto application = UIElementUtilities::parentOfUIElement(activity.accessibilityWindows->front());
    auto menuBar = application ? elementAttribute(menuBarAttribute, *application) : std::nullopt;
    auto menu = menuBar ? historyMenu(*menuBar) : std::nullopt;
    if (!menu || !historyMenuNamesProfile(*menu, parts.front()))
        return;
    std::rotate(parts.begin(), parts.begin() + 1, parts.end());
    title = TextHelpers::joined(parts, profileSeparator);
}

// In full screen the toolbar sits in the window's first group rather than in the window.
AXUIElement toolbarContainer(const AXUIElement& window)
{
    auto fullScreen = UIElementUtilities::valueOfAttribute(AX::fullScreen, window);
    if (fullScreen && fullScreen->asBoolean() == true) {
        if (auto group
            = ElementHelpers::firstElementWithRole(ElementHelpers::childrenInNavigationOrder(window), AX::groupRole))
            return *group;
    }
    return window;
}

// The address field: a text or search field among the toolbar's groups and their children, or else
// the element that holds the first static text there.
std::optional<AXUIElement> addressField(const AXUIElement& toolbar)
{
    ElementList candidates;
    for (const AXUIElement& child : ElementHelpers::children(toolbar)) {
        if (ElementHelpers::roleText(child) == AX::groupRole)
            candidates.push_back(child);
    }
    ElementList groupChildren = ElementHelpers::childrenOfElements(candidates);
    candidates.insert(candidates.end(), groupChildren.begin(), groupChildren.end());

    std::vector<std::optional<std::string>> roles;
    roles.reserve(candidates.size());
    for (size_t index = 0; index < candidates.size(); ++index) {
        auto role = ElementHelpers::roleText(candidates[index]);
        if (role && (*role == AX::textFieldRole || TextHelpers::contains(*role, "SearchField")))
            return candidates[index];
        roles.push_back(std::move(role));
    }
    for (size_t index = 0; index < candidates.size(); ++index) {
        if (roles[index] != AX::staticTextRole)
            continue;
        if (auto parent = UIElementUtilities::parentOfUIElement(candidates[index]))
            return parent;
    }
    return std::nullopt;
}

std::optional<std::string> pageAddress(std::optional<std::string> text)
{
    if (text && TextHelpers::contains(*text, "://"))
        return text;
    return std::nullopt;
}

void readAddressField(const AXUIElement& window, VDActivityDetails& details)
{
    auto toolbar
        = ElementHelpers::firstElementWithRole(ElementHelpers::children(toolbarContainer(window)), AX::toolbarRole);
    auto field = toolbar ? addressField(*toolbar) : std::nullopt;
    if (!field)
        return;

    const PhraseList& phrases = addressFieldPrivatePhrases.get();
    for (const char* attribute : { roleDescriptionAttribute, AX::title }) {
        auto text = ElementHelpers::stringAttribute(attribute, *field);
        if (text && mentionsAny(*text, phrases))
            details.isPrivate = true;
    }

    std::optional<std::string> address;
    if (auto shown = ElementHelpers::firstElementWithRole(ElementHelpers::children(*field), AX::staticTextRole))
        address = pageAddress(ElementHelpers::valueText(*shown));
    if (!address)
        address = pageAddress(ElementHelpers::valueText(*field));
    if (address)
        details.documentPath = std::move(address);
}

} // namespace

void SafariInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    markPrivateByTitle(activity.details);
    moveProfileToTheEnd(activity);
    if (!activity.accessibilityWindows)
        return;
    // Every window is read; the last one with an address supplies it.
    for (const AXUIElement& window : *activity.accessibilityWindows)
        readAddressField(window, activity.details);
}

} // namespace vardel
