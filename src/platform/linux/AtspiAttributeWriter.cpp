#include "platform/linux/AtspiAttributeWriter.h"

#include "platform/linux/AccessibilityBusStatus.h"
#include "platform/linux/AtspiRoleTable.h"

#include <algorithm>

namespace vardel::linux_desktop {

AtspiAttributeWriter::AtspiAttributeWriter(AtspiCalls& calls)
    : calls_(calls)
{
}

std::span<const AtspiAttributeWriter::WriterRow> AtspiAttributeWriter::rows()
{
    static constexpr WriterRow rows[] = {
        { "AXEnhancedUserInterface", &AtspiAttributeWriter::enhancedUserInterfaceSettable,
            &AtspiAttributeWriter::writeEnhancedUserInterface },
        { "AXManualAccessibility", &AtspiAttributeWriter::enhancedUserInterfaceSettable,
            &AtspiAttributeWriter::writeEnhancedUserInterface },
        { "AXFocused", &AtspiAttributeWriter::focusedSettable, &AtspiAttributeWriter::writeFocused },
        { "AXValue", &AtspiAttributeWriter::valueSettable, &AtspiAttributeWriter::writeValue },
    };
    return rows;
}

const AtspiAttributeWriter::WriterRow* AtspiAttributeWriter::settableRow(
    AtspiAccessible* accessible, std::string_view attribute)
{
    auto table = rows();
    auto row
        = std::find_if(table.begin(), table.end(), [&](const WriterRow& row) { return row.attribute == attribute; });
    if (row == table.end())
        return nullptr;
    auto elementRole = calls_.role(accessible);
    if (!elementRole || !(this->*row->settable)(accessible, *elementRole))
        return nullptr;
    return &*row;
}

bool AtspiAttributeWriter::isSettable(AtspiAccessible* accessible, std::string_view attribute)
{
    return settableRow(accessible, attribute) != nullptr;
}

AXError AtspiAttributeWriter::write(AtspiAccessible* accessible, std::string_view attribute, const Value& value)
{
    const WriterRow* row = settableRow(accessible, attribute);
    if (!row)
        return calls_.error() == AXErrorCode::noValue ? AXErrorCode::attributeUnsupported : calls_.error();
    // A write that fails without saying why is a failure.
    calls_.setError(AXErrorCode::failure);
    return (this->*row->write)(accessible, *calls_.role(accessible), value);
}

bool AtspiAttributeWriter::enhancedUserInterfaceSettable(AtspiAccessible*, int role)
{
    return role == ATSPI_ROLE_APPLICATION;
}

AXError AtspiAttributeWriter::writeEnhancedUserInterface(AtspiAccessible*, int, const Value&)
{
    return AccessibilityBusStatus::enable() ? AXErrorCode::success : AXErrorCode::cannotComplete;
}

bool AtspiAttributeWriter::focusedSettable(AtspiAccessible* accessible, int role)
{
    return role != ATSPI_ROLE_APPLICATION && calls_.hasState(accessible, ATSPI_STATE_FOCUSABLE);
}

AXError AtspiAttributeWriter::writeFocused(AtspiAccessible* accessible, int, const Value& value)
{
    // AT-SPI cannot take the focus away; nothing to do.
    if (value.asNumberOrBoolean().value_or(0) == 0)
        return AXErrorCode::success;
    return calls_.grabFocus(accessible);
}

bool AtspiAttributeWriter::valueSettable(AtspiAccessible* accessible, int role)
{
    if (role == ATSPI_ROLE_APPLICATION)
        return false;
    if (isNumericValueRole(role))
        return AtspiCalls::implements<atspi_accessible_get_value_iface>(accessible);
    return AtspiCalls::implements<atspi_accessible_get_editable_text_iface>(accessible)
        && calls_.hasState(accessible, ATSPI_STATE_EDITABLE);
}

AXError AtspiAttributeWriter::writeValue(AtspiAccessible* accessible, int role, const Value& value)
{
    if (auto number = value.asNumber(); number && isNumericValueRole(role))
        return calls_.setNumericValue(accessible, *number);
    const std::string* text = value.asText();
    if (!text)
        return AXErrorCode::illegalArgument;
    // Sliders and the like take numbers only: without editable text the write is refused.
    return calls_.setTextContents(accessible, *text);
}

} // namespace vardel::linux_desktop
