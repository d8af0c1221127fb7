#pragma once

#include "platform/Accessibility.h"

#include <string>
#include <string_view>

namespace vardel::RelaunchScripts {

// Shell scripts with which the tracker relaunches itself. Each waits the delay (whole seconds), asks
// the process to end, waits up to as many one-second rounds for it to go, kills it if it stayed and
// waits the delay again, then starts the program anew. The path is quoted so that the shell takes it
// literally, whatever it contains.

// Opens the application bundle with the desktop's `open` command; bash syntax.
std::string reopeningBundle(double delay, ProcessIdentifier, std::string_view bundlePath);
// Starts the executable; POSIX sh, as Debian's dash runs it.
std::string startingExecutable(double delay, ProcessIdentifier, std::string_view executablePath);

} // namespace vardel::RelaunchScripts
