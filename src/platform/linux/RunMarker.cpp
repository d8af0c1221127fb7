#include "platform/linux/RunMarker.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <fstream>
#include <string>
#include <unistd.h>

namespace vardel::linux_desktop {

namespace {

std::optional<pid_t> markedProcess(const std::filesystem::path& file)
{
    std::ifstream input(file);
    std::string text;
    if (!std::getline(input, text))
        return std::nullopt;
    pid_t pid = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), pid);
    if (error != std::errc {} || end != text.data() + text.size() || pid <= 0)
        return std::nullopt;
    return pid;
}

bool isRunning(pid_t pid)
{
    return ::kill(pid, 0) == 0 || errno == EPERM;
}

} // namespace

std::optional<std::filesystem::path> RunMarker::defaultPath(const EnvironmentLookup& environment)
{
    const char* runtime = environment("XDG_RUNTIME_DIR");
    if (!runtime || runtime[0] != '/')
        return std::nullopt;
    return std::filesystem::path(runtime) / "vardel" / "tracker.running";
}

RunMarker::RunMarker(std::filesystem::path file)
    : file_(std::move(file))
{
    auto previous = markedProcess(file_);
    previousRunCrashed_ = previous && *previous != ::getpid() && !isRunning(*previous);
    std::error_code error;
    std::filesystem::create_directories(file_.parent_path(), error);
    std::ofstream(file_, std::ios::out | std::ios::trunc) << ::getpid() << '\n';
}

RunMarker::~RunMarker()
{
    // Another tracker that started meanwhile keeps its own mark.
    if (markedProcess(file_) == ::getpid()) {
        std::error_code error;
        std::filesystem::remove(file_, error);
    }
}

} // namespace vardel::linux_desktop
