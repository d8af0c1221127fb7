#include "platform/linux/ApplicationIdentity.h"

#include <gtest/gtest.h>

#include <map>
#include <unistd.h>

namespace vardel::linux_desktop {

namespace {

X11Window windowOfClass(const std::string& className)
{
    X11Window window;
    window.pid = ::getpid();
    window.instanceName = className;
    window.className = className;
    return window;
}

} // namespace

// This test program has no desktop entry, so its window's class names it.
TEST(ApplicationIdentityTest, AProcessIsIdentifiedOnceUntilTheDesktopEntriesChange)
{
    DesktopEntries entries;
    std::map<std::string, std::string, std::less<>> renamed { { "VardelRenamedClass", "org.example.Renamed" } };
    ApplicationIdentity identity(entries, ApplicationIdentifierTable(std::move(renamed)));
    X11Window first = windowOfClass("VardelFirstClass");
    X11Window second = windowOfClass("VardelRenamedClass");

    EXPECT_EQ(identity.identify(::getpid(), &first).bundleIdentifier, "VardelFirstClass");
    // Remembered: a later window of the same process does not make it another application.
    EXPECT_EQ(identity.identify(::getpid(), &second).bundleIdentifier, "VardelFirstClass");
    EXPECT_EQ(identity.identify(::getpid(), &second).executablePath, ApplicationIdentity::executableOf(::getpid()));

    identity.desktopEntriesChanged();
    EXPECT_EQ(identity.identify(::getpid(), &second).bundleIdentifier, "org.example.Renamed");
}

} // namespace vardel::linux_desktop
