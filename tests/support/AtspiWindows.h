#pragma once

// What a user does in another program's window, done through AT-SPI as assistive technology does it:
// find the program and an element by its role and name, press it, type into it.

#include "support/WaitUntil.h"

#include <atspi/atspi.h>
#include <chrono>
#include <memory>
#include <string>

namespace vardel::testing::atspi {

struct AccessibleRelease {
    void operator()(AtspiAccessible* accessible) const { g_object_unref(accessible); }
};
using Accessible = std::unique_ptr<AtspiAccessible, AccessibleRelease>;

// Each call waits two seconds at most, so that a program that has gone costs little.
inline void connect()
{
    atspi_init();
    atspi_set_timeout(2000, 2000);
}

inline std::string nameOf(AtspiAccessible* accessible)
{
    gchar* name = atspi_accessible_get_name(accessible, nullptr);
    std::string text = name ? name : "";
    g_free(name);
    return text;
}

// The first element below root (depth first) with the role and name.
inline Accessible find(AtspiAccessible* root, AtspiRole role, const std::string& name, int depth = 15)
{
    if (atspi_accessible_get_role(root, nullptr) == role && nameOf(root) == name)
        return Accessible(static_cast<AtspiAccessible*>(g_object_ref(root)));
    if (depth == 0)
        return nullptr;
    gint count = atspi_accessible_get_child_count(root, nullptr);
    for (gint index = 0; index < count; ++index) {
        Accessible child(atspi_accessible_get_child_at_index(root, index, nullptr));
        if (!child)
            continue;
        if (auto found = find(child.get(), role, name, depth - 1))
            return found;
    }
    return nullptr;
}

// The element with the role and name in the program of that name, once it shows.
inline Accessible waitForElement(const std::string& program, AtspiRole role, const std::string& name,
    std::chrono::milliseconds timeout = std::chrono::seconds(20))
{
    Accessible found;
    waitUntil(
        [&] {
            Accessible desktop(atspi_get_desktop(0));
            gint count = atspi_accessible_get_child_count(desktop.get(), nullptr);
            for (gint index = 0; index < count && !found; ++index) {
                Accessible application(atspi_accessible_get_child_at_index(desktop.get(), index, nullptr));
                if (application && nameOf(application.get()) == program)
                    found = find(application.get(), role, name);
            }
            return found != nullptr;
        },
        timeout, std::chrono::milliseconds(100));
    return found;
}

// Its first action: a button's press, a check box's toggle.
inline bool press(AtspiAccessible* element)
{
    AtspiAction* action = atspi_accessible_get_action_iface(element);
    if (!action)
        return false;
    bool done = atspi_action_do_action(action, 0, nullptr) != FALSE;
    g_object_unref(action);
    return done;
}

inline bool type(AtspiAccessible* element, const std::string& text)
{
    AtspiEditableText* editable = atspi_accessible_get_editable_text_iface(element);
    if (!editable)
        return false;
    bool done = atspi_editable_text_set_text_contents(editable, text.c_str(), nullptr) != FALSE;
    g_object_unref(editable);
    return done;
}

inline std::string textOf(AtspiAccessible* element)
{
    AtspiText* text = atspi_accessible_get_text_iface(element);
    if (!text)
        return {};
    gchar* contents = atspi_text_get_text(text, 0, -1, nullptr);
    std::string result = contents ? contents : "";
    g_free(contents);
    g_object_unref(text);
    return result;
}

inline bool isChecked(AtspiAccessible* element)
{
    AtspiStateSet* states = atspi_accessible_get_state_set(element);
    bool checked = atspi_state_set_contains(states, ATSPI_STATE_CHECKED) != FALSE;
    g_object_unref(states);
    return checked;
}

} // namespace vardel::testing::atspi
