// A scripting request of any bytes: it is answered with one line that starts "ok: " or "error: ",
// and only a well-formed request pauses or resumes.

#include "platform/linux/ScriptingCommandServer.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>
#include <unistd.h>

namespace {

std::unique_ptr<vardel::ScriptingCommandServer> server;

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    auto folder = std::filesystem::temp_directory_path() / ("vardel-fuzz-" + std::to_string(::getpid()));
    server = std::make_unique<vardel::ScriptingCommandServer>(
        folder / "tracker.sock", [](double) {}, [] {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string answer = server->answer(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!answer.starts_with("ok: ") && !answer.starts_with("error: "))
        std::abort();
    return 0;
}
