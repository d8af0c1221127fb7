#pragma once

#include <filesystem>
#include <optional>

namespace vardel {

// The user's well-known folders, as the desktop session names them.
class UserDirectories {
public:
    // XDG_DOCUMENTS_DIR of the user-dirs.dirs file in the user's configuration folder, else
    // $HOME/Documents; nothing when the home folder is unknown.
    static std::optional<std::filesystem::path> documentsFolder();
};

} // namespace vardel
