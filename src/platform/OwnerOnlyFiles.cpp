#include "platform/OwnerOnlyFiles.h"

#include <sys/stat.h>

namespace vardel::OwnerOnlyFiles {

namespace {

namespace fs = std::filesystem;

constexpr auto groupAndOthers = fs::perms::group_all | fs::perms::others_all;

// Whether the entry had permissions for others and lost them.
bool restrict(const fs::directory_entry& entry)
{
    std::error_code error;
    auto status = entry.symlink_status(error);
    if (error || fs::is_symlink(status) || (status.permissions() & groupAndOthers) == fs::perms::none)
        return false;
    fs::permissions(entry.path(), groupAndOthers, fs::perm_options::remove | fs::perm_options::nofollow, error);
    return !error;
}

} // namespace

void restrictNewFiles()
{
    ::umask(S_IRWXG | S_IRWXO);
}

std::size_t tighten(const fs::path& folder)
{
    std::error_code error;
    if (!fs::is_directory(fs::symlink_status(folder, error)))
        return 0;
    std::size_t changed = restrict(fs::directory_entry(folder, error)) ? 1 : 0;
    // A folder that cannot be read still had its own permissions tightened above.
    for (fs::recursive_directory_iterator entries(folder, fs::directory_options::skip_permission_denied, error), end;
         !error && entries != end; entries.increment(error))
        changed += restrict(*entries) ? 1 : 0;
    return changed;
}

} // namespace vardel::OwnerOnlyFiles
