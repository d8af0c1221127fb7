#pragma once

#include "platform/Log.h"
#include "platform/PreferenceStore.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vardel {

// A preference store kept in a JSON file: one object of key → value in the encoding of scenario
// files and traces ({"date": "…"}, {"url": "…"}, {"point": […]} and so on). Every change is
// written at once, to a temporary file that then replaces the old one, so that a crash never
// leaves half a file. A file that cannot be read as preferences (one bad or too deeply nested value
// is enough) is kept aside as FILE.corrupt and the store starts from its defaults (empty), with one
// warning that names the path of the first problem.
class JsonFilePreferenceStore final : public PreferenceStore {
public:
    static constexpr const char* standardUserDefaultsFileName = "defaults.json";
    static constexpr const char* productPreferencesFileName = "preferences.json";

    using EnvironmentLookup = std::function<const char*(const char* name)>;

    // $XDG_CONFIG_HOME/vardel when that is an absolute path, else ~/.config/vardel; nothing
    // without HOME.
    static std::optional<std::filesystem::path> configurationFolder(const EnvironmentLookup&);

    // Reads the file when it exists; the folder is created with the first write.
    JsonFilePreferenceStore(std::filesystem::path file, Log& log);

    std::optional<Value> object(std::string_view key) const override;
    // A value that the file cannot hold faithfully (an accessibility element, a number that is
    // not finite, a dictionary whose only key names a value type) is refused with a warning and
    // the stored value stays.
    void setObject(std::string_view key, std::optional<Value> value) override;
    // Writes again what the store holds (every change is already written).
    void synchronize() override;

    const std::filesystem::path& file() const { return file_; }

private:
    void load();
    void setAside(const std::string& reason);
    void write();

    std::filesystem::path file_;
    Log& log_;
    Value::Dictionary values_;
};

} // namespace vardel
