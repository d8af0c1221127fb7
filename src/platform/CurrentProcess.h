#pragma once

#include "platform/Accessibility.h"
#include "platform/Workspace.h"

#include <string>

namespace vardel {

// This process and the application bundle it was started from (the main bundle), as they were when
// the process started.
struct CurrentProcess {
    ProcessIdentifier processIdentifier = 0;
    std::string executablePath;
    ApplicationBundle mainBundle;
};

} // namespace vardel
