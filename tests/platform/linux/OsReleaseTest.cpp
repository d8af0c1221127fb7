// The distribution's name from os-release, for the system line of dumps and support requests.

#include "platform/linux/OsRelease.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace vardel::linux_desktop {

namespace {

TEST(OsReleaseTest, PrettyNameLosesItsShellQuoting)
{
    EXPECT_EQ(OsRelease::prettyName("NAME=\"Debian GNU/Linux\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"),
        "Debian GNU/Linux 12 (bookworm)");
    EXPECT_EQ(OsRelease::prettyName("PRETTY_NAME='Single $quoted'"), "Single $quoted");
    EXPECT_EQ(OsRelease::prettyName("PRETTY_NAME=\"Say \\\"hi\\\" for \\$5 \\n\""), "Say \"hi\" for $5 \\n");
    EXPECT_EQ(OsRelease::prettyName("PRETTY_NAME=Plain\\ words"), "Plain words");
    EXPECT_EQ(OsRelease::prettyName("NAME=Only a name\n#PRETTY_NAME=commented"), std::nullopt);
    EXPECT_EQ(OsRelease::prettyName("PRETTY_NAME=\"\""), std::nullopt);
}

TEST(OsReleaseTest, SystemLineNamesDistributionAndKernel)
{
    vardel::testing::TemporaryFolder folder;
    std::ofstream(folder.path() / "fallback") << "PRETTY_NAME=\"Fallback Linux 1\"\n";
    std::string line = OsRelease::systemLine(folder.path() / "missing", folder.path() / "fallback");
    EXPECT_TRUE(line.starts_with("Linux Distribution: Fallback Linux 1, Kernel: Linux ")) << line;
    std::ofstream(folder.path() / "primary") << "PRETTY_NAME=\"Primary 2\"\n";
    EXPECT_TRUE(OsRelease::systemLine(folder.path() / "primary", folder.path() / "fallback")
                    .starts_with("Linux Distribution: Primary 2, Kernel: "));
    EXPECT_TRUE(OsRelease::systemLine(folder.path() / "missing", folder.path() / "missing")
                    .starts_with("Linux Distribution: (unknown), Kernel: "));
}

} // namespace

} // namespace vardel::linux_desktop
