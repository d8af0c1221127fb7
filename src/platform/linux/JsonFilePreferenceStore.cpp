#include "platform/linux/JsonFilePreferenceStore.h"

#include "platform/JsonText.h"
#include "platform/JsonValueError.h"
#include "platform/ValueDecoder.h"
#include "platform/ValueJson.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <system_error>
#include <unistd.h>

namespace vardel {

namespace {

// Keys that scenarios and traces give a meaning (element references, error codes). A file never
// holds them, so that its values read the same wherever they are copied.
constexpr std::array otherTags = { "ref", "error" };

bool isTypeTag(std::string_view key)
{
    return ValueDecoder::isTypeTag(key) || std::find(otherTags.begin(), otherTags.end(), key) != otherTags.end();
}

std::optional<Value> refuseOtherTags(const JsonCursor& object, const std::string& key, const JsonCursor&)
{
    if (isTypeTag(key))
        object.fail("\"" + key + "\" values cannot be stored");
    return std::nullopt;
}

// Why the value cannot be written so that it reads back the same; nothing when it can.
std::optional<std::string> whyNotStorable(const Value& value)
{
    switch (value.kind()) {
    case Value::Kind::Element:
        return "an accessibility element means nothing outside this process";
    case Value::Kind::Real:
        if (!std::isfinite(*value.asNumber()))
            return "a number that is not finite has no JSON form";
        return std::nullopt;
    case Value::Kind::Date:
        if (!std::isfinite(value.asDate()->secondsSince1970))
            return "a date that is not finite has no JSON form";
        return std::nullopt;
    case Value::Kind::List:
        for (const Value& member : *value.asList()) {
            if (auto reason = whyNotStorable(member))
                return reason;
        }
        return std::nullopt;
    case Value::Kind::Dictionary: {
        const Value::Dictionary& members = *value.asDictionary();
        if (members.size() == 1 && isTypeTag(members.begin()->first))
            return "a dictionary whose only key is \"" + members.begin()->first + "\" would read back as another type";
        for (const auto& [key, member] : members) {
            if (auto reason = whyNotStorable(member))
                return reason;
        }
        return std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

// The shortest ISO 8601 text, at least to the millisecond, that reads back as exactly this date.
std::string encodeDate(Date date)
{
    std::string text = ValueJson::formatIso8601(date);
    if (ValueJson::parseIso8601(text) == date)
        return text;
    double whole = std::floor(date.secondsSince1970);
    std::string wholeText = ValueJson::formatIso8601(Date { whole });
    wholeText.pop_back();
    for (int digits = 4; digits <= 17; ++digits) {
        char fraction[32];
        std::snprintf(fraction, sizeof fraction, "%.*f", digits, date.secondsSince1970 - whole);
        if (fraction[0] != '0')
            break;
        text = wholeText + (fraction + 1) + "Z";
        if (ValueJson::parseIso8601(text) == date)
            return text;
    }
    return text;
}

std::optional<std::string> readWholeFile(const std::filesystem::path& file, std::string& contents)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        return "it cannot be opened";
    contents.assign(std::istreambuf_iterator<char>(stream), {});
    if (stream.bad())
        return "it cannot be read";
    return std::nullopt;
}

// Writes the text to a new file beside the target, flushed to disk, then renames it over the
// target: readers see the old file or the new one, never a mix.
std::optional<std::string> replaceAtomically(const std::filesystem::path& file, const std::string& text)
{
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    if (error)
        return "the folder cannot be created: " + error.message();
    std::string temporary = file.string() + ".XXXXXX";
    int descriptor = mkstemp(temporary.data());
    if (descriptor < 0)
        return "a temporary file cannot be created: " + std::generic_category().message(errno);
    size_t written = 0;
    while (written < text.size()) {
        ssize_t count = ::write(descriptor, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        written += static_cast<size_t>(count);
    }
    bool complete = written == text.size() && ::fsync(descriptor) == 0;
    int savedErrno = errno;
    ::close(descriptor);
    if (!complete || std::rename(temporary.c_str(), file.c_str()) != 0) {
        std::string reason = std::generic_category().message(complete ? errno : savedErrno);
        ::unlink(temporary.c_str());
        return reason;
    }
    return std::nullopt;
}

std::optional<std::filesystem::path> variable(
    const JsonFilePreferenceStore::EnvironmentLookup& environment, const char* name)
{
    const char* value = environment(name);
    if (!value || !*value)
        return std::nullopt;
    return std::filesystem::path(value);
}

} // namespace

std::optional<std::filesystem::path> JsonFilePreferenceStore::configurationFolder(const EnvironmentLookup& environment)
{
    // The base-directory rules treat a relative XDG_CONFIG_HOME as invalid, so it is ignored.
    if (auto configHome = variable(environment, "XDG_CONFIG_HOME"); configHome && configHome->is_absolute())
        return *configHome / "vardel";
    if (auto home = variable(environment, "HOME"))
        return *home / ".config" / "vardel";
    return std::nullopt;
}

JsonFilePreferenceStore::JsonFilePreferenceStore(std::filesystem::path file, Log& log)
    : file_(std::move(file))
    , log_(log)
{
    load();
}

void JsonFilePreferenceStore::load()
{
    std::error_code error;
    if (!std::filesystem::exists(file_, error))
        return;
    std::string contents;
    if (auto reason = readWholeFile(file_, contents)) {
        log_.warning("The preferences in " + file_.string() + " cannot be read (" + *reason + "); using the defaults.");
        return;
    }
    auto parsed = JsonCursor::Json::parse(contents, nullptr, false);
    if (parsed.is_discarded())
        return setAside("it is not valid JSON");
    if (!parsed.is_object())
        return setAside("it does not hold an object");
    try {
        values_ = ValueDecoder(refuseOtherTags).decodeDictionary(JsonCursor(parsed, JsonPath()));
    } catch (const JsonValueError& unreadable) {
        setAside(unreadable.what());
    }
}

void JsonFilePreferenceStore::setAside(const std::string& reason)
{
    std::filesystem::path corrupt = file_;
    corrupt += ".corrupt";
    std::error_code error;
    std::filesystem::rename(file_, corrupt, error);
    std::string kept = error ? "it could not be kept aside: " + error.message() : "it is kept as " + corrupt.string();
    log_.warning(
        "The preferences in " + file_.string() + " are damaged (" + reason + "); " + kept + "; using the defaults.");
}

std::optional<Value> JsonFilePreferenceStore::object(std::string_view key) const
{
    auto found = values_.find(key);
    if (found == values_.end())
        return std::nullopt;
    return found->second;
}

void JsonFilePreferenceStore::setObject(std::string_view key, std::optional<Value> value)
{
    if (value) {
        if (auto reason = whyNotStorable(*value)) {
            log_.warning("The preference \"" + std::string(key) + "\" is not stored: " + *reason + ".");
            return;
        }
        values_.insert_or_assign(std::string(key), std::move(*value));
    } else if (auto found = values_.find(key); found != values_.end()) {
        values_.erase(found);
    } else {
        return;
    }
    write();
}

void JsonFilePreferenceStore::synchronize()
{
    write();
}

void JsonFilePreferenceStore::write()
{
    // Elements were refused before they got here; dates are written to read back exactly.
    nlohmann::ordered_json document = nlohmann::ordered_json::object();
    for (const auto& [key, value] : values_)
        document[key] = ValueJson::encode(value, encodeDate);
    if (auto reason = replaceAtomically(file_, jsonText(document, 2) + "\n"))
        log_.warning("The preferences cannot be written to " + file_.string() + ": " + *reason + ".");
}

} // namespace vardel
