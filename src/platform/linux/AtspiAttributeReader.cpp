#include "platform/linux/AtspiAttributeReader.h"

#include "platform/linux/AccessibilityBusStatus.h"
#include "platform/linux/AtspiObjectAttributes.h"
#include "platform/linux/AtspiRoleTable.h"

#include <algorithm>

namespace vardel::linux_desktop {

namespace {

// A browser window's page is nearly always its first showing web document.
constexpr int firstDocumentsAsked = 1;
constexpr int maxDocumentsAsked = 10000;

Value::List elementList(const std::vector<AXUIElement>& elements)
{
    return Value::List(elements.begin(), elements.end());
}

template<typename T> std::optional<Value> valueOf(std::optional<T> found)
{
    return found ? std::optional<Value>(std::move(*found)) : std::nullopt;
}

} // namespace

AtspiAttributeReader::AtspiAttributeReader(AtspiCalls& calls, X11WindowFacts* windowFacts)
    : calls_(calls)
    , windowMatcher_(calls, windowFacts)
{
}

std::span<const AtspiAttributeReader::ReaderRow> AtspiAttributeReader::elementReaders()
{
    static constexpr ReaderRow rows[] = {
        { "AXRole", &AtspiAttributeReader::role },
        { "AXSubrole", &AtspiAttributeReader::subrole },
        { "AXTitle", &AtspiAttributeReader::title },
        { "AXDescription", &AtspiAttributeReader::description },
        { "AXValue", &AtspiAttributeReader::value },
        { "AXURL", &AtspiAttributeReader::url },
        { "AXDocument", &AtspiAttributeReader::document },
        { "AXParent", &AtspiAttributeReader::parent },
        { "AXChildren", &AtspiAttributeReader::children },
        { "AXPosition", &AtspiAttributeReader::position },
        { "AXSize", &AtspiAttributeReader::size },
        { "AXFocused", &AtspiAttributeReader::focused },
        { "AXSelected", &AtspiAttributeReader::selected },
        { "AXModal", &AtspiAttributeReader::modal },
        { "AXFullScreen", &AtspiAttributeReader::fullScreen },
        { "AXSelectedRows", &AtspiAttributeReader::selectedRows },
        { "AXIdentifier", &AtspiAttributeReader::identifier },
        { "AXDOMIdentifier", &AtspiAttributeReader::domIdentifier },
        { "AXDOMClassList", &AtspiAttributeReader::domClassList },
    };
    return rows;
}

std::span<const AtspiAttributeReader::ReaderRow> AtspiAttributeReader::applicationReaders()
{
    static constexpr ReaderRow rows[] = {
        { "AXWindows", &AtspiAttributeReader::windows },
        { "AXFocusedWindow", &AtspiAttributeReader::focusedWindow },
        { "AXMainWindow", &AtspiAttributeReader::mainWindow },
        { "AXEnhancedUserInterface", &AtspiAttributeReader::enhancedUserInterface },
        { "AXManualAccessibility", &AtspiAttributeReader::enhancedUserInterface },
    };
    return rows;
}

AtspiAttributeReader::Reader AtspiAttributeReader::readerFor(
    std::span<const ReaderRow> rows, std::string_view attribute)
{
    auto row = std::find_if(rows.begin(), rows.end(), [&](const ReaderRow& row) { return row.attribute == attribute; });
    return row == rows.end() ? nullptr : row->read;
}

std::optional<Value> AtspiAttributeReader::read(AtspiAccessible* accessible, std::string_view attribute)
{
    auto elementRole = calls_.role(accessible);
    if (!elementRole)
        return std::nullopt;
    Reader reader = nullptr;
    if (*elementRole == ATSPI_ROLE_APPLICATION)
        reader = readerFor(applicationReaders(), attribute);
    if (!reader)
        reader = readerFor(elementReaders(), attribute);
    return reader ? (this->*reader)(accessible, *elementRole) : std::nullopt;
}

std::vector<std::string> AtspiAttributeReader::names(AtspiAccessible* accessible)
{
    auto elementRole = calls_.role(accessible);
    if (!elementRole)
        return {};
    std::vector<std::string> names { "AXRole", "AXSubrole", "AXTitle", "AXDescription", "AXChildren", "AXFocused",
        "AXSelected", "AXIdentifier", "AXDOMIdentifier", "AXDOMClassList" };
    if (*elementRole == ATSPI_ROLE_APPLICATION) {
        names.insert(names.end(),
            { "AXWindows", "AXMainWindow", "AXFocusedWindow", "AXEnhancedUserInterface", "AXManualAccessibility" });
        return names;
    }
    names.push_back("AXParent");
    if (AtspiCalls::implements<atspi_accessible_get_component_iface>(accessible))
        names.insert(names.end(), { "AXPosition", "AXSize" });
    if (isWindowRole(*elementRole))
        names.insert(names.end(), { "AXFullScreen", "AXModal", "AXDocument" });
    if (*elementRole == ATSPI_ROLE_HEADING || isNumericValueRole(*elementRole) || isTextValueRole(*elementRole))
        names.push_back("AXValue");
    if (*elementRole == ATSPI_ROLE_DOCUMENT_WEB || *elementRole == ATSPI_ROLE_LINK)
        names.push_back("AXURL");
    if (isDocumentRole(*elementRole))
        names.push_back("AXDocument");
    if (AtspiCalls::implements<atspi_accessible_get_selection_iface>(accessible))
        names.push_back("AXSelectedRows");
    return names;
}

std::optional<Value> AtspiAttributeReader::role(AtspiAccessible*, int role)
{
    return Value(std::string(axRoleNamesFor(role).role));
}

std::optional<Value> AtspiAttributeReader::subrole(AtspiAccessible* accessible, int role)
{
    if (auto ariaRole = calls_.objectAttribute(accessible, "xml-roles")) {
        if (auto fromAria = axSubroleForAriaRole(*ariaRole))
            return Value(std::string(*fromAria));
    }
    auto names = axRoleNamesFor(role);
    return names.subrole ? std::optional<Value>(std::string(*names.subrole)) : std::nullopt;
}

std::optional<Value> AtspiAttributeReader::title(AtspiAccessible* accessible, int role)
{
    auto text = calls_.name(accessible);
    if (!isWindowRole(role) || (text && !text->empty()))
        return valueOf(std::move(text));
    // Some header-bar windows leave their accessible name empty; X11 still has the title.
    auto window = windowMatcher_.x11WindowOf(accessible);
    if (window && !window->title.empty())
        return Value(window->title);
    return std::nullopt;
}

std::optional<Value> AtspiAttributeReader::description(AtspiAccessible* accessible, int)
{
    return valueOf(calls_.description(accessible));
}

std::optional<Value> AtspiAttributeReader::value(AtspiAccessible* accessible, int role)
{
    if (role == ATSPI_ROLE_HEADING) {
        auto level = calls_.objectAttribute(accessible, "level");
        return level ? valueOf(AtspiObjectAttributes::headingLevel(*level)) : std::nullopt;
    }
    if (isNumericValueRole(role))
        return valueOf(calls_.numericValue(accessible));
    if (isTextValueRole(role))
        return valueOf(calls_.textContent(accessible));
    return std::nullopt;
}

std::optional<Value> AtspiAttributeReader::url(AtspiAccessible* accessible, int role)
{
    std::optional<std::string> address;
    if (role == ATSPI_ROLE_DOCUMENT_WEB)
        address = calls_.documentAddress(accessible);
    else if (role == ATSPI_ROLE_LINK)
        address = calls_.linkAddress(accessible);
    return address ? std::optional<Value>(Url { *address }) : std::nullopt;
}

std::optional<Value> AtspiAttributeReader::document(AtspiAccessible* accessible, int role)
{
    if (isWindowRole(role))
        return valueOf(windowDocument(accessible));
    if (!isDocumentRole(role))
        return std::nullopt;
    auto address = calls_.documentAddress(accessible);
    if (!address || !address->starts_with("file://"))
        return std::nullopt;
    return Value(*address);
}

// A browser window's document is the page it shows: the first showing web document with an address
// (Chromium keeps hidden, empty ones besides). Asks for one document first and for more only when none
// of those has an address.
std::optional<std::string> AtspiAttributeReader::windowDocument(AtspiAccessible* window)
{
    size_t examined = 0;
    for (int count = firstDocumentsAsked;; count *= 2) {
        auto documents = calls_.showingWebDocuments(window, count);
        for (; examined < documents.size(); ++examined) {
            if (auto address = calls_.documentAddress(AtspiElement::accessibleOf(documents[examined])))
                return address;
        }
        if (documents.size() < static_cast<size_t>(count) || count >= maxDocumentsAsked)
            return std::nullopt;
    }
}

std::optional<Value> AtspiAttributeReader::parent(AtspiAccessible* accessible, int role)
{
    if (role == ATSPI_ROLE_APPLICATION)
        return std::nullopt;
    return valueOf(calls_.parent(accessible));
}

std::optional<Value> AtspiAttributeReader::children(AtspiAccessible* accessible, int)
{
    return Value(elementList(calls_.children(accessible)));
}

std::optional<Value> AtspiAttributeReader::position(AtspiAccessible* accessible, int)
{
    auto frame = calls_.extents(accessible);
    return frame ? std::optional<Value>(frame->origin) : std::nullopt;
}

std::optional<Value> AtspiAttributeReader::size(AtspiAccessible* accessible, int)
{
    auto frame = calls_.extents(accessible);
    return frame ? std::optional<Value>(frame->size) : std::nullopt;
}

std::optional<Value> AtspiAttributeReader::focused(AtspiAccessible* accessible, int)
{
    return Value(calls_.hasState(accessible, ATSPI_STATE_FOCUSED));
}

std::optional<Value> AtspiAttributeReader::selected(AtspiAccessible* accessible, int)
{
    return Value(calls_.hasState(accessible, ATSPI_STATE_SELECTED));
}

std::optional<Value> AtspiAttributeReader::modal(AtspiAccessible* accessible, int)
{
    return Value(calls_.hasState(accessible, ATSPI_STATE_MODAL));
}

std::optional<Value> AtspiAttributeReader::fullScreen(AtspiAccessible* accessible, int role)
{
    if (!isWindowRole(role))
        return std::nullopt;
    auto window = windowMatcher_.x11WindowOf(accessible);
    return window ? std::optional<Value>(window->fullScreen) : std::nullopt;
}

std::optional<Value> AtspiAttributeReader::selectedRows(AtspiAccessible* accessible, int)
{
    auto selected = calls_.selectedChildren(accessible);
    return selected ? std::optional<Value>(elementList(*selected)) : std::nullopt;
}

std::optional<Value> AtspiAttributeReader::identifier(AtspiAccessible* accessible, int)
{
    return valueOf(calls_.identifier(accessible));
}

std::optional<Value> AtspiAttributeReader::domIdentifier(AtspiAccessible* accessible, int)
{
    return valueOf(calls_.objectAttribute(accessible, "id"));
}

std::optional<Value> AtspiAttributeReader::domClassList(AtspiAccessible* accessible, int)
{
    auto classes = calls_.objectAttribute(accessible, "class");
    if (!classes)
        return std::nullopt;
    Value::List names;
    for (std::string& className : AtspiObjectAttributes::classNames(*classes))
        names.emplace_back(std::move(className));
    return Value(std::move(names));
}

std::optional<Value> AtspiAttributeReader::windows(AtspiAccessible* application, int)
{
    return Value(elementList(calls_.windowsOf(application)));
}

std::optional<Value> AtspiAttributeReader::focusedWindow(AtspiAccessible* application, int)
{
    return valueOf(focusedWindowOf(application));
}

std::optional<Value> AtspiAttributeReader::mainWindow(AtspiAccessible* application, int)
{
    if (auto window = focusedWindowOf(application))
        return Value(*window);
    // An application in the background: its first showing window with a title.
    for (const AXUIElement& window : calls_.windowsOf(application)) {
        auto accessible = AtspiElement::accessibleOf(window);
        if (calls_.hasState(accessible, ATSPI_STATE_SHOWING) && !calls_.name(accessible).value_or("").empty())
            return Value(window);
    }
    return std::nullopt;
}

std::optional<Value> AtspiAttributeReader::enhancedUserInterface(AtspiAccessible*, int)
{
    return valueOf(AccessibilityBusStatus::isEnabled());
}

// The window with the active state, else the one the X11 active window shows.
std::optional<AXUIElement> AtspiAttributeReader::focusedWindowOf(AtspiAccessible* application)
{
    std::vector<AXUIElement> windows = calls_.windowsOf(application);
    for (const AXUIElement& window : windows) {
        if (calls_.hasState(AtspiElement::accessibleOf(window), ATSPI_STATE_ACTIVE))
            return window;
    }
    return windowMatcher_.windowOfActiveX11Window(application, windows);
}

} // namespace vardel::linux_desktop
