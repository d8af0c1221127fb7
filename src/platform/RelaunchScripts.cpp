#include "platform/RelaunchScripts.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vardel::RelaunchScripts {

namespace {

// Longer than any sensible wait, and small enough for every shell's arithmetic.
constexpr double longestDelaySeconds = 1e9;

int64_t wholeSeconds(double delay)
{
    if (!(delay > 0))
        return 0;
    return static_cast<int64_t>(std::trunc(std::min(delay, longestDelaySeconds)));
}

// Inside double quotes the shell still expands $ and `, and gives \ and " their meaning; a backslash
// before each makes it literal. Everything else, newlines included, stands for itself there.
std::string escapedForDoubleQuotes(std::string_view text)
{
    std::string escaped;
    for (char character : text) {
        if (character == '\\' || character == '"' || character == '$' || character == '`')
            escaped += '\\';
        escaped += character;
    }
    return escaped;
}

// Inside single quotes nothing is special but the closing quote, which is ended, escaped and reopened.
std::string singleQuoted(std::string_view text)
{
    std::string quoted = "'";
    for (char character : text) {
        if (character == '\'')
            quoted += "'\\''";
        else
            quoted += character;
    }
    return quoted + "'";
}

} // namespace

std::string reopeningBundle(double delay, ProcessIdentifier processIdentifier, std::string_view bundlePath)
{
    std::string seconds = std::to_string(wholeSeconds(delay));
    std::string pid = std::to_string(processIdentifier);
    return "/bin/sleep " + seconds + "; /bin/kill -0 " + pid + " >&/dev/null && /bin/kill " + pid + "; (for i in {1.."
        + seconds + "}; do /bin/sleep 1; /bin/kill -0 " + pid + " >&/dev/null || break; done; /bin/kill -0 " + pid
        + " >&/dev/null && /bin/kill -9 " + pid + " && /bin/sleep " + seconds + "; /usr/bin/open \""
        + escapedForDoubleQuotes(bundlePath) + "\") &";
}

std::string startingExecutable(double delay, ProcessIdentifier processIdentifier, std::string_view executablePath)
{
    std::string seconds = std::to_string(wholeSeconds(delay));
    std::string pid = std::to_string(processIdentifier);
    std::string alive = "kill -0 " + pid + " 2>/dev/null";
    return "sleep " + seconds + "; " + alive + " && kill " + pid + "; i=0; while [ \"$i\" -lt " + seconds
        + " ]; do sleep 1; " + alive + " || break; i=$((i + 1)); done; " + alive + " && kill -9 " + pid + " && sleep "
        + seconds + "; exec " + singleQuoted(executablePath);
}

} // namespace vardel::RelaunchScripts
