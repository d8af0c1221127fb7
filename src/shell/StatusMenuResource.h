#pragma once

#include "platform/StatusBar.h"

namespace vardel {

// The status item's menu as the application ships it: entries in order, each wired to its action,
// the pause durations as the submenu's tags.
class StatusMenuResource {
public:
    static Menu load();
};

} // namespace vardel
