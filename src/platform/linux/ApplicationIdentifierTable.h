#pragma once

#include "platform/Value.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vardel::linux_desktop {

// Desktop entry ids → the identifiers the extractor registry and the call tables know applications
// by ("chromium" → "org.chromium.Chromium"). The built-in table is a JSON object shipped with the
// program; a preference adds to it or overrides it.
class ApplicationIdentifierTable {
public:
    ApplicationIdentifierTable() = default;
    explicit ApplicationIdentifierTable(std::map<std::string, std::string, std::less<>> identifiers)
        : identifiers_(std::move(identifiers))
    {
    }

    // Throws std::runtime_error with a clear message when the file cannot be read or is not an
    // object of texts.
    static ApplicationIdentifierTable load(const std::filesystem::path&);
    // Where the shipped table is: $VARDEL_SHARE_DIR, else share/vardel-tracker beside or above the
    // executable's folder.
    static std::optional<std::filesystem::path> shippedTablePath();

    // Entries of the preference (a dictionary of texts) win; other values are ignored.
    void addPreferenceEntries(const Value::Dictionary&);

    std::optional<std::string> identifierFor(std::string_view desktopEntryId) const;
    // Every desktop entry id that maps to the identifier.
    std::vector<std::string> desktopEntryIdsFor(std::string_view identifier) const;

private:
    std::map<std::string, std::string, std::less<>> identifiers_;
};

} // namespace vardel::linux_desktop
