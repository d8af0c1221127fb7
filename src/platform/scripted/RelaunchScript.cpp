#include "platform/scripted/RelaunchScript.h"

#include "platform/RegularExpression.h"

#include <charconv>

namespace vardel::scripted {

namespace {

// Group 1 is the delay, 2 the process identifier, 3 the bundle path as quoted: characters other
// than the ones the shell expands inside double quotes, or backslash escapes.
const RegularExpression& relaunchScriptForm()
{
    static const RegularExpression form = RegularExpression::literal(
        R"re(\A/bin/sleep (\d{1,18}); /bin/kill -0 (\d{1,10}) >&/dev/null && /bin/kill \2; )re"
        R"re(\(for i in \{1\.\.\1\}; do /bin/sleep 1; /bin/kill -0 \2 >&/dev/null \|\| break; done; )re"
        R"re(/bin/kill -0 \2 >&/dev/null && /bin/kill -9 \2 && /bin/sleep \1; )re"
        R"re(/usr/bin/open "((?:[^"$`\\]|\\.)*)"\) &\z)re",
        RegularExpression::dotMatchesLineSeparators);
    return form;
}

template<typename Number> std::optional<Number> decimal(const std::string& text)
{
    Number number {};
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc {} || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

// Inside double quotes the shell drops a backslash before \ " $ ` and removes a backslash-newline;
// any other backslash stays.
std::string unquoted(const std::string& quoted)
{
    std::string text;
    for (size_t index = 0; index < quoted.size(); ++index) {
        char character = quoted[index];
        if (character == '\\' && index + 1 < quoted.size()) {
            char next = quoted[index + 1];
            if (next == '\n') {
                ++index;
                continue;
            }
            if (next == '\\' || next == '"' || next == '$' || next == '`') {
                text += next;
                ++index;
                continue;
            }
        }
        text += character;
    }
    return text;
}

} // namespace

std::optional<RelaunchScript> RelaunchScript::recognize(
    const std::string& path, const std::vector<std::string>& arguments, ProcessIdentifier trackerPid)
{
    if (path != "/bin/sh" || arguments.size() != 2 || arguments[0] != "-c")
        return std::nullopt;
    auto groups = relaunchScriptForm().firstMatch(arguments[1]);
    if (!groups)
        return std::nullopt;
    auto delay = decimal<int64_t>(*(*groups)[1]);
    auto pid = decimal<ProcessIdentifier>(*(*groups)[2]);
    if (!delay || pid != trackerPid)
        return std::nullopt;
    return RelaunchScript { *delay, unquoted(*(*groups)[3]) };
}

} // namespace vardel::scripted
