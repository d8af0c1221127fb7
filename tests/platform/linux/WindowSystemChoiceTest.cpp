#include "platform/linux/WindowSystemChoice.h"

#include <gtest/gtest.h>

#include <map>

namespace vardel::linux_desktop {

namespace {

using Environment = std::map<std::string, std::string>;

std::optional<WindowSystemChoice> choose(
    const Environment& variables, const std::optional<std::string>& preference = {})
{
    return WindowSystemChoice::choose(
        [&](const char* name) -> const char* {
            auto found = variables.find(name);
            return found == variables.end() ? nullptr : found->second.c_str();
        },
        preference);
}

std::optional<WindowSystem> chosen(const Environment& variables, const std::optional<std::string>& preference = {})
{
    auto choice = choose(variables, preference);
    return choice ? std::optional(choice->windowSystem) : std::nullopt;
}

TEST(WindowSystemChoiceTest, WaylandSessionWinsOverXwaylandUnlessTheSessionSaysX11)
{
    EXPECT_EQ(chosen({ { "WAYLAND_DISPLAY", "wayland-0" }, { "DISPLAY", ":0" }, { "XDG_SESSION_TYPE", "wayland" } }),
        WindowSystem::wayland);
    EXPECT_EQ(chosen({ { "WAYLAND_DISPLAY", "wayland-0" }, { "DISPLAY", ":0" } }), WindowSystem::wayland);
    EXPECT_EQ(chosen({ { "WAYLAND_DISPLAY", "wayland-0" } }), WindowSystem::wayland);
    // A nested compositor inside an X11 session.
    EXPECT_EQ(chosen({ { "WAYLAND_DISPLAY", "wayland-1" }, { "DISPLAY", ":0" }, { "XDG_SESSION_TYPE", "x11" } }),
        WindowSystem::x11);
    EXPECT_EQ(chosen({ { "DISPLAY", ":0" }, { "XDG_SESSION_TYPE", "wayland" } }), WindowSystem::x11);
    EXPECT_FALSE(choose({ { "XDG_SESSION_TYPE", "wayland" } }));
    EXPECT_FALSE(choose({ { "DISPLAY", "" }, { "WAYLAND_DISPLAY", "" } }));
}

TEST(WindowSystemChoiceTest, PreferenceForcesEitherWhileItsDisplayIsThere)
{
    Environment both { { "WAYLAND_DISPLAY", "wayland-0" }, { "DISPLAY", ":0" }, { "XDG_SESSION_TYPE", "wayland" } };
    EXPECT_EQ(chosen(both, "x11"), WindowSystem::x11);
    EXPECT_EQ(
        chosen({ { "WAYLAND_DISPLAY", "wayland-0" }, { "DISPLAY", ":0" }, { "XDG_SESSION_TYPE", "x11" } }, "wayland"),
        WindowSystem::wayland);
    EXPECT_EQ(chosen({ { "WAYLAND_DISPLAY", "wayland-0" } }, "x11"), WindowSystem::wayland);
    EXPECT_EQ(chosen({ { "DISPLAY", ":0" } }, "wayland"), WindowSystem::x11);
    EXPECT_EQ(chosen(both, "mir"), WindowSystem::wayland);
}

TEST(WindowSystemChoiceTest, ReasonNamesWhatDecided)
{
    auto forced = choose({ { "WAYLAND_DISPLAY", "wayland-0" }, { "DISPLAY", ":0" } }, "x11");
    ASSERT_TRUE(forced);
    EXPECT_NE(forced->reason.find("LinuxDesktop_windowSystem is \"x11\""), std::string::npos) << forced->reason;
    auto ignored = choose({ { "WAYLAND_DISPLAY", "wayland-0" }, { "DISPLAY", ":0" } }, "mir");
    ASSERT_TRUE(ignored);
    EXPECT_NE(ignored->reason.find("ignored"), std::string::npos) << ignored->reason;
    auto session
        = choose({ { "WAYLAND_DISPLAY", "wayland-0" }, { "DISPLAY", ":0" }, { "XDG_SESSION_TYPE", "wayland" } });
    ASSERT_TRUE(session);
    EXPECT_NE(session->reason.find("wayland-0"), std::string::npos) << session->reason;
    EXPECT_NE(session->reason.find("Xwayland"), std::string::npos) << session->reason;
}

} // namespace

} // namespace vardel::linux_desktop
