#pragma once

#include "platform/linux/FileDescriptor.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>

namespace vardel::linux_desktop {

// A running vardel-dialog, the program that shows the tracker's windows: it has its request on
// standard input and answers one JSON line on standard output before it ends.
class DialogProcess {
public:
    static constexpr const char* programName = "vardel-dialog";

    // The program installed beside the tracker's executable, when it is there and executable.
    static std::optional<std::string> programBeside(const std::string& executablePath);
    // mode: "alert" or "editor". Nothing when the program cannot be started.
    static std::unique_ptr<DialogProcess> start(
        const std::string& program, const std::string& mode, const nlohmann::json& request);
    // A window still open is closed (SIGTERM); the process is reaped.
    ~DialogProcess();
    DialogProcess(const DialogProcess&) = delete;
    DialogProcess& operator=(const DialogProcess&) = delete;

    // The descriptor of the program's standard output, for a run loop to watch.
    int output() const { return output_.get(); }
    // Reads what has arrived without waiting; true once the program has closed its output.
    bool readAvailable();
    // Waits until the program closes its output.
    void readToEnd();
    // The first line of the output, parsed; nothing when it is not JSON.
    std::optional<nlohmann::json> answer() const;

private:
    DialogProcess(pid_t pid, FileDescriptor output);

    pid_t pid_;
    FileDescriptor output_;
    std::string received_;
    bool ended_ = false;
};

} // namespace vardel::linux_desktop
