#include "platform/linux/ToplevelProcessMatcher.h"

#include <gtest/gtest.h>

namespace vardel::linux_desktop {

namespace {

const std::vector<AccessibleApplication> bus = {
    { 100, "Firefox", "firefox-esr", { "Roadmap — Mozilla Firefox", "Downloads" } },
    { 200, "gtk3-widget-factory", "gtk3-widget-factory", { "" } },
    { 300, "gedit", "gedit", { "notes.txt (~/) - gedit" } },
    { 400, "gedit", "gedit", { "todo.txt (~/) - gedit" } },
    { 0, "at-spi-registry", "", {} },
};

TEST(ToplevelProcessMatcherTest, TitleFindsTheApplicationAndTheAppIdSettlesTies)
{
    EXPECT_EQ(ToplevelProcessMatcher::match("firefox-esr", "Roadmap — Mozilla Firefox", bus), 100);
    EXPECT_EQ(ToplevelProcessMatcher::match("org.gnome.gedit", "todo.txt (~/) - gedit", bus), 400);
    // Two processes show the same title: the one whose name is the app id's.
    auto twins = bus;
    twins.push_back({ 500, "Terminal", "gnome-terminal-server", { "Downloads" } });
    EXPECT_EQ(ToplevelProcessMatcher::match("firefox-esr", "Downloads", twins), 100);
    EXPECT_EQ(ToplevelProcessMatcher::match("org.gnome.Terminal", "Downloads", twins), 500);
    EXPECT_FALSE(ToplevelProcessMatcher::match("org.example.Other", "Downloads", twins));
}

TEST(ToplevelProcessMatcherTest, WithoutTheTitleOnlyAnUnambiguousAppIdMatches)
{
    // Header-bar windows with an empty accessible name.
    EXPECT_EQ(ToplevelProcessMatcher::match("gtk3-widget-factory", "Widget Factory", bus), 200);
    // Two gedit processes, neither showing the title: no guess.
    EXPECT_FALSE(ToplevelProcessMatcher::match("org.gnome.gedit", "new.txt - gedit", bus));
    // An application that is not on the bus.
    EXPECT_FALSE(ToplevelProcessMatcher::match("org.freedesktop.weston.wayland-terminal", "Wayland Terminal", bus));
    EXPECT_FALSE(ToplevelProcessMatcher::match("", "", bus));
    EXPECT_FALSE(ToplevelProcessMatcher::match("firefox-esr", "Roadmap — Mozilla Firefox", {}));
}

TEST(ToplevelProcessMatcherTest, NamesStandForAppIdsAtWordBoundaries)
{
    EXPECT_TRUE(ToplevelProcessMatcher::namesAppId("Firefox", "firefox-esr"));
    EXPECT_TRUE(ToplevelProcessMatcher::namesAppId("texteditor", "org.gnome.TextEditor"));
    EXPECT_TRUE(ToplevelProcessMatcher::namesAppId("Terminal", "org.gnome.Terminal"));
    EXPECT_FALSE(ToplevelProcessMatcher::namesAppId("gnome-terminal-server", "org.gnome.Terminal"));
    EXPECT_FALSE(ToplevelProcessMatcher::namesAppId("fire", "firefox"));
    EXPECT_FALSE(ToplevelProcessMatcher::namesAppId("", "firefox"));
    EXPECT_FALSE(ToplevelProcessMatcher::namesAppId("gnome", "org.gnome.Terminal"));
}

} // namespace

} // namespace vardel::linux_desktop
