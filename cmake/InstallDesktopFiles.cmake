# Run at install time, when CMAKE_INSTALL_PREFIX is the prefix actually installed into (also with
# `cmake --install --prefix`): the desktop entry, the autostart template and the systemd user unit
# name the installed tracker, quoted as each format asks, whatever the prefix holds.
# VARDEL_DATA_SOURCE and VARDEL_STAGING come from the install code before this script.

set(tracker "${CMAKE_INSTALL_PREFIX}/bin/vardel-tracker")

# Desktop entries: an Exec argument in double quotes, where \ " ` $ take a backslash; then the
# value's own escapes (\\) and % doubled, since % starts a field code.
string(REPLACE "\\" "\\\\" quoted "${tracker}")
string(REPLACE "\"" "\\\"" quoted "${quoted}")
string(REPLACE "`" "\\`" quoted "${quoted}")
string(REPLACE "$" "\\$" quoted "${quoted}")
string(REPLACE "\\" "\\\\" desktop_exec "\"${quoted}\"")
string(REPLACE "%" "%%" desktop_exec "${desktop_exec}")

# systemd refuses an executable path with quotes, $ or other special characters, but takes any
# argument: such a path is handed to env. In an argument, double quotes with C escapes; % starts a
# specifier and $ a variable, each doubled.
if(tracker MATCHES "^[A-Za-z0-9/._+-]+$")
  set(unit_exec "${tracker}")
else()
  string(REPLACE "\\" "\\\\" quoted "${tracker}")
  string(REPLACE "\"" "\\\"" quoted "${quoted}")
  string(REPLACE "%" "%%" quoted "${quoted}")
  string(REPLACE "$" "$$" quoted "${quoted}")
  set(unit_exec "/usr/bin/env \"${quoted}\"")
endif()

file(MAKE_DIRECTORY "${VARDEL_STAGING}/autostart")
configure_file("${VARDEL_DATA_SOURCE}/vardel-tracker.desktop.in" "${VARDEL_STAGING}/vardel-tracker.desktop" @ONLY)
configure_file("${VARDEL_DATA_SOURCE}/vardel-tracker-autostart.desktop.in"
  "${VARDEL_STAGING}/autostart/vardel-tracker.desktop" @ONLY)
configure_file("${VARDEL_DATA_SOURCE}/vardel-tracker.service.in" "${VARDEL_STAGING}/vardel-tracker.service" @ONLY)

file(INSTALL "${VARDEL_STAGING}/vardel-tracker.desktop" DESTINATION "${CMAKE_INSTALL_PREFIX}/share/applications")
file(INSTALL "${VARDEL_STAGING}/autostart/vardel-tracker.desktop"
  DESTINATION "${CMAKE_INSTALL_PREFIX}/share/vardel-tracker/autostart")
file(INSTALL "${VARDEL_STAGING}/vardel-tracker.service" DESTINATION "${CMAKE_INSTALL_PREFIX}/lib/systemd/user")
