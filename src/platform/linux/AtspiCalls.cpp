#include "platform/linux/AtspiCalls.h"

#include "platform/linux/AtspiRoleTable.h"

#include <algorithm>
#include <cmath>

namespace vardel::linux_desktop {

namespace {

constexpr int maxChildren = 10000;

std::optional<std::string> takeText(gchar* handedOver)
{
    GMallocHandle<gchar> text(handedOver);
    if (!text)
        return std::nullopt;
    return std::string(text.get());
}

std::map<std::string, std::string> takeTable(GHashTable* handedOver)
{
    GHashTableHandle table(handedOver);
    std::map<std::string, std::string> entries;
    if (!table)
        return entries;
    GHashTableIter iterator;
    gpointer key, value;
    g_hash_table_iter_init(&iterator, table.get());
    while (g_hash_table_iter_next(&iterator, &key, &value))
        entries.emplace(static_cast<const char*>(key), static_cast<const char*>(value));
    return entries;
}

// Collection matches hand over one reference per element.
std::vector<AXUIElement> takeElements(GArray* handedOver)
{
    GArrayHandle matches(handedOver);
    std::vector<AXUIElement> elements;
    if (!matches)
        return elements;
    elements.reserve(matches->len);
    for (guint index = 0; index < matches->len; ++index)
        elements.push_back(
            AtspiElement::adopt(GObjectHandle<AtspiAccessible>(g_array_index(matches.get(), AtspiAccessible*, index))));
    return elements;
}

} // namespace

std::optional<int> AtspiCalls::role(AtspiAccessible* accessible)
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

std::optional<std::string> AtspiCalls::name(AtspiAccessible* accessible)
{
    return remembered(accessible, &AtspiSampleAnswers::Answers::name, [&] {
        return takeText(run(accessible, static_cast<gchar*>(nullptr),
            [&](GError** failure) { return atspi_accessible_get_name(accessible, failure); }));
    });
}

std::optional<std::string> AtspiCalls::description(AtspiAccessible* accessible)
{
    return takeText(run(accessible, static_cast<gchar*>(nullptr),
        [&](GError** failure) { return atspi_accessible_get_description(accessible, failure); }));
}

std::optional<std::string> AtspiCalls::identifier(AtspiAccessible* accessible)
{
    return remembered(accessible, &AtspiSampleAnswers::Answers::identifier, [&] {
        auto id = takeText(run(accessible, static_cast<gchar*>(nullptr),
            [&](GError** failure) { return atspi_accessible_get_accessible_id(accessible, failure); }));
        return id && !id->empty() ? id : std::nullopt;
    });
}

bool AtspiCalls::hasState(AtspiAccessible* accessible, AtspiStateType state)
{
    return (states(accessible) >> state & 1) != 0;
}

uint64_t AtspiCalls::states(AtspiAccessible* accessible)
{
    static_assert(ATSPI_STATE_LAST_DEFINED <= 64, "states fit in 64 bits");
    return remembered(accessible, &AtspiSampleAnswers::Answers::states, [&] {
        GObjectHandle<AtspiStateSet> set(run(accessible, static_cast<AtspiStateSet*>(nullptr),
            [&](GError**) { return atspi_accessible_get_state_set(accessible); }));
        uint64_t bits = 0;
        for (int state = 0; set && state < ATSPI_STATE_LAST_DEFINED; ++state) {
            if (atspi_state_set_contains(set.get(), static_cast<AtspiStateType>(state)))
                bits |= uint64_t(1) << state;
        }
        return bits;
    });
}

std::optional<AXUIElement> AtspiCalls::parent(AtspiAccessible* accessible)
{
    return remembered(accessible, &AtspiSampleAnswers::Answers::parent, [&]() -> std::optional<AXUIElement> {
        GObjectHandle<AtspiAccessible> parent(run(accessible, static_cast<AtspiAccessible*>(nullptr),
            [&](GError** failure) { return atspi_accessible_get_parent(accessible, failure); }));
        if (!parent)
            return std::nullopt;
        return AtspiElement::adopt(std::move(parent));
    });
}

int AtspiCalls::childCount(AtspiAccessible* accessible)
{
    return run(accessible, 0, [&](GError** failure) { return atspi_accessible_get_child_count(accessible, failure); });
}

std::vector<AXUIElement> AtspiCalls::children(AtspiAccessible* accessible)
{
    auto found = remembered(accessible, &AtspiSampleAnswers::Answers::children, [&] {
        if (auto all = childrenInOneCall(accessible))
            return std::move(*all);
        return childrenOneByOne(accessible);
    });
    // Their parent is then known without asking: a window's, for finding its X11 window.
    if (answers_ && !found.empty()) {
        AXUIElement parent = AtspiElement::adopt(
            GObjectHandle<AtspiAccessible>(static_cast<AtspiAccessible*>(g_object_ref(accessible))));
        auto now = AtspiSampleAnswers::Clock::now();
        for (const AXUIElement& child : found)
            answers_->about(AtspiElement::accessibleOf(child), now).parent = parent;
    }
    return found;
}

// A collection query that matches everything and does not descend answers with the element's
// children, in their order, in one call instead of one call per child.
std::optional<std::vector<AXUIElement>> AtspiCalls::childrenInOneCall(AtspiAccessible* accessible)
{
    // Finding the interface may itself ask the application.
    if (guard_.isFrozen(AtspiElement::applicationBusName(accessible), AtspiCallGuard::Clock::now())) {
        error_ = AXErrorCode::cannotComplete;
        return std::nullopt;
    }
    GObjectHandle<AtspiCollection> collection(atspi_accessible_get_collection_iface(accessible));
    if (!collection)
        return std::nullopt;
    GObjectHandle<AtspiMatchRule> everything(
        atspi_match_rule_new(nullptr, ATSPI_Collection_MATCH_NONE, nullptr, ATSPI_Collection_MATCH_NONE, nullptr,
            ATSPI_Collection_MATCH_NONE, nullptr, ATSPI_Collection_MATCH_NONE, FALSE));
    GArray* matches = run(accessible, static_cast<GArray*>(nullptr), [&](GError** failure) {
        return atspi_collection_get_matches(
            collection.get(), everything.get(), ATSPI_Collection_SORT_ORDER_CANONICAL, maxChildren, FALSE, failure);
    });
    if (!matches)
        return std::nullopt;
    return takeElements(matches);
}

std::vector<AXUIElement> AtspiCalls::childrenOneByOne(AtspiAccessible* accessible)
{
    std::vector<AXUIElement> found;
    int count = std::min(childCount(accessible), maxChildren);
    for (int index = 0; index < count; ++index) {
        GObjectHandle<AtspiAccessible> child(run(accessible, static_cast<AtspiAccessible*>(nullptr),
            [&](GError** failure) { return atspi_accessible_get_child_at_index(accessible, index, failure); }));
        if (child)
            found.push_back(AtspiElement::adopt(std::move(child)));
    }
    return found;
}

std::vector<AXUIElement> AtspiCalls::windowsOf(AtspiAccessible* application)
{
    std::vector<AXUIElement> windows = children(application);
    std::erase_if(windows, [&](const AXUIElement& window) {
        auto windowRole = role(AtspiElement::accessibleOf(window));
        return !windowRole || !isWindowRole(*windowRole);
    });
    return windows;
}

std::map<std::string, std::string> AtspiCalls::objectAttributes(AtspiAccessible* accessible)
{
    return remembered(accessible, &AtspiSampleAnswers::Answers::objectAttributes, [&] {
        return takeTable(run(accessible, static_cast<GHashTable*>(nullptr),
            [&](GError** failure) { return atspi_accessible_get_attributes(accessible, failure); }));
    });
}

std::optional<std::string> AtspiCalls::objectAttribute(AtspiAccessible* accessible, const char* key)
{
    auto attributes = objectAttributes(accessible);
    auto found = attributes.find(key);
    return found == attributes.end() ? std::nullopt : std::optional(found->second);
}

std::optional<Rect> AtspiCalls::extents(AtspiAccessible* accessible)
{
    return remembered(accessible, &AtspiSampleAnswers::Answers::extents, [&]() -> std::optional<Rect> {
        GObjectHandle<AtspiComponent> component(atspi_accessible_get_component_iface(accessible));
        if (!component)
            return std::nullopt;
        GMallocHandle<AtspiRect> rect(run(accessible, static_cast<AtspiRect*>(nullptr), [&](GError** failure) {
            return atspi_component_get_extents(component.get(), ATSPI_COORD_TYPE_SCREEN, failure);
        }));
        if (!rect)
            return std::nullopt;
        Rect frame { { double(rect->x), double(rect->y) }, { double(rect->width), double(rect->height) } };
        // Objects that are not laid out report -1 or nothing at all.
        if (frame.size.width < 0 || frame.size.height < 0)
            return std::nullopt;
        return frame;
    });
}

std::optional<std::string> AtspiCalls::documentAddress(AtspiAccessible* accessible)
{
    GObjectHandle<AtspiDocument> document(atspi_accessible_get_document_iface(accessible));
    if (!document)
        return std::nullopt;
    auto attributes = takeTable(run(accessible, static_cast<GHashTable*>(nullptr),
        [&](GError** failure) { return atspi_document_get_document_attributes(document.get(), failure); }));
    // Chromium says URI, Firefox DocURL.
    for (const char* key : { "DocURL", "URI" }) {
        if (auto found = attributes.find(key); found != attributes.end() && !found->second.empty())
            return found->second;
    }
    return std::nullopt;
}

std::optional<std::string> AtspiCalls::linkAddress(AtspiAccessible* accessible)
{
    GObjectHandle<AtspiHyperlink> link(atspi_accessible_get_hyperlink(accessible));
    if (!link)
        return std::nullopt;
    return takeText(run(accessible, static_cast<gchar*>(nullptr),
        [&](GError** failure) { return atspi_hyperlink_get_uri(link.get(), 0, failure); }));
}

std::optional<std::string> AtspiCalls::textContent(AtspiAccessible* accessible)
{
    GObjectHandle<AtspiText> text(atspi_accessible_get_text_iface(accessible));
    if (!text)
        return std::nullopt;
    return takeText(run(accessible, static_cast<gchar*>(nullptr),
        [&](GError** failure) { return atspi_text_get_text(text.get(), 0, -1, failure); }));
}

std::optional<double> AtspiCalls::numericValue(AtspiAccessible* accessible)
{
    GObjectHandle<AtspiValue> value(atspi_accessible_get_value_iface(accessible));
    if (!value)
        return std::nullopt;
    double current = run(accessible, std::nan(""),
        [&](GError** failure) { return atspi_value_get_current_value(value.get(), failure); });
    if (lastCallFailed_ || std::isnan(current))
        return std::nullopt;
    return current;
}

std::optional<ProcessIdentifier> AtspiCalls::processId(AtspiAccessible* accessible)
{
    return remembered(accessible, &AtspiSampleAnswers::Answers::processId, [&]() -> std::optional<ProcessIdentifier> {
        guint pid = run(
            accessible, 0u, [&](GError** failure) { return atspi_accessible_get_process_id(accessible, failure); });
        if (lastCallFailed_ || pid == 0)
            return std::nullopt;
        return static_cast<ProcessIdentifier>(pid);
    });
}

// The application stops walking its tree at the last document asked for, so a small count spares it
// the walk through a large page below the document.
std::vector<AXUIElement> AtspiCalls::showingWebDocuments(AtspiAccessible* accessible, int count)
{
    GObjectHandle<AtspiCollection> collection(atspi_accessible_get_collection_iface(accessible));
    if (!collection)
        return {};
    GObjectHandle<AtspiStateSet> states(atspi_state_set_new(nullptr));
    atspi_state_set_add(states.get(), ATSPI_STATE_SHOWING);
    GArrayHandle roles(g_array_new(FALSE, FALSE, sizeof(AtspiRole)));
    AtspiRole webDocument = ATSPI_ROLE_DOCUMENT_WEB;
    g_array_append_val(roles.get(), webDocument);
    GObjectHandle<AtspiMatchRule> rule(
        atspi_match_rule_new(states.get(), ATSPI_Collection_MATCH_ALL, nullptr, ATSPI_Collection_MATCH_NONE,
            roles.get(), ATSPI_Collection_MATCH_ANY, nullptr, ATSPI_Collection_MATCH_NONE, FALSE));
    return takeElements(run(accessible, static_cast<GArray*>(nullptr), [&](GError** failure) {
        return atspi_collection_get_matches(
            collection.get(), rule.get(), ATSPI_Collection_SORT_ORDER_CANONICAL, count, TRUE, failure);
    }));
}

std::optional<std::vector<AXUIElement>> AtspiCalls::selectedChildren(AtspiAccessible* accessible)
{
    GObjectHandle<AtspiSelection> selection(atspi_accessible_get_selection_iface(accessible));
    if (!selection)
        return std::nullopt;
    int count = run(accessible, 0,
        [&](GError** failure) { return atspi_selection_get_n_selected_children(selection.get(), failure); });
    std::vector<AXUIElement> selected;
    for (int index = 0; index < std::min(count, maxChildren); ++index) {
        GObjectHandle<AtspiAccessible> child(run(accessible, static_cast<AtspiAccessible*>(nullptr),
            [&](GError** failure) { return atspi_selection_get_selected_child(selection.get(), index, failure); }));
        if (child)
            selected.push_back(AtspiElement::adopt(std::move(child)));
    }
    return selected;
}

GObjectHandle<AtspiAccessible> AtspiCalls::accessibleAtPoint(AtspiAccessible* accessible, int x, int y)
{
    GObjectHandle<AtspiComponent> component(atspi_accessible_get_component_iface(accessible));
    if (!component)
        return nullptr;
    return GObjectHandle<AtspiAccessible>(
        run(accessible, static_cast<AtspiAccessible*>(nullptr), [&](GError** failure) {
            return atspi_component_get_accessible_at_point(component.get(), x, y, ATSPI_COORD_TYPE_SCREEN, failure);
        }));
}

std::vector<std::string> AtspiCalls::actionNames(AtspiAccessible* accessible)
{
    std::vector<std::string> names;
    GObjectHandle<AtspiAction> action(atspi_accessible_get_action_iface(accessible));
    if (!action)
        return names;
    int count = run(accessible, 0, [&](GError** failure) { return atspi_action_get_n_actions(action.get(), failure); });
    for (int index = 0; index < count; ++index) {
        names.push_back(takeText(run(accessible, static_cast<gchar*>(nullptr), [&](GError** failure) {
            return atspi_action_get_action_name(action.get(), index, failure);
        })).value_or(""));
    }
    return names;
}

std::optional<std::string> AtspiCalls::actionDescription(AtspiAccessible* accessible, int index)
{
    GObjectHandle<AtspiAction> action(atspi_accessible_get_action_iface(accessible));
    if (!action)
        return std::nullopt;
    return takeText(run(accessible, static_cast<gchar*>(nullptr),
        [&](GError** failure) { return atspi_action_get_action_description(action.get(), index, failure); }));
}

bool AtspiCalls::doAction(AtspiAccessible* accessible, int index)
{
    GObjectHandle<AtspiAction> action(atspi_accessible_get_action_iface(accessible));
    if (!action)
        return false;
    return run(
        accessible, FALSE, [&](GError** failure) { return atspi_action_do_action(action.get(), index, failure); });
}

AXError AtspiCalls::grabFocus(AtspiAccessible* accessible)
{
    GObjectHandle<AtspiComponent> component(atspi_accessible_get_component_iface(accessible));
    if (!component)
        return AXErrorCode::attributeUnsupported;
    return outcome(
        run(accessible, FALSE, [&](GError** failure) { return atspi_component_grab_focus(component.get(), failure); }));
}

AXError AtspiCalls::setNumericValue(AtspiAccessible* accessible, double number)
{
    GObjectHandle<AtspiValue> value(atspi_accessible_get_value_iface(accessible));
    if (!value)
        return AXErrorCode::attributeUnsupported;
    return outcome(run(accessible, FALSE,
        [&](GError** failure) { return atspi_value_set_current_value(value.get(), number, failure); }));
}

AXError AtspiCalls::setTextContents(AtspiAccessible* accessible, const std::string& text)
{
    GObjectHandle<AtspiEditableText> editable(atspi_accessible_get_editable_text_iface(accessible));
    if (!editable)
        return AXErrorCode::attributeUnsupported;
    return outcome(run(accessible, FALSE, [&](GError** failure) {
        return atspi_editable_text_set_text_contents(editable.get(), text.c_str(), failure);
    }));
}

} // namespace vardel::linux_desktop
