#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Outlook. In the main window the context path is the selected folder's path followed by the sender
// and subject of the selected message; in a message or compose window, the window title's parts
// followed by the sender and subject shown in the window.
class NewOutlookInfoExtractor {
public:
    static constexpr const char* className = "NewOutlookInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
