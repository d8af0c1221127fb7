#pragma once

#include <filesystem>
#include <string>

namespace vardel {

// Sends one scripting command to the running tracker over its local socket (see
// ScriptingCommandServer) and reads the one-line answer.
class ScriptingCommandClient {
public:
    struct Outcome {
        enum class Status {
            // The tracker answered (its answer may still be an error).
            answered,
            // Nothing listens on the socket: no tracker runs.
            noTracker,
            // The socket could not be used, or the tracker did not answer in time.
            failed,
        };
        Status status;
        // The answer, or what went wrong.
        std::string text;
    };

    static constexpr int answerTimeoutMilliseconds = 5000;

    static Outcome send(const std::filesystem::path& socketPath, const std::string& request);
};

} // namespace vardel
