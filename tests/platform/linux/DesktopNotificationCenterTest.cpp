// The notification centre against a session bus and a notification server of the test's own: what
// the server can show decides the permission, and a bus that restarts is followed.

#include "platform/linux/DesktopNotificationCenter.h"

#include "platform/JsonLinesTrace.h"
#include "platform/linux/StandardErrorLog.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <gio/gio.h>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace vardel::linux_desktop {

namespace {

using namespace std::chrono_literals;

pid_t spawn(std::vector<std::string> arguments)
{
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    pid_t pid = 0;
    int failed = posix_spawnp(&pid, argv[0], nullptr, &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    return failed ? -1 : pid;
}

void stop(pid_t pid)
{
    if (pid > 0 && killpg(pid, SIGKILL) == 0)
        waitpid(pid, nullptr, 0);
}

std::string readText(const std::filesystem::path& path)
{
    std::ifstream file(path);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// A session bus and a notification server that records what it is asked, both of the test's own.
class DesktopNotificationCenterTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (const char* previous = std::getenv("DBUS_SESSION_BUS_ADDRESS"))
            previousAddress_ = previous;
        setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1);
        startBus();
    }

    void TearDown() override
    {
        stop(server_);
        stop(bus_);
        if (previousAddress_.empty())
            unsetenv("DBUS_SESSION_BUS_ADDRESS");
        else
            setenv("DBUS_SESSION_BUS_ADDRESS", previousAddress_.c_str(), 1);
    }

    void startBus(const std::string& capabilities = "body actions")
    {
        std::filesystem::remove(socket_);
        bus_ = spawn({ "dbus-daemon", "--session", "--nofork", "--address=" + address_ });
        ASSERT_TRUE(testing::waitUntil([this] { return std::filesystem::exists(socket_); }, 10s));
        server_ = spawn({ "/usr/bin/python3", "-m", "dbusmock", "--template", "notification_daemon", "-p",
            R"({"capabilities": ")" + capabilities + R"("})", "-l", serverLog().string() });
        ASSERT_TRUE(testing::waitUntil(
            [] {
                return std::system("gdbus call --session -d org.freedesktop.Notifications -o "
                                   "/org/freedesktop/Notifications -m org.freedesktop.Notifications.GetCapabilities "
                                   ">/dev/null 2>&1")
                    == 0;
            },
            10s));
    }

    std::filesystem::path serverLog() { return folder_.path() / ("server-" + std::to_string(buses_) + ".log"); }

    testing::TemporaryFolder folder_;
    std::filesystem::path socket_ = folder_.path() / "bus";
    std::string address_ = "unix:path=" + socket_.string();
    std::string previousAddress_;
    pid_t bus_ = 0;
    pid_t server_ = 0;
    int buses_ = 0;
};

// The answer to a permission request, which comes on the GLib main context.
std::optional<bool> permissionOf(DesktopNotificationCenter& notifications)
{
    std::optional<bool> granted;
    notifications.requestPermission([&](bool answer) { granted = answer; });
    testing::waitUntil(
        [&] {
            while (g_main_context_iteration(nullptr, FALSE)) { }
            return granted.has_value();
        },
        10s, 10ms);
    return granted;
}

// A server that shows no buttons cannot offer the call's actions: that is a refusal, and the
// tracker opens the editor instead.
TEST_F(DesktopNotificationCenterTest, PermissionIsGrantedOnlyByAServerWithActions)
{
    JsonLinesTrace trace([] { return 0.0; });
    StandardErrorLog log(trace);
    DesktopNotificationCenter withActions(trace, log, std::nullopt);
    EXPECT_EQ(permissionOf(withActions), std::optional<bool>(true));

    stop(server_);
    stop(bus_);
    ++buses_;
    startBus("body");
    DesktopNotificationCenter withoutActions(trace, log, std::nullopt);
    EXPECT_EQ(permissionOf(withoutActions), std::optional<bool>(false));
}

TEST_F(DesktopNotificationCenterTest, NotificationsReachTheServerOfTheNewBus)
{
    JsonLinesTrace trace([] { return 0.0; });
    StandardErrorLog log(trace);
    DesktopNotificationCenter notifications(trace, log, std::nullopt);
    notifications.deliver({ "Before", "the restart", "category", false, {} });
    EXPECT_NE(readText(serverLog()).find("Before"), std::string::npos);

    stop(server_);
    stop(bus_);
    ++buses_;
    startBus();
    // The old connection closes as soon as the library notices; until then a notification is lost.
    EXPECT_TRUE(testing::waitUntil(
        [&] {
            notifications.deliver({ "After", "the restart", "category", false, {} });
            return readText(serverLog()).find("After") != std::string::npos;
        },
        10s, 200ms));
}

} // namespace

} // namespace vardel::linux_desktop
