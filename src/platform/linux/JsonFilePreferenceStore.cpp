#include "platform/linux/JsonFilePreferenceStore.h"

#include "platform/ValueJson.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace vardel {

namespace {

using nlohmann::json;

constexpr std::array typeTags = { "date", "url", "point", "size", "rect", "range", "ref", "error" };

bool isTypeTag(std::string_view key)
{
    for (const char* tag : typeTags) {
        if (key == tag)
            return true;
    }
    return false;
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

struct UnreadableValue : std::runtime_error {
    using std::runtime_error::runtime_error;
};

Value decode(const json& encoded, int depth);

double numberAt(const json& array, size_t index)
{
    if (!array.is_array() || index >= array.size() || !array[index].is_number())
        throw UnreadableValue("malformed geometry value");
    return array[index].get<double>();
}

void requireCount(const json& array, size_t count)
{
    if (!array.is_array() || array.size() != count)
        throw UnreadableValue("a geometry value needs " + std::to_string(count) + " numbers");
}

int64_t integerAt(const json& array, size_t index)
{
    if (!array[index].is_number_integer())
        throw UnreadableValue("a range needs whole numbers");
    return array[index].get<int64_t>();
}

Value decodeTyped(const std::string& tag, const json& content)
{
    if (tag == "date") {
        auto date = content.is_string() ? ValueJson::parseIso8601(content.get<std::string>()) : std::nullopt;
        if (!date)
            throw UnreadableValue("malformed date");
        return *date;
    }
    if (tag == "url") {
        if (!content.is_string())
            throw UnreadableValue("malformed URL");
        return Url { content.get<std::string>() };
    }
    if (tag == "point") {
        requireCount(content, 2);
        return Point { numberAt(content, 0), numberAt(content, 1) };
    }
    if (tag == "size") {
        requireCount(content, 2);
        return Size { numberAt(content, 0), numberAt(content, 1) };
    }
    if (tag == "rect") {
        requireCount(content, 4);
        return Rect { { numberAt(content, 0), numberAt(content, 1) }, { numberAt(content, 2), numberAt(content, 3) } };
    }
    if (tag == "range") {
        requireCount(content, 2);
        return Range { integerAt(content, 0), integerAt(content, 1) };
    }
    throw UnreadableValue("\"" + tag + "\" values cannot be stored");
}

Value decodeNumber(const json& encoded)
{
    if (encoded.is_number_unsigned()) {
        auto unsignedValue = encoded.get<uint64_t>();
        if (unsignedValue > static_cast<uint64_t>(std::numeric_limits<int64_t>::max()))
            throw UnreadableValue("an integer beyond the 64-bit range");
        return static_cast<int64_t>(unsignedValue);
    }
    if (encoded.is_number_integer())
        return encoded.get<int64_t>();
    return encoded.get<double>();
}

Value::Dictionary decodeMembers(const json& object, int depth)
{
    Value::Dictionary members;
    for (const auto& [key, member] : object.items()) {
        // A member set to null by hand is simply absent.
        if (!member.is_null())
            members.emplace(key, decode(member, depth + 1));
    }
    return members;
}

Value decode(const json& encoded, int depth)
{
    if (depth > JsonFilePreferenceStore::maximumNesting)
        throw UnreadableValue("values nested too deeply");
    switch (encoded.type()) {
    case json::value_t::string:
        return encoded.get<std::string>();
    case json::value_t::boolean:
        return encoded.get<bool>();
    case json::value_t::number_integer:
    case json::value_t::number_unsigned:
    case json::value_t::number_float:
        return decodeNumber(encoded);
    case json::value_t::array: {
        Value::List members;
        for (const json& member : encoded) {
            if (member.is_null())
                throw UnreadableValue("null in a list");
            members.push_back(decode(member, depth + 1));
        }
        return members;
    }
    case json::value_t::object:
        if (encoded.size() == 1 && isTypeTag(encoded.begin().key()))
            return decodeTyped(encoded.begin().key(), encoded.begin().value());
        return decodeMembers(encoded, depth);
    default:
        throw UnreadableValue("a value of an unknown kind");
    }
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
    json parsed = json::parse(contents, nullptr, false);
    if (parsed.is_discarded())
        return setAside("it is not valid JSON");
    if (!parsed.is_object())
        return setAside("it does not hold an object");
    try {
        values_ = decodeMembers(parsed, 1);
    } catch (const UnreadableValue& unreadable) {
        values_.clear();
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
    if (auto reason = replaceAtomically(file_, document.dump(2) + "\n"))
        log_.warning("The preferences cannot be written to " + file_.string() + ": " + *reason + ".");
}

} // namespace vardel
