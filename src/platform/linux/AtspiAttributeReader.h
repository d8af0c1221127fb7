#pragma once

#include "platform/Value.h"
#include "platform/linux/AtspiCalls.h"
#include "platform/linux/AtspiWindowMatcher.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vardel::linux_desktop {

// Reads the accessibility attributes of AT-SPI elements; docs/linux-desktop.md says where each comes
// from. Each attribute has its reader in a table; an application's own attributes have a table of
// their own, looked at first.
class AtspiAttributeReader {
public:
    // The facts may be nullptr.
    AtspiAttributeReader(AtspiCalls&, X11WindowFacts*);

    // Nothing when the element lacks the attribute or a call failed; the calls' error says which.
    std::optional<Value> read(AtspiAccessible*, std::string_view attribute);
    // The attributes the element has, by its role and its interfaces.
    std::vector<std::string> names(AtspiAccessible*);

private:
    using Reader = std::optional<Value> (AtspiAttributeReader::*)(AtspiAccessible*, int role);
    struct ReaderRow {
        std::string_view attribute;
        Reader read;
    };
    static std::span<const ReaderRow> elementReaders();
    static std::span<const ReaderRow> applicationReaders();
    static Reader readerFor(std::span<const ReaderRow>, std::string_view attribute);

    std::optional<Value> role(AtspiAccessible*, int role);
    std::optional<Value> subrole(AtspiAccessible*, int role);
    std::optional<Value> title(AtspiAccessible*, int role);
    std::optional<Value> description(AtspiAccessible*, int role);
    std::optional<Value> value(AtspiAccessible*, int role);
    std::optional<Value> url(AtspiAccessible*, int role);
    std::optional<Value> document(AtspiAccessible*, int role);
    std::optional<Value> parent(AtspiAccessible*, int role);
    std::optional<Value> children(AtspiAccessible*, int role);
    std::optional<Value> position(AtspiAccessible*, int role);
    std::optional<Value> size(AtspiAccessible*, int role);
    std::optional<Value> focused(AtspiAccessible*, int role);
    std::optional<Value> selected(AtspiAccessible*, int role);
    std::optional<Value> modal(AtspiAccessible*, int role);
    std::optional<Value> fullScreen(AtspiAccessible*, int role);
    std::optional<Value> selectedRows(AtspiAccessible*, int role);
    std::optional<Value> identifier(AtspiAccessible*, int role);
    std::optional<Value> domIdentifier(AtspiAccessible*, int role);
    std::optional<Value> domClassList(AtspiAccessible*, int role);

    std::optional<Value> windows(AtspiAccessible* application, int role);
    std::optional<Value> focusedWindow(AtspiAccessible* application, int role);
    std::optional<Value> mainWindow(AtspiAccessible* application, int role);
    std::optional<Value> enhancedUserInterface(AtspiAccessible* application, int role);

    std::optional<AXUIElement> focusedWindowOf(AtspiAccessible* application);
    std::optional<std::string> windowDocument(AtspiAccessible* window);

    AtspiCalls& calls_;
    AtspiWindowMatcher windowMatcher_;
};

} // namespace vardel::linux_desktop
