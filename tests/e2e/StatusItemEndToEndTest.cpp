// The tracker's status item, menu, global shortcut and appearance on a headless desktop. The test
// plays the desktop's parts on the session bus: the tray's StatusNotifierWatcher, the host that
// reads the menu over dbusmenu and clicks it, and the settings portal.

#include "e2e/SharedDesktop.h"
#include "platform/linux/GLibHandles.h"
#include "support/AtspiWindows.h"
#include "support/HeadlessDesktop.h"
#include "support/TraceFile.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gio/gio.h>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vardel::testing {

namespace {

using namespace std::chrono_literals;
using linux_desktop::GErrorHandle;
using linux_desktop::GObjectHandle;
using linux_desktop::GVariantHandle;

constexpr int callTimeoutMilliseconds = 5000;
constexpr const char* watcherInterface = "org.kde.StatusNotifierWatcher";

size_t logLinesContaining(const Trace& trace, const std::string& text)
{
    return std::count_if(trace.begin(), trace.end(), [&](const auto& event) {
        return event["event"] == "log" && event["message"].template get<std::string>().find(text) != std::string::npos;
    });
}

// Whether a sample after the first `from` events of the trace says the tracker is paused (or not).
// The process's resident memory in kilobytes, from /proc.
std::optional<long> residentKilobytes(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        long kilobytes = 0;
        if (std::sscanf(line.c_str(), "VmRSS: %ld kB", &kilobytes) == 1)
            return kilobytes;
    }
    return std::nullopt;
}

bool sampledPaused(const Trace& trace, size_t from, bool paused)
{
    for (size_t index = from; index < trace.size(); ++index) {
        if (trace[index]["event"] == "sample" && trace[index]["paused"] == paused)
            return true;
    }
    return false;
}

// One entry of the menu as a host reads it, with dbusmenu's defaults for absent properties.
struct MenuEntry {
    int id = 0;
    std::string label;
    bool enabled = true;
    bool visible = true;
    std::string toggleType;
    int toggleState = -1;
    std::string childrenDisplay;
    std::string shortcut;
    std::vector<MenuEntry> children;

    const MenuEntry* find(const std::string& labelStart) const
    {
        for (const MenuEntry& child : children) {
            if (child.label.rfind(labelStart, 0) == 0)
                return &child;
            if (const MenuEntry* found = child.find(labelStart))
                return found;
        }
        return nullptr;
    }
};

MenuEntry parseEntry(GVariant* layout)
{
    MenuEntry entry;
    GVariantHandle properties(g_variant_get_child_value(layout, 1));
    GVariantHandle children(g_variant_get_child_value(layout, 2));
    g_variant_get_child(layout, 0, "i", &entry.id);
    gboolean enabled = TRUE;
    gboolean visible = TRUE;
    g_variant_lookup(properties.get(), "enabled", "b", &enabled);
    g_variant_lookup(properties.get(), "visible", "b", &visible);
    entry.enabled = enabled;
    entry.visible = visible;
    g_variant_lookup(properties.get(), "toggle-state", "i", &entry.toggleState);
    for (auto [name, field] : { std::pair { "label", &entry.label }, { "toggle-type", &entry.toggleType },
             { "children-display", &entry.childrenDisplay } }) {
        const gchar* text = nullptr;
        if (g_variant_lookup(properties.get(), name, "&s", &text))
            *field = text;
    }
    if (GVariantHandle shortcut { g_variant_lookup_value(properties.get(), "shortcut", G_VARIANT_TYPE("aas")) }) {
        linux_desktop::GMallocHandle<gchar> printed(g_variant_print(shortcut.get(), FALSE));
        entry.shortcut = printed.get();
    }
    for (size_t index = 0; index < g_variant_n_children(children.get()); ++index) {
        GVariantHandle boxed(g_variant_get_child_value(children.get(), index));
        GVariantHandle child(g_variant_get_variant(boxed.get()));
        entry.children.push_back(parseEntry(child.get()));
    }
    return entry;
}

// The desktop's side of the session bus, on a connection of the test's own.
class TestDesktopBus {
public:
    TestDesktopBus()
        : connection_(g_dbus_connection_new_for_address_sync(std::getenv("DBUS_SESSION_BUS_ADDRESS"),
            static_cast<GDBusConnectionFlags>(
                G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, nullptr))
    {
        if (!connection_)
            throw HeadlessDesktopError("cannot connect to the test's session bus");
    }

    ~TestDesktopBus()
    {
        if (watcherRegistration_)
            g_dbus_connection_unregister_object(connection_.get(), watcherRegistration_);
        for (const std::string& name : ownedNames_)
            call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReleaseName",
                g_variant_new("(s)", name.c_str()));
    }

    // Serves the StatusNotifierWatcher, which records the items that register.
    void becomeWatcher()
    {
        static GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(
            "<node><interface name='org.kde.StatusNotifierWatcher'>"
            "<method name='RegisterStatusNotifierItem'><arg type='s' direction='in'/></method>"
            "<method name='RegisterStatusNotifierHost'><arg type='s' direction='in'/></method>"
            "<property name='IsStatusNotifierHostRegistered' type='b' access='read'/>"
            "<property name='ProtocolVersion' type='i' access='read'/>"
            "</interface></node>",
            nullptr);
        static const GDBusInterfaceVTable vtable = {
            [](GDBusConnection*, const gchar* sender, const gchar*, const gchar*, const gchar* method,
                GVariant* parameters, GDBusMethodInvocation* invocation, gpointer self) {
                if (std::string_view(method) == "RegisterStatusNotifierItem") {
                    const gchar* service = nullptr;
                    g_variant_get(parameters, "(&s)", &service);
                    static_cast<TestDesktopBus*>(self)->registeredItems.push_back(
                        service[0] == '/' ? std::string(sender) : std::string(service));
                }
                g_dbus_method_invocation_return_value(invocation, nullptr);
            },
            [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar* property, GError**,
                gpointer) -> GVariant* {
                return std::string_view(property) == "ProtocolVersion" ? g_variant_new_int32(0)
                                                                       : g_variant_new_boolean(TRUE);
            },
            nullptr,
            { nullptr },
        };
        watcherRegistration_ = g_dbus_connection_register_object(connection_.get(), "/StatusNotifierWatcher",
            g_dbus_node_info_lookup_interface(node, watcherInterface), &vtable, this, nullptr, nullptr);
        ownName(watcherInterface);
    }

    // The tray restarts: its name goes and comes back.
    void restartWatcher()
    {
        call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReleaseName",
            g_variant_new("(s)", watcherInterface));
        call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
            g_variant_new("(su)", watcherInterface, 0u));
    }

    void ownName(const std::string& name)
    {
        call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
            g_variant_new("(su)", name.c_str(), 0u));
        ownedNames_.push_back(name);
    }

    // Lets the main context answer what came in.
    static void serve()
    {
        while (g_main_context_iteration(nullptr, FALSE)) { }
    }

    GVariantHandle call(const std::string& service, const std::string& path, const std::string& interface,
        const std::string& method, GVariant* parameters)
    {
        GError* error = nullptr;
        GVariantHandle reply(
            g_dbus_connection_call_sync(connection_.get(), service.c_str(), path.c_str(), interface.c_str(),
                method.c_str(), parameters, nullptr, G_DBUS_CALL_FLAGS_NONE, callTimeoutMilliseconds, nullptr, &error));
        GErrorHandle owned(error);
        EXPECT_TRUE(reply) << method << ": " << (error ? error->message : "");
        return reply;
    }

    std::optional<std::string> itemText(const std::string& service, const std::string& property)
    {
        auto reply = call(service, "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
            g_variant_new("(ss)", "org.kde.StatusNotifierItem", property.c_str()));
        if (!reply)
            return std::nullopt;
        GVariantHandle boxed(g_variant_get_child_value(reply.get(), 0));
        GVariantHandle value(g_variant_get_variant(boxed.get()));
        if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING)
            || g_variant_is_of_type(value.get(), G_VARIANT_TYPE_OBJECT_PATH))
            return g_variant_get_string(value.get(), nullptr);
        linux_desktop::GMallocHandle<gchar> printed(g_variant_print(value.get(), FALSE));
        return printed.get();
    }

    MenuEntry layout(const std::string& service, const std::string& menuPath)
    {
        auto reply = call(service, menuPath, "com.canonical.dbusmenu", "GetLayout",
            g_variant_new("(ii@as)", 0, -1, g_variant_new_strv(nullptr, 0)));
        if (!reply)
            return {};
        GVariantHandle root(g_variant_get_child_value(reply.get(), 1));
        return parseEntry(root.get());
    }

    void aboutToShow(const std::string& service, const std::string& menuPath, int id)
    {
        call(service, menuPath, "com.canonical.dbusmenu", "AboutToShow", g_variant_new("(i)", id));
    }

    void event(const std::string& service, const std::string& menuPath, int id, const char* name)
    {
        call(service, menuPath, "com.canonical.dbusmenu", "Event",
            g_variant_new("(isvu)", id, name, g_variant_new_int32(0), 0u));
    }

    // For an event that ends the tracker, which may be gone before its answer is on the bus.
    void eventWithoutAnswer(const std::string& service, const std::string& menuPath, int id, const char* name)
    {
        g_dbus_connection_call(connection_.get(), service.c_str(), menuPath.c_str(), "com.canonical.dbusmenu", "Event",
            g_variant_new("(isvu)", id, name, g_variant_new_int32(0), 0u), nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
            callTimeoutMilliseconds, nullptr, nullptr, nullptr);
        g_dbus_connection_flush_sync(connection_.get(), nullptr, nullptr);
    }

    void changeColorScheme(uint32_t scheme)
    {
        ownName("org.freedesktop.portal.Desktop");
        g_dbus_connection_emit_signal(connection_.get(), nullptr, "/org/freedesktop/portal/desktop",
            "org.freedesktop.portal.Settings", "SettingChanged",
            g_variant_new("(ssv)", "org.freedesktop.appearance", "color-scheme", g_variant_new_uint32(scheme)),
            nullptr);
        g_dbus_connection_flush_sync(connection_.get(), nullptr, nullptr);
    }

    std::vector<std::string> registeredItems;

private:
    GObjectHandle<GDBusConnection> connection_;
    unsigned watcherRegistration_ = 0;
    std::vector<std::string> ownedNames_;
};

class StatusItemEndToEndTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        desktop_ = &sharedDesktop();
        folder_ = desktop_->scratchFolder() / ::testing::UnitTest::GetInstance()->current_test_info()->name();
        std::filesystem::create_directories(folder_ / "config/vardel");
        // The main application, so that "Open Vardel" has something to open.
        std::filesystem::create_directories(folder_ / "share/applications");
        std::ofstream(folder_ / "share/applications/vardel-main.desktop")
            << "[Desktop Entry]\nType=Application\nName=Vardel\nExec=/bin/true\n";
        std::ofstream(folder_ / "config/vardel/defaults.json")
            << R"({"LinuxDesktop_applicationIdentifiers": {"vardel-main": "info.quenby.Vardel2"}})";
        std::ofstream(folder_ / "config/vardel/preferences.json")
            << R"({"startTaskShortcut": {"key": "t", "modifierFlags": 1048576}, "shouldAskForTaskAfterIdle": true})";
        bus_ = std::make_unique<TestDesktopBus>();
    }

    void TearDown() override
    {
        bus_.reset();
        if (!desktop_)
            return;
        for (pid_t tracker : trackers_)
            desktop_->stop(tracker);
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    // Starts a tracker with a trace of its own and returns the trace's path.
    std::filesystem::path startTracker()
    {
        auto trace = folder_ / ("trace-" + std::to_string(trackers_.size() + 1) + ".jsonl");
        trackers_.push_back(desktop_->start(VARDEL_TRACKER_PATH, {},
            { { "VARDEL_TRACE", trace.string() }, { "VARDEL_DATA_DIR", (folder_ / "data").string() },
                { "XDG_CONFIG_HOME", (folder_ / "config").string() },
                { "XDG_DATA_HOME", (folder_ / "share").string() } }));
        return trace;
    }

    // Reads the trace, serving the bus meanwhile, until it meets the condition; returns it.
    Trace waitForTrace(
        const std::filesystem::path& path, const std::function<bool(const Trace&)>& condition, const std::string& what)
    {
        Trace trace;
        bool met = waitUntil(
            [&] {
                TestDesktopBus::serve();
                trace = readTrace(path);
                return condition(trace);
            },
            20s, 100ms);
        EXPECT_TRUE(met) << "the trace did not show " << what << ": " << nlohmann::json(trace).dump();
        return trace;
    }

    bool waitFor(const std::function<bool()>& condition)
    {
        return waitUntil(
            [&] {
                TestDesktopBus::serve();
                return condition();
            },
            10s, 100ms);
    }

    HeadlessDesktop* desktop_ = nullptr;
    std::unique_ptr<TestDesktopBus> bus_;
    std::filesystem::path folder_;
    std::vector<pid_t> trackers_;
};

TEST_F(StatusItemEndToEndTest, TheTrayMenuPausesResumesAndQuits)
{
    constexpr const char* noTray = "No tray (StatusNotifierWatcher)";
    auto tracePath = startTracker();
    waitForTrace(
        tracePath, [&](const Trace& trace) { return logLinesContaining(trace, noTray) > 0; }, "no tray");

    // A tray that starts later gets the item.
    bus_->becomeWatcher();
    ASSERT_TRUE(waitFor([&] { return !bus_->registeredItems.empty(); })) << "the item never registered";
    std::string item = bus_->registeredItems.front();
    bus_->restartWatcher();
    ASSERT_TRUE(waitFor([&] { return bus_->registeredItems.size() == 2; })) << "the item did not register again";
    EXPECT_EQ(bus_->registeredItems.back(), item);
    EXPECT_EQ(bus_->itemText(item, "Status"), "Active");
    // Today's total, nothing recorded yet.
    EXPECT_EQ(bus_->itemText(item, "Title"), "0s");
    EXPECT_EQ(bus_->itemText(item, "IconName"), "vardel-tracker-status");
    // The tray finds both icons in the shipped theme.
    std::filesystem::path icons = bus_->itemText(item, "IconThemePath").value_or("");
    for (const char* icon : { "vardel-tracker-status.svg", "vardel-tracker-status-paused.svg" })
        EXPECT_TRUE(std::filesystem::exists(icons / "hicolor/scalable/apps" / icon)) << icons;
    EXPECT_EQ(bus_->itemText(item, "ItemIsMenu"), "true");
    std::string menu = bus_->itemText(item, "Menu").value_or("");
    ASSERT_EQ(menu, "/MenuBar");

    // Opening the menu validates its entries: the day's total is a line, not a command.
    bus_->aboutToShow(item, menu, 0);
    MenuEntry root;
    ASSERT_TRUE(waitFor([&] {
        root = bus_->layout(item, menu);
        const MenuEntry* today = root.find("Today");
        return today && !today->enabled;
    })) << "the menu was not validated";
    std::vector<std::string> shown;
    for (const MenuEntry& entry : root.children) {
        if (entry.visible)
            shown.push_back(entry.label);
    }
    EXPECT_EQ(shown,
        (std::vector<std::string> { "No Timer Running", "Start Timer…", "Edit Latest Timer…", root.children[4].label,
            "Pause until Tomorrow", "Pause App Tracking for…", "Launch at Login", "Ask for a Task after Idle Time",
            "Open Vardel", "Quit Vardel Tracker" }));
    EXPECT_EQ(root.find("Start Timer")->shortcut, "[['Super', 't']]");
    EXPECT_EQ(root.find("Pause App Tracking")->childrenDisplay, "submenu");
    EXPECT_EQ(root.find("Pause App Tracking")->children.size(), 6u);
    // Checked, and disabled while idle time does not suspend tracking.
    EXPECT_EQ(root.find("Ask for a Task")->toggleType, "checkmark");
    EXPECT_EQ(root.find("Ask for a Task")->toggleState, 1);
    EXPECT_FALSE(root.find("Ask for a Task")->enabled);
    EXPECT_EQ(root.find("Launch at Login")->toggleType, "");

    // A disabled line does nothing when clicked.
    bus_->event(item, menu, root.find("Today")->id, "clicked");
    waitForTrace(
        tracePath,
        [](const Trace& trace) { return logLinesContaining(trace, "hidden, disabled or gone was clicked") == 1; },
        "the refused click");

    // Opening the menu with Alt (Option) held opens the main application.
    bus_->event(item, menu, 0, "closed");
    desktop_->run("xdotool", { "keydown", "alt" });
    bus_->aboutToShow(item, menu, 0);
    waitForTrace(
        tracePath,
        [](const Trace& trace) {
            return std::any_of(trace.begin(), trace.end(), [](const auto& event) { return event["event"] == "open"; });
        },
        "the main application opened");
    desktop_->run("xdotool", { "keyup", "alt" });

    size_t before = readTrace(tracePath).size();
    bus_->event(item, menu, root.find("1 Hour")->id, "clicked");
    bus_->event(item, menu, 0, "closed");
    waitForTrace(
        tracePath, [&](const Trace& trace) { return sampledPaused(trace, before, true); }, "a paused sample");
    EXPECT_TRUE(waitFor([&] { return bus_->itemText(item, "IconName") == "vardel-tracker-status-paused"; }));

    bus_->aboutToShow(item, menu, 0);
    ASSERT_TRUE(waitFor([&] {
        root = bus_->layout(item, menu);
        return root.find("Resume App Tracking") && root.find("Paused for the next");
    })) << "the menu does not offer to resume";
    before = readTrace(tracePath).size();
    bus_->event(item, menu, root.find("Resume App Tracking")->id, "clicked");
    waitForTrace(
        tracePath, [&](const Trace& trace) { return sampledPaused(trace, before, false); }, "a tracking sample");
    EXPECT_TRUE(waitFor([&] { return bus_->itemText(item, "IconName") == "vardel-tracker-status"; }));

    // Quitting asks first, in a dialog the user answers.
    int quit = root.find("Quit Vardel Tracker")->id;
    bus_->eventWithoutAnswer(item, menu, quit, "clicked");
    atspi::connect();
    auto confirm = atspi::waitForElement("vardel-dialog", ATSPI_ROLE_PUSH_BUTTON, "Quit Vardel Tracker");
    ASSERT_TRUE(confirm) << "no quit question";
    EXPECT_TRUE(atspi::press(confirm.get()));
    auto trace = waitForTrace(
        tracePath, [](const Trace& trace) { return !trace.empty() && trace.back()["event"] == "exit"; }, "the exit");
    ASSERT_FALSE(trace.empty());
    EXPECT_EQ(trace.back()["status"], 0);
    EXPECT_EQ(logLinesContaining(trace, noTray), 1u);
}

TEST_F(StatusItemEndToEndTest, LaunchAtLoginAndStartTimerFromTheMenu)
{
    bus_->becomeWatcher();
    startTracker();
    ASSERT_TRUE(waitFor([&] { return !bus_->registeredItems.empty(); })) << "the item never registered";
    std::string item = bus_->registeredItems.front();
    std::string menu = bus_->itemText(item, "Menu").value_or("");
    // Opens the menu and reads it once the entry shows in the wanted state.
    auto menuWhere = [&](const std::function<bool(const MenuEntry&)>& condition) {
        MenuEntry root;
        bool shown = waitFor([&] {
            bus_->aboutToShow(item, menu, 0);
            root = bus_->layout(item, menu);
            return condition(root);
        });
        EXPECT_TRUE(shown) << "the menu never showed what was expected";
        return root;
    };

    std::filesystem::path autostart = folder_ / "config/autostart/vardel-tracker.desktop";
    MenuEntry root = menuWhere([](const MenuEntry& root) { return root.find("Launch at Login") != nullptr; });
    bus_->event(item, menu, root.find("Launch at Login")->id, "clicked");
    EXPECT_TRUE(waitFor([&] { return std::filesystem::exists(autostart); })) << "no autostart entry";
    root = menuWhere([](const MenuEntry& root) { return root.find("Launch at Login")->toggleState == 1; });
    bus_->event(item, menu, root.find("Launch at Login")->id, "clicked");
    EXPECT_TRUE(waitFor([&] { return !std::filesystem::exists(autostart); })) << "the autostart entry stayed";

    // "Start Timer…" opens the editor; the timer named and saved there runs.
    root = menuWhere([](const MenuEntry& root) { return root.find("Start Timer") != nullptr; });
    bus_->event(item, menu, root.find("Start Timer")->id, "clicked");
    atspi::connect();
    auto title = atspi::waitForElement("vardel-dialog", ATSPI_ROLE_TEXT, "Title");
    auto save = atspi::waitForElement("vardel-dialog", ATSPI_ROLE_PUSH_BUTTON, "Save");
    ASSERT_TRUE(title && save) << "no editor";
    atspi::type(title.get(), "Write the report");
    atspi::press(save.get());
    root = menuWhere([](const MenuEntry& root) {
        const MenuEntry* stop = root.find("Stop Timer");
        return root.find("Switch Timer") && stop && stop->visible;
    });

    // With the tray item shown and a dialog opened and closed the tracker stays small, also over a
    // long run: scripts/memory-run sets the minutes.
    auto atStart = residentKilobytes(trackers_.front());
    ASSERT_TRUE(atStart);
    int minutes = 0;
    if (const char* asked = std::getenv("VARDEL_MEMORY_RUN_MINUTES"))
        minutes = std::atoi(asked);
    for (int minute = 1; minute <= minutes; ++minute) {
        waitUntil(
            [] {
                TestDesktopBus::serve();
                return false;
            },
            60s, 500ms);
        std::cout << "resident memory after " << minute << " min: " << residentKilobytes(trackers_.front()).value_or(0)
                  << " kB" << std::endl;
    }
    auto atEnd = residentKilobytes(trackers_.front());
    ASSERT_TRUE(atEnd) << "the tracker ended during the run";
    std::cout << "resident memory: " << *atStart << " kB with the dialog closed, " << *atEnd << " kB " << minutes
              << " min later" << std::endl;
    EXPECT_LT(*atEnd, 40 * 1024);
}

TEST_F(StatusItemEndToEndTest, TheGlobalShortcutStartsATimerAndColourSchemeChangesAreHeard)
{
    // This user has hidden the status item.
    std::ofstream(folder_ / "config/vardel/preferences.json")
        << R"({"startTaskShortcut": {"key": "t", "modifierFlags": 1048576}, "statusItemVisible": false})";
    bus_->becomeWatcher();
    auto tracePath = startTracker();
    waitForTrace(
        tracePath, [](const Trace& trace) { return !trace.empty() && trace.back()["event"] == "sample"; }, "a sample");

    // With Shift it edits the latest entry, of which there is none: only the plain press opens the editor.
    desktop_->run("xdotool", { "key", "super+shift+t" });
    desktop_->run("xdotool", { "key", "super+t" });
    auto trace = waitForTrace(
        tracePath,
        [](const Trace& trace) {
            return std::any_of(
                trace.begin(), trace.end(), [](const auto& event) { return event["event"] == "editor"; });
        },
        "the editor");
    auto editors
        = std::count_if(trace.begin(), trace.end(), [](const auto& event) { return event["event"] == "editor"; });
    EXPECT_EQ(editors, 1);

    // A second tracker cannot have the keys the first holds; it says so once for each.
    auto secondTrace = startTracker();
    waitForTrace(
        secondTrace, [](const Trace& trace) { return logLinesContaining(trace, "is taken by another program") == 2; },
        "the taken shortcuts");

    ASSERT_TRUE(waitFor([&] { return !bus_->registeredItems.empty(); })) << "the item never registered";
    EXPECT_EQ(bus_->itemText(bus_->registeredItems.front(), "Status"), "Passive");

    bus_->changeColorScheme(1);
    waitForTrace(
        tracePath, [](const Trace& trace) { return logLinesContaining(trace, "colour scheme changed") == 1; },
        "the colour scheme change");
}

} // namespace

} // namespace vardel::testing
