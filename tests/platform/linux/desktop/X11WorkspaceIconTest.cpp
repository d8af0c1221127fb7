// Icons of installed applications on the live headless desktop, whose home folder is a scratch one:
// the bundle says where the theme keeps the icon, and the icon dump copies it from there.

#include "diagnostics/AccessibilityDumper.h"
#include "platform/Platform.h"
#include "platform/linux/desktop/LiveLinuxDesktop.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace vardel::testing {

namespace {

namespace fs = std::filesystem;

fs::path home()
{
    return liveLinuxDesktop().desktop.scratchFolder() / "home";
}

fs::path themeFolder(const std::string& size)
{
    return home() / ".local/share/icons/hicolor" / size / "apps";
}

void writeFile(const fs::path& path, const std::string& content)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

std::string readFile(const fs::path& path)
{
    std::stringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

std::optional<std::string> iconFileOf(const ApplicationBundle& bundle)
{
    auto entry = bundle.info.find("CFBundleIconFile");
    if (entry == bundle.info.end() || !entry->second.asText())
        return std::nullopt;
    return *entry->second.asText();
}

// The contract application's entry names its icon "vardel-contract"; the largest bitmap wins over
// smaller ones and over the scalable one.
void installContractIcons()
{
    writeFile(themeFolder("48x48") / "vardel-contract.png", "small");
    writeFile(themeFolder("256x256") / "vardel-contract.png", "large");
    writeFile(themeFolder("scalable") / "vardel-contract.svg", "<svg/>");
}

// The documents folder is the scratch home's, whatever the session's configuration folder says.
class ScratchConfigurationFolder {
public:
    ScratchConfigurationFolder()
    {
        if (const char* value = std::getenv(name))
            saved_ = value;
        ::setenv(name, (home() / ".config").c_str(), 1);
    }
    ~ScratchConfigurationFolder()
    {
        if (saved_)
            ::setenv(name, saved_->c_str(), 1);
        else
            ::unsetenv(name);
    }

private:
    static constexpr const char* name = "XDG_CONFIG_HOME";
    std::optional<std::string> saved_;
};

TEST(X11WorkspaceIconTest, TheBundleKeepsItsIconInTheThemeFolderThatHoldsIt)
{
    auto& live = liveLinuxDesktop();
    installContractIcons();
    auto bundle = live.platform->workspace().applicationBundle(LiveLinuxDesktop::contractBundleIdentifier);
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->resourcesPath, themeFolder("256x256").string());
    EXPECT_EQ(iconFileOf(*bundle), "vardel-contract.png");
    EXPECT_EQ(bundle->iconExtension, ".png");

    // An absolute Icon is used as it is, in its own format.
    fs::path elsewhere = live.desktop.scratchFolder() / "elsewhere";
    writeFile(elsewhere / "art" / "tool.svg", "<svg/>");
    writeFile(elsewhere / "tool.desktop",
        "[Desktop Entry]\nType=Application\nName=Tool\nExec=/bin/true\nIcon=" + (elsewhere / "art/tool.svg").string()
            + "\n");
    auto tool = live.platform->workspace().applicationBundleAtPath((elsewhere / "tool.desktop").string());
    ASSERT_TRUE(tool);
    EXPECT_EQ(tool->resourcesPath, (elsewhere / "art").string());
    EXPECT_EQ(iconFileOf(*tool), "tool.svg");
    EXPECT_EQ(tool->iconExtension, ".svg");

    // A theme name given with its extension still finds the theme's icon.
    writeFile(themeFolder("64x64") / "named-tool.png", "named");
    writeFile(elsewhere / "named.desktop",
        "[Desktop Entry]\nType=Application\nName=Named\nExec=/bin/true\nIcon=named-tool.png\n");
    auto named = live.platform->workspace().applicationBundleAtPath((elsewhere / "named.desktop").string());
    ASSERT_TRUE(named);
    EXPECT_EQ(named->resourcesPath, themeFolder("64x64").string());
    EXPECT_EQ(iconFileOf(*named), "named-tool.png");
}

TEST(X11WorkspaceIconTest, TheIconDumpCopiesTheThemeIconUnderItsOwnExtension)
{
    auto& live = liveLinuxDesktop();
    installContractIcons();
    ScratchConfigurationFolder configuration;
    fs::path target = home() / "Documents/Vardel/AppIcons/com.example.Contract Contract Application.png";
    fs::remove(target);
    Platform::install(live.platform.get());
    bool copied = AccessibilityDumper::dumpIconForApplicationWithPossibleBundleIdentifier(
        LiveLinuxDesktop::contractBundleIdentifier);
    Platform::install(nullptr);

    EXPECT_TRUE(copied);
    EXPECT_EQ(readFile(target), "large");
}

} // namespace

} // namespace vardel::testing
