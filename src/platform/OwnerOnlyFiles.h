#pragma once

#include <cstddef>
#include <filesystem>

// What the tracker records (window titles, page addresses, time entries) is its user's alone: its
// folders are 0700 and the files in them 0600, whatever the umask of the session that started it.
namespace vardel::OwnerOnlyFiles {

// From now on the process creates folders 0700 and files 0600.
void restrictNewFiles();

// Takes group and other permissions away from the folder and everything below it; links are left
// alone. How many entries it changed; a folder that does not exist changes nothing.
std::size_t tighten(const std::filesystem::path& folder);

} // namespace vardel::OwnerOnlyFiles
