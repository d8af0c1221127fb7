// The X11 side of the backend on the live headless desktop.

#include "platform/linux/desktop/LiveLinuxDesktop.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

namespace vardel::testing {

namespace {

TEST(X11DesktopTest, FrontmostApplicationIsKnownByItsDesktopEntry)
{
    auto& live = liveLinuxDesktop();
    auto frontmost = live.platform->workspace().frontmostApplication();
    ASSERT_TRUE(frontmost);
    EXPECT_EQ(frontmost->processIdentifier, live.contractApplication);
    EXPECT_EQ(frontmost->bundleIdentifier, LiveLinuxDesktop::contractBundleIdentifier);
    EXPECT_EQ(frontmost->localizedName, "Contract Application");
    EXPECT_EQ(frontmost->executablePath, VARDEL_CONTRACT_APPLICATION_PATH);
    EXPECT_EQ(frontmost->bundlePath, live.desktopEntry.string());

    auto bundle = live.platform->workspace().applicationBundle(LiveLinuxDesktop::contractBundleIdentifier);
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->path, live.desktopEntry.string());
    auto running = live.platform->workspace().runningApplications();
    EXPECT_EQ(running.size(), 1u);
}

TEST(X11DesktopTest, WindowListAndScreens)
{
    auto& live = liveLinuxDesktop();
    auto screens = live.platform->windowServer().screenFrames();
    ASSERT_EQ(screens.size(), 1u);
    EXPECT_EQ(screens.front(), (Rect { { 0, 0 }, { 1280, 800 } }));

    auto list = live.platform->windowServer().onScreenWindowList();
    ASSERT_FALSE(list.empty());
    const auto& front = *list.front().asDictionary();
    EXPECT_EQ(front.at(WindowInfoKey::ownerPID).asInteger(), live.contractApplication);
    EXPECT_EQ(*front.at(WindowInfoKey::name).asText(), "Contract Window");
    EXPECT_EQ(front.at(WindowInfoKey::layer).asInteger(), 0);
}

TEST(X11DesktopTest, WindowsFullScreenStateAndDocumentComeThroughAccessibility)
{
    auto& live = liveLinuxDesktop();
    Accessibility& accessibility = live.platform->accessibility();
    auto application = accessibility.createApplication(live.contractApplication);
    ASSERT_TRUE(application);
    auto focused = accessibility.copyAttributeValue(*application, "AXFocusedWindow");
    ASSERT_TRUE(focused.ok() && focused.value->asElement());
    auto main = accessibility.copyAttributeValue(*application, "AXMainWindow");
    ASSERT_TRUE(main.ok() && main.value->asElement());
    EXPECT_EQ(*main.value->asElement(), *focused.value->asElement());
    const AXUIElement& window = *focused.value->asElement();

    EXPECT_EQ(accessibility.copyAttributeValue(window, "AXFullScreen").value->asBoolean(), false);
    // The window's document is the page it shows.
    EXPECT_EQ(*accessibility.copyAttributeValue(window, "AXDocument").value->asText(), "https://example.com/contract");

    auto setFullScreen = [&](bool on) {
        live.desktop.run(
            "wmctrl", { "-i", "-r", live.desktop.activeWindowId(), "-b", on ? "add,fullscreen" : "remove,fullscreen" });
        return waitUntil(
            [&] { return accessibility.copyAttributeValue(window, "AXFullScreen").value->asBoolean() == on; },
            std::chrono::seconds(5));
    };
    EXPECT_TRUE(setFullScreen(true));
    // The other tests share the window and expect it as it was.
    EXPECT_TRUE(setFullScreen(false));
}

} // namespace

} // namespace vardel::testing
