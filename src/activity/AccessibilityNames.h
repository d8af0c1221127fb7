#pragma once

// Role, subrole and attribute names as the accessibility interface spells them.
namespace vardel::AX {

// Standard attributes.
inline constexpr const char* children = "AXChildren";
inline constexpr const char* parent = "AXParent";
inline constexpr const char* role = "AXRole";
inline constexpr const char* subrole = "AXSubrole";
inline constexpr const char* title = "AXTitle";
inline constexpr const char* value = "AXValue";
inline constexpr const char* description = "AXDescription";
inline constexpr const char* url = "AXURL";
inline constexpr const char* position = "AXPosition";
inline constexpr const char* size = "AXSize";
inline constexpr const char* windows = "AXWindows";
inline constexpr const char* contents = "AXContents";
inline constexpr const char* selectedRows = "AXSelectedRows";
inline constexpr const char* mainWindow = "AXMainWindow";
inline constexpr const char* focusedWindow = "AXFocusedWindow";
inline constexpr const char* identifier = "AXIdentifier";
inline constexpr const char* document = "AXDocument";
inline constexpr const char* modal = "AXModal";

// Further attributes.
inline constexpr const char* childrenInNavigationOrder = "AXChildrenInNavigationOrder";
inline constexpr const char* fullScreen = "AXFullScreen";
inline constexpr const char* enhancedUserInterface = "AXEnhancedUserInterface";
inline constexpr const char* manualAccessibility = "AXManualAccessibility";
inline constexpr const char* domIdentifier = "AXDOMIdentifier";
inline constexpr const char* domClassList = "AXDOMClassList";

// Roles.
inline constexpr const char* applicationRole = "AXApplication";
inline constexpr const char* windowRole = "AXWindow";
inline constexpr const char* sheetRole = "AXSheet";
inline constexpr const char* groupRole = "AXGroup";
inline constexpr const char* scrollAreaRole = "AXScrollArea";
inline constexpr const char* headingRole = "AXHeading";
inline constexpr const char* webAreaRole = "AXWebArea";
inline constexpr const char* popUpButtonRole = "AXPopUpButton";
inline constexpr const char* tabPanelRole = "AXTabPanel";
inline constexpr const char* staticTextRole = "AXStaticText";
inline constexpr const char* splitGroupRole = "AXSplitGroup";
inline constexpr const char* toolbarRole = "AXToolbar";
inline constexpr const char* buttonRole = "AXButton";
inline constexpr const char* textFieldRole = "AXTextField";
inline constexpr const char* tableRole = "AXTable";
inline constexpr const char* outlineRole = "AXOutline";

// Subroles.
inline constexpr const char* landmarkBannerSubrole = "AXLandmarkBanner";
inline constexpr const char* applicationTimerSubrole = "AXApplicationTimer";

} // namespace vardel::AX
