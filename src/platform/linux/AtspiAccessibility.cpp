#include "platform/linux/AtspiAccessibility.h"

#include "platform/linux/AccessibilityBusStatus.h"
#include "platform/linux/AtspiElement.h"
#include "platform/linux/AtspiRoleTable.h"

#include <algorithm>
#include <array>
#include <atspi/atspi.h>
#include <cmath>
#include <cstring>
#include <sstream>

namespace vardel::linux_desktop {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds defaultTimeout { 2000 };
// How long an application that ran into the time-out is left alone.
constexpr std::chrono::seconds frozenPause { 5 };
// Hit tests descend one level per call; trees deeper than this are not real.
constexpr int maxHitTestDepth = 64;
constexpr int maxChildren = 10000;
// A browser window's page is nearly always its first showing web document.
constexpr int firstDocumentsAsked = 1;

// Action names that press an element, as toolkits spell them; the first the element has plays AXPress.
constexpr std::array<std::string_view, 5> pressActions = { "click", "press", "activate", "jump", "toggle" };
constexpr std::array<std::string_view, 3> showMenuActions = { "showmenu", "show-menu", "menu" };

AtspiAccessible* accessibleOf(const AXUIElement& element)
{
    auto* impl = dynamic_cast<const AtspiElement*>(&element.impl());
    return impl ? impl->accessible() : nullptr;
}

bool isSystemWide(const AXUIElement& element)
{
    auto* impl = dynamic_cast<const AtspiElement*>(&element.impl());
    return impl && impl->isSystemWide();
}

std::string busNameOf(AtspiAccessible* accessible)
{
    const AtspiObject& object = accessible->parent;
    return object.app && object.app->bus_name ? object.app->bus_name : "";
}

std::string takeText(gchar* text)
{
    std::string copy = text ? text : "";
    g_free(text);
    return copy;
}

AXError errorCodeOf(const GError* error)
{
    const char* message = error->message ? error->message : "";
    if (std::strstr(message, "NoReply") || std::strstr(message, "Timeout") || std::strstr(message, "timed out"))
        return AXErrorCode::cannotComplete;
    if (std::strstr(message, "UnknownObject") || std::strstr(message, "ServiceUnknown")
        || std::strstr(message, "NoSuchObject") || std::strstr(message, "Disconnected"))
        return AXErrorCode::invalidUIElement;
    return AXErrorCode::failure;
}

bool isDocumentRole(int role)
{
    return role == ATSPI_ROLE_DOCUMENT_FRAME || role == ATSPI_ROLE_DOCUMENT_TEXT
        || role == ATSPI_ROLE_DOCUMENT_SPREADSHEET || role == ATSPI_ROLE_DOCUMENT_PRESENTATION
        || role == ATSPI_ROLE_DOCUMENT_EMAIL;
}

bool isTextValueRole(int role)
{
    return role == ATSPI_ROLE_ENTRY || role == ATSPI_ROLE_TEXT || role == ATSPI_ROLE_PASSWORD_TEXT
        || role == ATSPI_ROLE_STATIC || role == ATSPI_ROLE_LABEL || role == ATSPI_ROLE_DOCUMENT_TEXT
        || role == ATSPI_ROLE_COMBO_BOX || role == ATSPI_ROLE_CAPTION;
}

bool isNumericValueRole(int role)
{
    return role == ATSPI_ROLE_SLIDER || role == ATSPI_ROLE_SPIN_BUTTON || role == ATSPI_ROLE_PROGRESS_BAR
        || role == ATSPI_ROLE_SCROLL_BAR || role == ATSPI_ROLE_LEVEL_BAR;
}

bool isEnhancedAccessibilityAttribute(std::string_view attribute)
{
    return attribute == "AXEnhancedUserInterface" || attribute == "AXManualAccessibility";
}

std::optional<std::string_view> axActionName(std::string_view atspiName)
{
    if (std::find(pressActions.begin(), pressActions.end(), atspiName) != pressActions.end())
        return "AXPress";
    if (std::find(showMenuActions.begin(), showMenuActions.end(), atspiName) != showMenuActions.end())
        return "AXShowMenu";
    return std::nullopt;
}

std::vector<std::string> classNames(const std::string& classAttribute)
{
    std::istringstream words(classAttribute);
    std::vector<std::string> names;
    for (std::string word; words >> word;)
        names.push_back(word);
    return names;
}

bool nearlyEqual(double left, double right)
{
    // Window managers and toolkits disagree by a border's width.
    return std::fabs(left - right) <= 8;
}

bool framesMatch(const Rect& left, const Rect& right)
{
    return nearlyEqual(left.origin.x, right.origin.x) && nearlyEqual(left.origin.y, right.origin.y)
        && nearlyEqual(left.size.width, right.size.width) && nearlyEqual(left.size.height, right.size.height);
}

Value::List elementList(const std::vector<AXUIElement>& elements)
{
    return Value::List(elements.begin(), elements.end());
}

} // namespace

// One request of the logic: the libatspi calls it makes, their errors and the frozen check.
struct AtspiAccessibility::Calls {
    AtspiAccessibility& owner;
    AXError error = AXErrorCode::noValue;

    bool reachable(AtspiAccessible* accessible)
    {
        auto frozen = owner.frozenUntil_.find(busNameOf(accessible));
        if (frozen == owner.frozenUntil_.end())
            return true;
        if (Clock::now() >= frozen->second) {
            owner.frozenUntil_.erase(frozen);
            return true;
        }
        error = AXErrorCode::cannotComplete;
        return false;
    }

    // Runs one libatspi call on the accessible's application, unless the application is frozen;
    // fallback is what an unreachable application yields.
    template<typename Call, typename Result> Result run(AtspiAccessible* accessible, Result fallback, Call call)
    {
        if (!reachable(accessible))
            return fallback;
        ++owner.callCount_;
        auto start = Clock::now();
        GError* failure = nullptr;
        Result result = call(&failure);
        if (failure) {
            error = errorCodeOf(failure);
            g_error_free(failure);
        }
        if (Clock::now() - start >= owner.timeout_ * 9 / 10) {
            owner.frozenUntil_.insert_or_assign(busNameOf(accessible), Clock::now() + frozenPause);
            error = AXErrorCode::cannotComplete;
        }
        return result;
    }

    std::optional<int> role(AtspiAccessible* accessible)
    {
        // Roles do not change; libatspi only caches them while it serves events, so keep them here.
        static const GQuark roleQuark = g_quark_from_static_string("vardel-role");
        if (gpointer cached = g_object_get_qdata(G_OBJECT(accessible), roleQuark))
            return GPOINTER_TO_INT(cached) - 1;
        AtspiRole role = run(accessible, ATSPI_ROLE_INVALID,
            [&](GError** failure) { return atspi_accessible_get_role(accessible, failure); });
        if (role == ATSPI_ROLE_INVALID)
            return std::nullopt;
        g_object_set_qdata(G_OBJECT(accessible), roleQuark, GINT_TO_POINTER(int(role) + 1));
        return int(role);
    }

    std::optional<std::string> name(AtspiAccessible* accessible)
    {
        gchar* text = run(accessible, static_cast<gchar*>(nullptr),
            [&](GError** failure) { return atspi_accessible_get_name(accessible, failure); });
        if (!text)
            return std::nullopt;
        return takeText(text);
    }

    std::optional<std::string> description(AtspiAccessible* accessible)
    {
        gchar* text = run(accessible, static_cast<gchar*>(nullptr),
            [&](GError** failure) { return atspi_accessible_get_description(accessible, failure); });
        if (!text)
            return std::nullopt;
        return takeText(text);
    }

    bool hasState(AtspiAccessible* accessible, AtspiStateType state)
    {
        AtspiStateSet* states = run(accessible, static_cast<AtspiStateSet*>(nullptr),
            [&](GError**) { return atspi_accessible_get_state_set(accessible); });
        if (!states)
            return false;
        bool contained = atspi_state_set_contains(states, state);
        g_object_unref(states);
        return contained;
    }

    std::optional<AXUIElement> parent(AtspiAccessible* accessible)
    {
        AtspiAccessible* parent = run(accessible, static_cast<AtspiAccessible*>(nullptr),
            [&](GError** failure) { return atspi_accessible_get_parent(accessible, failure); });
        if (!parent)
            return std::nullopt;
        return AtspiElement::adopt(parent);
    }

    int childCount(AtspiAccessible* accessible)
    {
        return run(
            accessible, 0, [&](GError** failure) { return atspi_accessible_get_child_count(accessible, failure); });
    }

    std::vector<AXUIElement> children(AtspiAccessible* accessible)
    {
        if (auto all = childrenInOneCall(accessible))
            return std::move(*all);
        return childrenOneByOne(accessible);
    }

    // A collection query that matches everything and does not descend answers with the element's
    // children, in their order, in one call instead of one call per child.
    std::optional<std::vector<AXUIElement>> childrenInOneCall(AtspiAccessible* accessible)
    {
        // Finding the interface may itself ask the application.
        if (!reachable(accessible))
            return std::nullopt;
        AtspiCollection* collection = atspi_accessible_get_collection_iface(accessible);
        if (!collection)
            return std::nullopt;
        AtspiMatchRule* everything
            = atspi_match_rule_new(nullptr, ATSPI_Collection_MATCH_NONE, nullptr, ATSPI_Collection_MATCH_NONE, nullptr,
                ATSPI_Collection_MATCH_NONE, nullptr, ATSPI_Collection_MATCH_NONE, FALSE);
        GArray* matches = run(accessible, static_cast<GArray*>(nullptr), [&](GError** failure) {
            return atspi_collection_get_matches(
                collection, everything, ATSPI_Collection_SORT_ORDER_CANONICAL, maxChildren, FALSE, failure);
        });
        g_object_unref(everything);
        g_object_unref(collection);
        if (!matches)
            return std::nullopt;
        std::vector<AXUIElement> found;
        found.reserve(matches->len);
        for (guint index = 0; index < matches->len; ++index)
            found.push_back(AtspiElement::adopt(g_array_index(matches, AtspiAccessible*, index)));
        g_array_free(matches, TRUE);
        return found;
    }

    std::vector<AXUIElement> childrenOneByOne(AtspiAccessible* accessible)
    {
        std::vector<AXUIElement> found;
        int count = std::min(childCount(accessible), maxChildren);
        for (int index = 0; index < count; ++index) {
            AtspiAccessible* child = run(accessible, static_cast<AtspiAccessible*>(nullptr),
                [&](GError** failure) { return atspi_accessible_get_child_at_index(accessible, index, failure); });
            if (child)
                found.push_back(AtspiElement::adopt(child));
        }
        return found;
    }

    std::map<std::string, std::string> objectAttributes(AtspiAccessible* accessible)
    {
        GHashTable* table = run(accessible, static_cast<GHashTable*>(nullptr),
            [&](GError** failure) { return atspi_accessible_get_attributes(accessible, failure); });
        return takeTable(table);
    }

    static std::map<std::string, std::string> takeTable(GHashTable* table)
    {
        std::map<std::string, std::string> attributes;
        if (!table)
            return attributes;
        GHashTableIter iterator;
        gpointer key, value;
        g_hash_table_iter_init(&iterator, table);
        while (g_hash_table_iter_next(&iterator, &key, &value))
            attributes.emplace(static_cast<const char*>(key), static_cast<const char*>(value));
        g_hash_table_unref(table);
        return attributes;
    }

    std::optional<std::string> objectAttribute(AtspiAccessible* accessible, const char* key)
    {
        auto attributes = objectAttributes(accessible);
        auto found = attributes.find(key);
        return found == attributes.end() ? std::nullopt : std::optional(found->second);
    }

    std::optional<Rect> extents(AtspiAccessible* accessible)
    {
        AtspiComponent* component = atspi_accessible_get_component_iface(accessible);
        if (!component)
            return std::nullopt;
        AtspiRect* rect = run(accessible, static_cast<AtspiRect*>(nullptr),
            [&](GError** failure) { return atspi_component_get_extents(component, ATSPI_COORD_TYPE_SCREEN, failure); });
        g_object_unref(component);
        if (!rect)
            return std::nullopt;
        Rect frame { { double(rect->x), double(rect->y) }, { double(rect->width), double(rect->height) } };
        g_free(rect);
        // Objects that are not laid out report -1 or nothing at all.
        if (frame.size.width < 0 || frame.size.height < 0)
            return std::nullopt;
        return frame;
    }

    std::optional<std::string> documentAddress(AtspiAccessible* accessible)
    {
        AtspiDocument* document = atspi_accessible_get_document_iface(accessible);
        if (!document)
            return std::nullopt;
        GHashTable* table = run(accessible, static_cast<GHashTable*>(nullptr),
            [&](GError** failure) { return atspi_document_get_document_attributes(document, failure); });
        g_object_unref(document);
        auto attributes = takeTable(table);
        // Chromium says URI, Firefox DocURL.
        for (const char* key : { "DocURL", "URI" }) {
            if (auto found = attributes.find(key); found != attributes.end() && !found->second.empty())
                return found->second;
        }
        return std::nullopt;
    }

    std::optional<std::string> linkAddress(AtspiAccessible* accessible)
    {
        AtspiHyperlink* link = atspi_accessible_get_hyperlink(accessible);
        if (!link)
            return std::nullopt;
        gchar* uri = run(accessible, static_cast<gchar*>(nullptr),
            [&](GError** failure) { return atspi_hyperlink_get_uri(link, 0, failure); });
        g_object_unref(link);
        if (!uri)
            return std::nullopt;
        return takeText(uri);
    }

    std::optional<std::string> textContent(AtspiAccessible* accessible)
    {
        AtspiText* text = atspi_accessible_get_text_iface(accessible);
        if (!text)
            return std::nullopt;
        gchar* content = run(accessible, static_cast<gchar*>(nullptr),
            [&](GError** failure) { return atspi_text_get_text(text, 0, -1, failure); });
        g_object_unref(text);
        if (!content)
            return std::nullopt;
        return takeText(content);
    }

    std::optional<double> numericValue(AtspiAccessible* accessible)
    {
        AtspiValue* value = atspi_accessible_get_value_iface(accessible);
        if (!value)
            return std::nullopt;
        bool failed = false;
        double current = run(accessible, std::nan(""), [&](GError** failure) {
            double result = atspi_value_get_current_value(value, failure);
            failed = *failure != nullptr;
            return result;
        });
        g_object_unref(value);
        if (failed || std::isnan(current))
            return std::nullopt;
        return current;
    }

    std::optional<ProcessIdentifier> processId(AtspiAccessible* accessible)
    {
        bool failed = false;
        guint pid = run(accessible, 0u, [&](GError** failure) {
            guint result = atspi_accessible_get_process_id(accessible, failure);
            failed = *failure != nullptr;
            return result;
        });
        if (failed || pid == 0)
            return std::nullopt;
        return static_cast<ProcessIdentifier>(pid);
    }

    std::vector<AXUIElement> windowsOf(AtspiAccessible* application)
    {
        std::vector<AXUIElement> windows = children(application);
        std::erase_if(windows, [&](const AXUIElement& window) {
            auto windowRole = role(accessibleOf(window));
            return !windowRole || !isWindowRole(*windowRole);
        });
        return windows;
    }

    std::optional<AXUIElement> activeWindowOf(AtspiAccessible* application)
    {
        for (const AXUIElement& window : windowsOf(application)) {
            if (hasState(accessibleOf(window), ATSPI_STATE_ACTIVE))
                return window;
        }
        return std::nullopt;
    }

    // The application's frame of the X11 active window, when no frame says it is active.
    std::optional<AXUIElement> frameOfActiveX11Window(AtspiAccessible* application)
    {
        if (!owner.windowFacts_)
            return std::nullopt;
        auto active = owner.windowFacts_->activeWindow();
        if (!active || active->pid != processId(application))
            return std::nullopt;
        for (const AXUIElement& window : windowsOf(application)) {
            AtspiAccessible* frame = accessibleOf(window);
            if (name(frame) == active->title && !active->title.empty())
                return window;
            if (auto frameExtents = extents(frame); frameExtents && framesMatch(*frameExtents, active->frame))
                return window;
        }
        return std::nullopt;
    }

    std::optional<AXUIElement> focusedWindowOf(AtspiAccessible* application)
    {
        if (auto active = activeWindowOf(application))
            return active;
        return frameOfActiveX11Window(application);
    }

    // The X11 client window that shows this frame.
    std::optional<X11Window> x11WindowOf(AtspiAccessible* frame)
    {
        if (!owner.windowFacts_)
            return std::nullopt;
        auto application = parent(frame);
        auto pid = application ? processId(accessibleOf(*application)) : std::nullopt;
        if (!pid)
            return std::nullopt;
        if (hasState(frame, ATSPI_STATE_ACTIVE)) {
            if (auto active = owner.windowFacts_->activeWindow(); active && active->pid == *pid)
                return active;
        }
        auto windows = owner.windowFacts_->windowsOfProcess(*pid);
        if (windows.size() == 1)
            return windows.front();
        auto title = name(frame);
        auto frameExtents = extents(frame);
        for (const X11Window& window : windows) {
            if ((title && !title->empty() && *title == window.title)
                || (frameExtents && framesMatch(*frameExtents, window.frame)))
                return window;
        }
        return std::nullopt;
    }

    std::optional<Value> title(AtspiAccessible* accessible, int elementRole)
    {
        auto text = name(accessible);
        if (!isWindowRole(elementRole) || (text && !text->empty()))
            return text ? std::optional<Value>(*text) : std::nullopt;
        // Some header-bar windows leave their accessible name empty; X11 still has the title.
        auto window = x11WindowOf(accessible);
        if (window && !window->title.empty())
            return Value(window->title);
        return std::nullopt;
    }

    std::optional<Value> value(AtspiAccessible* accessible, int elementRole)
    {
        if (elementRole == ATSPI_ROLE_HEADING) {
            auto level = objectAttribute(accessible, "level");
            if (level && !level->empty() && std::all_of(level->begin(), level->end(), ::isdigit))
                return Value(int64_t { std::stoi(*level) });
            return std::nullopt;
        }
        if (isNumericValueRole(elementRole)) {
            auto number = numericValue(accessible);
            return number ? std::optional<Value>(*number) : std::nullopt;
        }
        if (isTextValueRole(elementRole)) {
            auto text = textContent(accessible);
            return text ? std::optional<Value>(*text) : std::nullopt;
        }
        return std::nullopt;
    }

    std::optional<Value> url(AtspiAccessible* accessible, int elementRole)
    {
        std::optional<std::string> address;
        if (elementRole == ATSPI_ROLE_DOCUMENT_WEB)
            address = documentAddress(accessible);
        else if (elementRole == ATSPI_ROLE_LINK)
            address = linkAddress(accessible);
        return address ? std::optional<Value>(Url { *address }) : std::nullopt;
    }

    // The first `count` web documents below the element that are showing, outermost first, in one
    // call. The application stops walking its tree at the last one asked for, so a small count spares
    // it the walk through a large page below the document.
    std::vector<AXUIElement> showingWebDocuments(AtspiAccessible* accessible, int count)
    {
        std::vector<AXUIElement> documents;
        AtspiCollection* collection = atspi_accessible_get_collection_iface(accessible);
        if (!collection)
            return documents;
        AtspiStateSet* states = atspi_state_set_new(nullptr);
        atspi_state_set_add(states, ATSPI_STATE_SHOWING);
        GArray* roles = g_array_new(FALSE, FALSE, sizeof(AtspiRole));
        AtspiRole webDocument = ATSPI_ROLE_DOCUMENT_WEB;
        g_array_append_val(roles, webDocument);
        AtspiMatchRule* rule
            = atspi_match_rule_new(states, ATSPI_Collection_MATCH_ALL, nullptr, ATSPI_Collection_MATCH_NONE, roles,
                ATSPI_Collection_MATCH_ANY, nullptr, ATSPI_Collection_MATCH_NONE, FALSE);
        GArray* matches = run(accessible, static_cast<GArray*>(nullptr), [&](GError** failure) {
            return atspi_collection_get_matches(
                collection, rule, ATSPI_Collection_SORT_ORDER_CANONICAL, count, TRUE, failure);
        });
        g_object_unref(rule);
        g_array_unref(roles);
        g_object_unref(states);
        g_object_unref(collection);
        if (!matches)
            return documents;
        for (guint index = 0; index < matches->len; ++index)
            documents.push_back(AtspiElement::adopt(g_array_index(matches, AtspiAccessible*, index)));
        g_array_free(matches, TRUE);
        return documents;
    }

    // A browser window's document is the page it shows: the first showing web document with an
    // address (Chromium keeps hidden, empty ones besides). Asks for one document first and for more
    // only when none of those has an address.
    std::optional<std::string> windowDocument(AtspiAccessible* window)
    {
        size_t examined = 0;
        for (int count = firstDocumentsAsked;; count *= 2) {
            auto documents = showingWebDocuments(window, count);
            for (; examined < documents.size(); ++examined) {
                if (auto address = documentAddress(accessibleOf(documents[examined])))
                    return address;
            }
            if (documents.size() < static_cast<size_t>(count) || count >= maxChildren)
                return std::nullopt;
        }
    }

    std::optional<Value> document(AtspiAccessible* accessible, int elementRole)
    {
        if (isWindowRole(elementRole)) {
            auto address = windowDocument(accessible);
            return address ? std::optional<Value>(*address) : std::nullopt;
        }
        if (!isDocumentRole(elementRole))
            return std::nullopt;
        auto address = documentAddress(accessible);
        if (!address || !address->starts_with("file://"))
            return std::nullopt;
        return Value(*address);
    }

    std::optional<Value> selectedChildren(AtspiAccessible* accessible)
    {
        AtspiSelection* selection = atspi_accessible_get_selection_iface(accessible);
        if (!selection)
            return std::nullopt;
        int count = run(accessible, 0,
            [&](GError** failure) { return atspi_selection_get_n_selected_children(selection, failure); });
        std::vector<AXUIElement> selected;
        for (int index = 0; index < std::min(count, maxChildren); ++index) {
            AtspiAccessible* child = run(accessible, static_cast<AtspiAccessible*>(nullptr),
                [&](GError** failure) { return atspi_selection_get_selected_child(selection, index, failure); });
            if (child)
                selected.push_back(AtspiElement::adopt(child));
        }
        g_object_unref(selection);
        return Value(elementList(selected));
    }

    std::optional<Value> fullScreen(AtspiAccessible* accessible, int elementRole)
    {
        if (!isWindowRole(elementRole))
            return std::nullopt;
        auto window = x11WindowOf(accessible);
        return window ? std::optional<Value>(window->fullScreen) : std::nullopt;
    }

    std::optional<Value> subrole(AtspiAccessible* accessible, int elementRole)
    {
        if (auto ariaRole = objectAttribute(accessible, "xml-roles")) {
            if (auto fromAria = axSubroleForAriaRole(*ariaRole))
                return Value(std::string(*fromAria));
        }
        auto names = axRoleNamesFor(elementRole);
        return names.subrole ? std::optional<Value>(std::string(*names.subrole)) : std::nullopt;
    }

    std::optional<Value> applicationAttribute(AtspiAccessible* application, std::string_view attribute)
    {
        if (attribute == "AXWindows")
            return Value(elementList(windowsOf(application)));
        if (attribute == "AXFocusedWindow") {
            auto window = focusedWindowOf(application);
            return window ? std::optional<Value>(*window) : std::nullopt;
        }
        if (attribute == "AXMainWindow") {
            if (auto window = focusedWindowOf(application))
                return Value(*window);
            // An application in the background: its first showing window with a title.
            for (const AXUIElement& window : windowsOf(application)) {
                auto frame = accessibleOf(window);
                if (hasState(frame, ATSPI_STATE_SHOWING) && !name(frame).value_or("").empty())
                    return Value(window);
            }
            return std::nullopt;
        }
        if (isEnhancedAccessibilityAttribute(attribute)) {
            auto enabled = AccessibilityBusStatus::isEnabled();
            return enabled ? std::optional<Value>(*enabled) : std::nullopt;
        }
        return std::nullopt;
    }

    std::optional<Value> attribute(AtspiAccessible* accessible, std::string_view attribute)
    {
        auto elementRole = role(accessible);
        if (!elementRole)
            return std::nullopt;
        if (attribute == "AXRole")
            return Value(std::string(axRoleNamesFor(*elementRole).role));
        if (attribute == "AXSubrole")
            return subrole(accessible, *elementRole);
        if (*elementRole == ATSPI_ROLE_APPLICATION) {
            if (auto value = applicationAttribute(accessible, attribute))
                return value;
        }
        if (attribute == "AXTitle")
            return title(accessible, *elementRole);
        if (attribute == "AXDescription") {
            auto text = description(accessible);
            return text ? std::optional<Value>(*text) : std::nullopt;
        }
        if (attribute == "AXValue")
            return value(accessible, *elementRole);
        if (attribute == "AXURL")
            return url(accessible, *elementRole);
        if (attribute == "AXDocument")
            return document(accessible, *elementRole);
        if (attribute == "AXParent") {
            if (*elementRole == ATSPI_ROLE_APPLICATION)
                return std::nullopt;
            auto found = parent(accessible);
            return found ? std::optional<Value>(*found) : std::nullopt;
        }
        if (attribute == "AXChildren")
            return Value(elementList(children(accessible)));
        if (attribute == "AXPosition" || attribute == "AXSize") {
            auto frame = extents(accessible);
            if (!frame)
                return std::nullopt;
            return attribute == "AXPosition" ? Value(frame->origin) : Value(frame->size);
        }
        if (attribute == "AXFocused")
            return Value(hasState(accessible, ATSPI_STATE_FOCUSED));
        if (attribute == "AXSelected")
            return Value(hasState(accessible, ATSPI_STATE_SELECTED));
        if (attribute == "AXModal")
            return Value(hasState(accessible, ATSPI_STATE_MODAL));
        if (attribute == "AXFullScreen")
            return fullScreen(accessible, *elementRole);
        if (attribute == "AXSelectedRows")
            return selectedChildren(accessible);
        if (attribute == "AXIdentifier") {
            gchar* id = run(accessible, static_cast<gchar*>(nullptr),
                [&](GError** failure) { return atspi_accessible_get_accessible_id(accessible, failure); });
            std::string text = takeText(id);
            return text.empty() ? std::nullopt : std::optional<Value>(text);
        }
        if (attribute == "AXDOMIdentifier") {
            auto id = objectAttribute(accessible, "id");
            return id ? std::optional<Value>(*id) : std::nullopt;
        }
        if (attribute == "AXDOMClassList") {
            auto classes = objectAttribute(accessible, "class");
            if (!classes)
                return std::nullopt;
            Value::List names;
            for (std::string& className : classNames(*classes))
                names.emplace_back(std::move(className));
            return Value(std::move(names));
        }
        return std::nullopt;
    }

    std::vector<std::string> attributeNames(AtspiAccessible* accessible)
    {
        auto elementRole = role(accessible);
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
        if (AtspiComponent* component = atspi_accessible_get_component_iface(accessible)) {
            g_object_unref(component);
            names.insert(names.end(), { "AXPosition", "AXSize" });
        }
        if (isWindowRole(*elementRole))
            names.insert(names.end(), { "AXFullScreen", "AXModal", "AXDocument" });
        if (*elementRole == ATSPI_ROLE_HEADING || isNumericValueRole(*elementRole) || isTextValueRole(*elementRole))
            names.push_back("AXValue");
        if (*elementRole == ATSPI_ROLE_DOCUMENT_WEB || *elementRole == ATSPI_ROLE_LINK)
            names.push_back("AXURL");
        if (isDocumentRole(*elementRole))
            names.push_back("AXDocument");
        if (AtspiSelection* selection = atspi_accessible_get_selection_iface(accessible)) {
            g_object_unref(selection);
            names.push_back("AXSelectedRows");
        }
        return names;
    }

    // The AT-SPI action names of the element, in its order.
    std::vector<std::string> atspiActionNames(AtspiAccessible* accessible)
    {
        std::vector<std::string> names;
        AtspiAction* action = atspi_accessible_get_action_iface(accessible);
        if (!action)
            return names;
        int count = run(accessible, 0, [&](GError** failure) { return atspi_action_get_n_actions(action, failure); });
        for (int index = 0; index < count; ++index) {
            names.push_back(takeText(run(accessible, static_cast<gchar*>(nullptr),
                [&](GError** failure) { return atspi_action_get_action_name(action, index, failure); })));
        }
        g_object_unref(action);
        return names;
    }

    // The index of the AT-SPI action that plays the named one.
    std::optional<int> actionIndex(AtspiAccessible* accessible, std::string_view axAction)
    {
        auto names = atspiActionNames(accessible);
        for (size_t index = 0; index < names.size(); ++index) {
            if (names[index] == axAction || axActionName(names[index]) == axAction)
                return static_cast<int>(index);
        }
        return std::nullopt;
    }

    bool settable(AtspiAccessible* accessible, std::string_view attribute)
    {
        auto elementRole = role(accessible);
        if (!elementRole)
            return false;
        if (*elementRole == ATSPI_ROLE_APPLICATION)
            return isEnhancedAccessibilityAttribute(attribute);
        if (attribute == "AXFocused")
            return hasState(accessible, ATSPI_STATE_FOCUSABLE);
        if (attribute == "AXValue") {
            if (isNumericValueRole(*elementRole)) {
                AtspiValue* value = atspi_accessible_get_value_iface(accessible);
                if (value)
                    g_object_unref(value);
                return value != nullptr;
            }
            AtspiEditableText* editable = atspi_accessible_get_editable_text_iface(accessible);
            if (editable)
                g_object_unref(editable);
            return editable && hasState(accessible, ATSPI_STATE_EDITABLE);
        }
        return false;
    }

    AXError write(AtspiAccessible* accessible, std::string_view attribute, const Value& value)
    {
        if (!settable(accessible, attribute))
            return error == AXErrorCode::noValue ? AXErrorCode::attributeUnsupported : error;
        error = AXErrorCode::failure;
        if (isEnhancedAccessibilityAttribute(attribute))
            return AccessibilityBusStatus::enable() ? AXErrorCode::success : AXErrorCode::cannotComplete;
        if (attribute == "AXFocused") {
            if (value.asNumberOrBoolean().value_or(0) == 0)
                return AXErrorCode::success; // AT-SPI cannot take the focus away; nothing to do.
            AtspiComponent* component = atspi_accessible_get_component_iface(accessible);
            if (!component)
                return AXErrorCode::attributeUnsupported;
            gboolean done = run(
                accessible, FALSE, [&](GError** failure) { return atspi_component_grab_focus(component, failure); });
            g_object_unref(component);
            return done ? AXErrorCode::success : error;
        }
        if (auto number = value.asNumber(); number && isNumericValueRole(*role(accessible))) {
            AtspiValue* numeric = atspi_accessible_get_value_iface(accessible);
            gboolean done = run(accessible, FALSE,
                [&](GError** failure) { return atspi_value_set_current_value(numeric, *number, failure); });
            g_object_unref(numeric);
            return done ? AXErrorCode::success : error;
        }
        const std::string* text = value.asText();
        if (!text)
            return AXErrorCode::illegalArgument;
        AtspiEditableText* editable = atspi_accessible_get_editable_text_iface(accessible);
        gboolean done = run(accessible, FALSE,
            [&](GError** failure) { return atspi_editable_text_set_text_contents(editable, text->c_str(), failure); });
        g_object_unref(editable);
        return done ? AXErrorCode::success : error;
    }

    AtspiAccessible* accessibleAtPoint(AtspiAccessible* accessible, int x, int y)
    {
        AtspiComponent* component = atspi_accessible_get_component_iface(accessible);
        if (!component)
            return nullptr;
        AtspiAccessible* hit = run(accessible, static_cast<AtspiAccessible*>(nullptr), [&](GError** failure) {
            return atspi_component_get_accessible_at_point(component, x, y, ATSPI_COORD_TYPE_SCREEN, failure);
        });
        g_object_unref(component);
        return hit;
    }

    std::optional<AXUIElement> windowAtPoint(AtspiAccessible* application, Point point)
    {
        auto windows = windowsOf(application);
        // The active window lies above the others.
        std::stable_partition(windows.begin(), windows.end(),
            [&](const AXUIElement& window) { return hasState(accessibleOf(window), ATSPI_STATE_ACTIVE); });
        for (const AXUIElement& window : windows) {
            auto frame = extents(accessibleOf(window));
            if (frame && frame->contains(point) && hasState(accessibleOf(window), ATSPI_STATE_SHOWING))
                return window;
        }
        return std::nullopt;
    }

    std::optional<AXUIElement> deepestAtPoint(AtspiAccessible* application, float x, float y)
    {
        auto current = windowAtPoint(application, { x, y });
        if (!current)
            return std::nullopt;
        int pointX = static_cast<int>(std::floor(x));
        int pointY = static_cast<int>(std::floor(y));
        for (int depth = 0; depth < maxHitTestDepth; ++depth) {
            AtspiAccessible* hit = accessibleAtPoint(accessibleOf(*current), pointX, pointY);
            if (!hit)
                break;
            if (hit == accessibleOf(*current)) {
                g_object_unref(hit);
                break;
            }
            current = AtspiElement::adopt(hit);
        }
        return current;
    }
};

std::unique_ptr<AtspiAccessibility> AtspiAccessibility::connect(X11WindowFacts* windowFacts)
{
    atspi_init();
    if (!atspi_get_a11y_bus())
        return nullptr;
    auto accessibility = std::unique_ptr<AtspiAccessibility>(new AtspiAccessibility(windowFacts));
    atspi_set_timeout(static_cast<int>(defaultTimeout.count()), static_cast<int>(defaultTimeout.count()));
    return accessibility;
}

AtspiAccessibility::AtspiAccessibility(X11WindowFacts* windowFacts)
    : windowFacts_(windowFacts)
    , timeout_(defaultTimeout)
{
}

AtspiAccessibility::~AtspiAccessibility()
{
    for (auto& [pid, application] : applications_)
        g_object_unref(application);
}

std::optional<AXUIElement> AtspiAccessibility::createApplication(ProcessIdentifier pid)
{
    if (pid <= 0)
        return std::nullopt;
    Calls calls { *this };
    // A remembered application still answers to its pid unless it has gone.
    if (auto known = applications_.find(pid); known != applications_.end()) {
        if (calls.processId(known->second) == pid)
            return AtspiElement::adopt(static_cast<AtspiAccessible*>(g_object_ref(known->second)));
        g_object_unref(known->second);
        applications_.erase(known);
    }
    AtspiAccessible* desktop = atspi_get_desktop(0);
    std::optional<AXUIElement> found;
    for (const AXUIElement& application : calls.children(desktop)) {
        AtspiAccessible* accessible = accessibleOf(application);
        if (calls.processId(accessible) == pid) {
            applications_.emplace(pid, static_cast<AtspiAccessible*>(g_object_ref(accessible)));
            found = application;
            break;
        }
    }
    g_object_unref(desktop);
    return found;
}

std::optional<AXUIElement> AtspiAccessibility::createSystemWide()
{
    return AtspiElement::systemWide();
}

AXResult<Value> AtspiAccessibility::copyAttributeValue(const AXUIElement& element, std::string_view attribute)
{
    AtspiAccessible* accessible = accessibleOf(element);
    if (!accessible)
        return AXResult<Value>::failure(AXErrorCode::illegalArgument);
    if (isSystemWide(element))
        return AXResult<Value>::failure(AXErrorCode::noValue);
    Calls calls { *this };
    auto value = calls.attribute(accessible, attribute);
    if (!value)
        return AXResult<Value>::failure(calls.error);
    return AXResult<Value>::success(std::move(*value));
}

AXResult<std::vector<std::string>> AtspiAccessibility::copyAttributeNames(const AXUIElement& element)
{
    AtspiAccessible* accessible = accessibleOf(element);
    if (!accessible || isSystemWide(element))
        return AXResult<std::vector<std::string>>::failure(AXErrorCode::illegalArgument);
    Calls calls { *this };
    auto names = calls.attributeNames(accessible);
    if (names.empty())
        return AXResult<std::vector<std::string>>::failure(calls.error);
    return AXResult<std::vector<std::string>>::success(std::move(names));
}

AXResult<std::vector<std::string>> AtspiAccessibility::copyActionNames(const AXUIElement& element)
{
    AtspiAccessible* accessible = accessibleOf(element);
    if (!accessible || isSystemWide(element))
        return AXResult<std::vector<std::string>>::failure(AXErrorCode::illegalArgument);
    Calls calls { *this };
    std::vector<std::string> names;
    for (const std::string& atspiName : calls.atspiActionNames(accessible)) {
        std::string name(axActionName(atspiName).value_or(atspiName));
        if (!atspiName.empty() && std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(name);
    }
    if (calls.error == AXErrorCode::cannotComplete)
        return AXResult<std::vector<std::string>>::failure(calls.error);
    return AXResult<std::vector<std::string>>::success(std::move(names));
}

AXResult<std::string> AtspiAccessibility::copyActionDescription(const AXUIElement& element, std::string_view action)
{
    AtspiAccessible* accessible = accessibleOf(element);
    if (!accessible || isSystemWide(element))
        return AXResult<std::string>::failure(AXErrorCode::illegalArgument);
    Calls calls { *this };
    auto index = calls.actionIndex(accessible, action);
    if (!index)
        return AXResult<std::string>::failure(AXErrorCode::actionUnsupported);
    AtspiAction* atspiAction = atspi_accessible_get_action_iface(accessible);
    gchar* text = calls.run(accessible, static_cast<gchar*>(nullptr),
        [&](GError** failure) { return atspi_action_get_action_description(atspiAction, *index, failure); });
    g_object_unref(atspiAction);
    if (!text)
        return AXResult<std::string>::failure(calls.error);
    return AXResult<std::string>::success(takeText(text));
}

AXError AtspiAccessibility::performAction(const AXUIElement& element, std::string_view action)
{
    AtspiAccessible* accessible = accessibleOf(element);
    if (!accessible || isSystemWide(element))
        return AXErrorCode::illegalArgument;
    Calls calls { *this };
    auto index = calls.actionIndex(accessible, action);
    if (!index)
        return calls.error == AXErrorCode::cannotComplete ? calls.error : AXErrorCode::actionUnsupported;
    AtspiAction* atspiAction = atspi_accessible_get_action_iface(accessible);
    gboolean done = calls.run(
        accessible, FALSE, [&](GError** failure) { return atspi_action_do_action(atspiAction, *index, failure); });
    g_object_unref(atspiAction);
    return done ? AXErrorCode::success : calls.error;
}

AXError AtspiAccessibility::setAttributeValue(
    const AXUIElement& element, std::string_view attribute, const Value& value)
{
    AtspiAccessible* accessible = accessibleOf(element);
    if (!accessible || isSystemWide(element))
        return AXErrorCode::illegalArgument;
    Calls calls { *this };
    return calls.write(accessible, attribute, value);
}

AXResult<bool> AtspiAccessibility::isAttributeSettable(const AXUIElement& element, std::string_view attribute)
{
    AtspiAccessible* accessible = accessibleOf(element);
    if (!accessible || isSystemWide(element))
        return AXResult<bool>::failure(AXErrorCode::illegalArgument);
    Calls calls { *this };
    bool settable = calls.settable(accessible, attribute);
    if (calls.error == AXErrorCode::cannotComplete)
        return AXResult<bool>::failure(calls.error);
    return AXResult<bool>::success(settable);
}

AXResult<int64_t> AtspiAccessibility::attributeValueCount(const AXUIElement& element, std::string_view attribute)
{
    AtspiAccessible* accessible = accessibleOf(element);
    if (!accessible || isSystemWide(element))
        return AXResult<int64_t>::failure(AXErrorCode::illegalArgument);
    Calls calls { *this };
    if (attribute == "AXChildren") {
        int count = calls.childCount(accessible);
        if (calls.error != AXErrorCode::noValue)
            return AXResult<int64_t>::failure(calls.error);
        return AXResult<int64_t>::success(count);
    }
    auto value = calls.attribute(accessible, attribute);
    if (!value || !value->asList())
        return AXResult<int64_t>::failure(value ? AXErrorCode::illegalArgument : calls.error);
    return AXResult<int64_t>::success(static_cast<int64_t>(value->asList()->size()));
}

AXResult<ProcessIdentifier> AtspiAccessibility::pid(const AXUIElement& element)
{
    AtspiAccessible* accessible = accessibleOf(element);
    if (!accessible || isSystemWide(element))
        return AXResult<ProcessIdentifier>::failure(AXErrorCode::illegalArgument);
    Calls calls { *this };
    auto pid = calls.processId(accessible);
    if (!pid)
        return AXResult<ProcessIdentifier>::failure(
            calls.error == AXErrorCode::noValue ? AXErrorCode::invalidUIElement : calls.error);
    return AXResult<ProcessIdentifier>::success(*pid);
}

AXResult<AXUIElement> AtspiAccessibility::copyElementAtPosition(const AXUIElement& application, float x, float y)
{
    AtspiAccessible* accessible = accessibleOf(application);
    if (!accessible || isSystemWide(application) || !std::isfinite(x) || !std::isfinite(y))
        return AXResult<AXUIElement>::failure(AXErrorCode::illegalArgument);
    Calls calls { *this };
    auto hit = calls.deepestAtPoint(accessible, x, y);
    if (!hit)
        return AXResult<AXUIElement>::failure(calls.error);
    return AXResult<AXUIElement>::success(*hit);
}

AXError AtspiAccessibility::setMessagingTimeout(const AXUIElement& element, float seconds)
{
    if (!isSystemWide(element))
        return AXErrorCode::notImplemented;
    if (!std::isfinite(seconds) || seconds <= 0)
        return AXErrorCode::illegalArgument;
    constexpr double maxMilliseconds = 86'400'000;
    auto milliseconds = static_cast<int>(std::min(double(seconds) * 1000, maxMilliseconds));
    timeout_ = std::chrono::milliseconds(std::max(milliseconds, 1));
    atspi_set_timeout(milliseconds, milliseconds);
    return AXErrorCode::success;
}

} // namespace vardel::linux_desktop
