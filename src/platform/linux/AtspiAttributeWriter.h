#pragma once

#include "platform/Value.h"
#include "platform/linux/AtspiCalls.h"

#include <span>
#include <string_view>

namespace vardel::linux_desktop {

// Writes the few attributes AT-SPI elements take: the focus, values of fields, sliders and the
// like, and an application's accessibility switch. Each has a row in a table that says when it is
// settable and how it is written.
class AtspiAttributeWriter {
public:
    explicit AtspiAttributeWriter(AtspiCalls&);

    bool isSettable(AtspiAccessible*, std::string_view attribute);
    AXError write(AtspiAccessible*, std::string_view attribute, const Value&);

private:
    using Settable = bool (AtspiAttributeWriter::*)(AtspiAccessible*, int role);
    using Writer = AXError (AtspiAttributeWriter::*)(AtspiAccessible*, int role, const Value&);
    struct WriterRow {
        std::string_view attribute;
        Settable settable;
        Writer write;
    };
    static std::span<const WriterRow> rows();
    // The attribute's row when the element takes it.
    const WriterRow* settableRow(AtspiAccessible*, std::string_view attribute);

    bool enhancedUserInterfaceSettable(AtspiAccessible*, int role);
    AXError writeEnhancedUserInterface(AtspiAccessible*, int role, const Value&);
    bool focusedSettable(AtspiAccessible*, int role);
    AXError writeFocused(AtspiAccessible*, int role, const Value&);
    bool valueSettable(AtspiAccessible*, int role);
    AXError writeValue(AtspiAccessible*, int role, const Value&);

    AtspiCalls& calls_;
};

} // namespace vardel::linux_desktop
