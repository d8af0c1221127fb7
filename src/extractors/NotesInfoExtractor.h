#pragma once

#include "platform/VDActivity.h"

namespace vardel {

// Names the note being edited: the title of the note selected in the note list, else the window
// title when it is more than the application's name.
class NotesInfoExtractor {
public:
    static constexpr const char* className = "NotesInfoExtractor";
    static void writeDetailsForActivity(VDActivity&);
};

} // namespace vardel
