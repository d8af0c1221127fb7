#include "platform/OperatingSystem.h"

#include <sys/utsname.h>

namespace vardel::OperatingSystem {

std::string versionString()
{
    utsname system {};
    if (uname(&system) != 0)
        return "(unknown)";
    return std::string(system.sysname) + " " + system.release;
}

} // namespace vardel::OperatingSystem
