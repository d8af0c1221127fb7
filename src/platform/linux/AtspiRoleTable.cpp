#include "platform/linux/AtspiRoleTable.h"

#include <algorithm>
#include <array>
#include <atspi/atspi.h>
#include <utility>

namespace vardel::linux_desktop {

namespace {

struct RoleRow {
    AtspiRole atspi;
    std::string_view role;
    std::optional<std::string_view> subrole;
};

constexpr std::array roleRows = {
    RoleRow { ATSPI_ROLE_APPLICATION, "AXApplication", std::nullopt },
    RoleRow { ATSPI_ROLE_FRAME, "AXWindow", "AXStandardWindow" },
    RoleRow { ATSPI_ROLE_WINDOW, "AXWindow", "AXStandardWindow" },
    RoleRow { ATSPI_ROLE_DIALOG, "AXWindow", "AXDialog" },
    RoleRow { ATSPI_ROLE_FILE_CHOOSER, "AXWindow", "AXDialog" },
    RoleRow { ATSPI_ROLE_ALERT, "AXWindow", "AXDialog" },
    RoleRow { ATSPI_ROLE_DOCUMENT_WEB, "AXWebArea", std::nullopt },
    RoleRow { ATSPI_ROLE_DOCUMENT_FRAME, "AXGroup", "AXDocument" },
    RoleRow { ATSPI_ROLE_DOCUMENT_TEXT, "AXTextArea", std::nullopt },
    RoleRow { ATSPI_ROLE_PANEL, "AXGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_SECTION, "AXGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_FILLER, "AXGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_PARAGRAPH, "AXGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_INTERNAL_FRAME, "AXGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_LANDMARK, "AXGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_LIST_ITEM, "AXGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_FORM, "AXGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_ARTICLE, "AXGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_BLOCK_QUOTE, "AXGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_FOOTER, "AXGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_HEADER, "AXGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_TOOL_BAR, "AXToolbar", std::nullopt },
    RoleRow { ATSPI_ROLE_STATUS_BAR, "AXGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_STATIC, "AXStaticText", std::nullopt },
    RoleRow { ATSPI_ROLE_LABEL, "AXStaticText", std::nullopt },
    RoleRow { ATSPI_ROLE_CAPTION, "AXStaticText", std::nullopt },
    RoleRow { ATSPI_ROLE_ENTRY, "AXTextField", std::nullopt },
    RoleRow { ATSPI_ROLE_TEXT, "AXTextField", std::nullopt },
    RoleRow { ATSPI_ROLE_PASSWORD_TEXT, "AXTextField", "AXSecureTextField" },
    RoleRow { ATSPI_ROLE_COMBO_BOX, "AXComboBox", std::nullopt },
    RoleRow { ATSPI_ROLE_PUSH_BUTTON, "AXButton", std::nullopt },
    RoleRow { ATSPI_ROLE_TOGGLE_BUTTON, "AXCheckBox", "AXToggle" },
    RoleRow { ATSPI_ROLE_CHECK_BOX, "AXCheckBox", std::nullopt },
    RoleRow { ATSPI_ROLE_RADIO_BUTTON, "AXRadioButton", std::nullopt },
    RoleRow { ATSPI_ROLE_SCROLL_PANE, "AXScrollArea", std::nullopt },
    RoleRow { ATSPI_ROLE_SCROLL_BAR, "AXScrollBar", std::nullopt },
    RoleRow { ATSPI_ROLE_SPLIT_PANE, "AXSplitGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_HEADING, "AXHeading", std::nullopt },
    RoleRow { ATSPI_ROLE_LINK, "AXLink", std::nullopt },
    RoleRow { ATSPI_ROLE_LIST, "AXList", std::nullopt },
    RoleRow { ATSPI_ROLE_LIST_BOX, "AXList", std::nullopt },
    RoleRow { ATSPI_ROLE_PAGE_TAB_LIST, "AXTabGroup", std::nullopt },
    RoleRow { ATSPI_ROLE_PAGE_TAB, "AXRadioButton", "AXTabButton" },
    RoleRow { ATSPI_ROLE_MENU_BAR, "AXMenuBar", std::nullopt },
    RoleRow { ATSPI_ROLE_MENU, "AXMenu", std::nullopt },
    RoleRow { ATSPI_ROLE_MENU_ITEM, "AXMenuItem", std::nullopt },
    RoleRow { ATSPI_ROLE_CHECK_MENU_ITEM, "AXMenuItem", std::nullopt },
    RoleRow { ATSPI_ROLE_RADIO_MENU_ITEM, "AXMenuItem", std::nullopt },
    RoleRow { ATSPI_ROLE_TABLE, "AXTable", std::nullopt },
    RoleRow { ATSPI_ROLE_TREE_TABLE, "AXOutline", std::nullopt },
    RoleRow { ATSPI_ROLE_TREE, "AXOutline", std::nullopt },
    RoleRow { ATSPI_ROLE_TABLE_ROW, "AXRow", std::nullopt },
    RoleRow { ATSPI_ROLE_TABLE_CELL, "AXCell", std::nullopt },
    RoleRow { ATSPI_ROLE_TABLE_COLUMN_HEADER, "AXCell", std::nullopt },
    RoleRow { ATSPI_ROLE_TABLE_ROW_HEADER, "AXCell", std::nullopt },
    RoleRow { ATSPI_ROLE_IMAGE, "AXImage", std::nullopt },
    RoleRow { ATSPI_ROLE_ICON, "AXImage", std::nullopt },
    RoleRow { ATSPI_ROLE_SLIDER, "AXSlider", std::nullopt },
    RoleRow { ATSPI_ROLE_SPIN_BUTTON, "AXIncrementor", std::nullopt },
    RoleRow { ATSPI_ROLE_PROGRESS_BAR, "AXProgressIndicator", std::nullopt },
    RoleRow { ATSPI_ROLE_SEPARATOR, "AXSplitter", std::nullopt },
    RoleRow { ATSPI_ROLE_TOOL_TIP, "AXHelpTag", std::nullopt },
    RoleRow { ATSPI_ROLE_TIMER, "AXGroup", "AXApplicationTimer" },
};

constexpr std::array<std::pair<std::string_view, std::string_view>, 8> ariaSubroles = { {
    { "banner", "AXLandmarkBanner" },
    { "navigation", "AXLandmarkNavigation" },
    { "main", "AXLandmarkMain" },
    { "search", "AXLandmarkSearch" },
    { "contentinfo", "AXLandmarkContentInfo" },
    { "complementary", "AXLandmarkComplementary" },
    { "region", "AXLandmarkRegion" },
    { "timer", "AXApplicationTimer" },
} };

} // namespace

AXRoleNames axRoleNamesFor(int atspiRole)
{
    auto row = std::find_if(
        roleRows.begin(), roleRows.end(), [atspiRole](const RoleRow& row) { return row.atspi == atspiRole; });
    if (row == roleRows.end())
        return { "AXUnknown", std::nullopt };
    return { row->role, row->subrole };
}

std::optional<std::string_view> axSubroleForAriaRole(std::string_view ariaRole)
{
    auto row = std::find_if(
        ariaSubroles.begin(), ariaSubroles.end(), [ariaRole](const auto& row) { return row.first == ariaRole; });
    return row == ariaSubroles.end() ? std::nullopt : std::optional(row->second);
}

bool isWindowRole(int atspiRole)
{
    return atspiRole == ATSPI_ROLE_FRAME || atspiRole == ATSPI_ROLE_WINDOW || atspiRole == ATSPI_ROLE_DIALOG
        || atspiRole == ATSPI_ROLE_FILE_CHOOSER || atspiRole == ATSPI_ROLE_ALERT;
}

bool isDocumentRole(int atspiRole)
{
    return atspiRole == ATSPI_ROLE_DOCUMENT_FRAME || atspiRole == ATSPI_ROLE_DOCUMENT_TEXT
        || atspiRole == ATSPI_ROLE_DOCUMENT_SPREADSHEET || atspiRole == ATSPI_ROLE_DOCUMENT_PRESENTATION
        || atspiRole == ATSPI_ROLE_DOCUMENT_EMAIL;
}

bool isTextValueRole(int atspiRole)
{
    return atspiRole == ATSPI_ROLE_ENTRY || atspiRole == ATSPI_ROLE_TEXT || atspiRole == ATSPI_ROLE_PASSWORD_TEXT
        || atspiRole == ATSPI_ROLE_STATIC || atspiRole == ATSPI_ROLE_LABEL || atspiRole == ATSPI_ROLE_DOCUMENT_TEXT
        || atspiRole == ATSPI_ROLE_COMBO_BOX || atspiRole == ATSPI_ROLE_CAPTION;
}

bool isNumericValueRole(int atspiRole)
{
    return atspiRole == ATSPI_ROLE_SLIDER || atspiRole == ATSPI_ROLE_SPIN_BUTTON || atspiRole == ATSPI_ROLE_PROGRESS_BAR
        || atspiRole == ATSPI_ROLE_SCROLL_BAR || atspiRole == ATSPI_ROLE_LEVEL_BAR;
}

} // namespace vardel::linux_desktop
