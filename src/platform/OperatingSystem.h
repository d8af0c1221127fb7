#pragma once

#include <string>

namespace vardel::OperatingSystem {

// The running system's name and release, for support texts.
std::string versionString();

} // namespace vardel::OperatingSystem
