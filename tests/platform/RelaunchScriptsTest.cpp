// The relaunch script that starts an executable, run by Debian's /bin/sh (dash) in real time.

#include "platform/RelaunchScripts.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <optional>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace vardel::testing {

namespace {

using Clock = std::chrono::steady_clock;
constexpr double timeoutSeconds = 20;

pid_t spawn(std::vector<std::string> arguments)
{
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    pid_t child = 0;
    if (posix_spawn(&child, argv[0], nullptr, nullptr, argv.data(), environ) != 0)
        throw std::runtime_error("cannot start " + arguments[0]);
    return child;
}

// A process for the script to end, and an executable at a path full of what shells expand that
// records the path it was started as.
class ExecutableRelaunch {
public:
    ExecutableRelaunch(const std::filesystem::path& folder, const std::string& name, bool targetIgnoresTerminate)
        : recorded_(folder / (name + ".started"))
    {
        auto installed = folder / (name + " Vardel's \"Tracker\" $HOME ${PATH} $(id) `id` back\\slash\nline");
        std::filesystem::create_directories(installed);
        executable_ = (installed / "vardel-tracker").string();
        std::ofstream(executable_) << "#!/bin/sh\nprintf '%s' \"$0\" > '" << recorded_.string() << ".part' && mv '"
                                   << recorded_.string() << ".part' '" << recorded_.string() << "'\n";
        std::filesystem::permissions(executable_, std::filesystem::perms::owner_all);
        target_
            = spawn({ "/bin/dash", "-c", targetIgnoresTerminate ? "trap '' TERM; exec sleep 30" : "exec sleep 30" });
    }

    ~ExecutableRelaunch()
    {
        if (target_ > 0) {
            kill(target_, SIGKILL);
            waitpid(target_, nullptr, 0);
        }
        if (shell_ > 0)
            waitpid(shell_, nullptr, 0);
    }

    void start(double delay)
    {
        started_ = Clock::now();
        shell_ = spawn({ "/bin/dash", "-c", RelaunchScripts::startingExecutable(delay, target_, executable_) });
    }

    // The signal that ended the target, and when; the target is reaped at once so that the script
    // sees it gone.
    std::pair<int, double> targetEnd()
    {
        int status = 0;
        while (waitpid(target_, &status, WNOHANG) == 0 && secondsSinceStart() < timeoutSeconds)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        target_ = 0;
        return { WIFSIGNALED(status) ? WTERMSIG(status) : 0, secondsSinceStart() };
    }

    // The path the executable was started as, and when.
    std::pair<std::optional<std::string>, double> started() const
    {
        while (!std::filesystem::exists(recorded_) && secondsSinceStart() < timeoutSeconds)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        double startedAt = secondsSinceStart();
        if (!std::filesystem::exists(recorded_))
            return { std::nullopt, startedAt };
        std::ifstream file(recorded_, std::ios::binary);
        return { std::string(std::istreambuf_iterator<char>(file), {}), startedAt };
    }

    const std::string& executable() const { return executable_; }

private:
    double secondsSinceStart() const { return std::chrono::duration<double>(Clock::now() - started_).count(); }

    std::filesystem::path recorded_;
    std::string executable_;
    pid_t target_ = 0;
    pid_t shell_ = 0;
    Clock::time_point started_;
};

// Both runs go at once to keep the test short: the script waits its delay, signals, waits one-second
// rounds for the process to go, kills it if it stayed and waits the delay again, then starts the
// executable by its literal path.
TEST(RelaunchScriptsTest, DashEndsTheProcessAndStartsTheExecutableByItsLiteralPath)
{
    TemporaryFolder folder;
    ExecutableRelaunch polite(folder.path(), "polite", false);
    ExecutableRelaunch stubborn(folder.path(), "stubborn", true);
    polite.start(1);
    stubborn.start(1);

    auto [politeSignal, politeEnd] = polite.targetEnd();
    EXPECT_EQ(politeSignal, SIGTERM);
    EXPECT_GE(politeEnd, 1);
    auto [politePath, politeStarted] = polite.started();
    EXPECT_EQ(politePath, polite.executable());
    EXPECT_GE(politeStarted, 2);

    auto [stubbornSignal, stubbornEnd] = stubborn.targetEnd();
    EXPECT_EQ(stubbornSignal, SIGKILL);
    EXPECT_GE(stubbornEnd, 2);
    auto [stubbornPath, stubbornStarted] = stubborn.started();
    EXPECT_EQ(stubbornPath, stubborn.executable());
    EXPECT_GE(stubbornStarted, 3);
}

} // namespace

} // namespace vardel::testing
