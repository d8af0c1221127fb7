#include "platform/OwnerOnlyFiles.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>

namespace vardel {
namespace {

namespace fs = std::filesystem;
using testing::TemporaryFolder;

unsigned modeOf(const fs::path& path)
{
    struct stat status { };
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

void makeFile(const fs::path& path, unsigned mode)
{
    std::ofstream(path) << "x";
    ::chmod(path.c_str(), mode);
}

// Restores the test process's umask, whatever the test set.
class UmaskGuard {
public:
    UmaskGuard()
        : saved_(::umask(0))
    {
        ::umask(saved_);
    }
    ~UmaskGuard() { ::umask(saved_); }

private:
    mode_t saved_;
};

TEST(OwnerOnlyFilesTest, TightenTakesOthersPermissionsFromEverythingBelowButNotThroughLinks)
{
    TemporaryFolder temporary;
    fs::path folder = temporary.path() / "data";
    fs::path outside = temporary.path() / "outside.txt";
    fs::create_directories(folder / "backups");
    ::chmod(folder.c_str(), 0755);
    ::chmod((folder / "backups").c_str(), 0750);
    makeFile(folder / "store.sqlite3", 0644);
    makeFile(folder / "backups" / "old.sqlite3", 0640);
    makeFile(folder / "private.txt", 0600);
    makeFile(folder / "script.sh", 0755);
    makeFile(outside, 0644);
    fs::create_symlink(outside, folder / "link");

    EXPECT_EQ(OwnerOnlyFiles::tighten(folder), 5u);

    EXPECT_EQ(modeOf(folder), 0700u);
    EXPECT_EQ(modeOf(folder / "backups"), 0700u);
    EXPECT_EQ(modeOf(folder / "store.sqlite3"), 0600u);
    EXPECT_EQ(modeOf(folder / "backups" / "old.sqlite3"), 0600u);
    EXPECT_EQ(modeOf(folder / "private.txt"), 0600u);
    EXPECT_EQ(modeOf(folder / "script.sh"), 0700u);
    EXPECT_EQ(modeOf(outside), 0644u);

    EXPECT_EQ(OwnerOnlyFiles::tighten(folder), 0u);
    EXPECT_EQ(OwnerOnlyFiles::tighten(temporary.path() / "missing"), 0u);
}

TEST(OwnerOnlyFilesTest, AfterRestrictingNewFilesTheyAreTheOwnersAlone)
{
    UmaskGuard restoresUmask;
    ::umask(022);
    TemporaryFolder temporary;
    OwnerOnlyFiles::restrictNewFiles();

    fs::create_directories(temporary.path() / "new" / "nested");
    std::ofstream(temporary.path() / "new" / "file.txt") << "x";

    EXPECT_EQ(modeOf(temporary.path() / "new"), 0700u);
    EXPECT_EQ(modeOf(temporary.path() / "new" / "nested"), 0700u);
    EXPECT_EQ(modeOf(temporary.path() / "new" / "file.txt"), 0600u);
}

} // namespace
} // namespace vardel
