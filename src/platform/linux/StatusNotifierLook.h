#pragma once

#include "platform/StatusBar.h"

#include <ostream>
#include <string>

namespace vardel::linux_desktop {

// What a StatusNotifierItem shows for the status item's appearance.
struct StatusNotifierLook {
    // "Active", or "Passive" while the item is not visible (hosts hide passive items).
    std::string status;
    // A theme icon; the paused one is drawn greyed out.
    std::string iconName;
    // The Title and the tool tip's title: the item's title, or the program's name while it has none.
    std::string title;
    // The text shown beside the icon by hosts that show one (the Ayatana label): the item's title.
    std::string label;

    static StatusNotifierLook of(const StatusItemAppearance&);

    bool operator==(const StatusNotifierLook&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const StatusNotifierLook& look)
    {
        return out << look.status << ' ' << look.iconName << " \"" << look.title << "\" \"" << look.label << '"';
    }
};

} // namespace vardel::linux_desktop
