// The tracker's windows, shown by vardel-dialog on the headless desktop and answered through AT-SPI.

#include "LiveLinuxDesktop.h"
#include "platform/linux/DialogAlerts.h"
#include "platform/linux/DialogTimeEntryEditor.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/PollRunLoop.h"
#include "platform/linux/StandardErrorLog.h"
#include "support/AtspiWindows.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

namespace vardel::testing {

namespace {

using namespace std::chrono_literals;

constexpr const char* program = "vardel-dialog";

// As the editor shows a time: local, to the second.
std::string localText(double secondsSince1970)
{
    std::unique_ptr<GDateTime, linux_desktop::GLibRelease<g_date_time_unref>> dateTime(
        g_date_time_new_from_unix_local(static_cast<gint64>(secondsSince1970)));
    linux_desktop::GMallocHandle<gchar> formatted(g_date_time_format(dateTime.get(), "%Y-%m-%d %H:%M:%S"));
    return formatted.get();
}

class DialogWindowsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        liveLinuxDesktop();
        atspi::connect();
    }

    // The dialogs took the focus; the other tests of the desktop expect the contract window in front.
    void TearDown() override
    {
        LiveLinuxDesktop& live = liveLinuxDesktop();
        live.desktop.run("wmctrl", { "-a", "Contract Window" });
        live.desktop.waitForActiveWindow(live.contractApplication, "Contract Window");
    }

    JsonLinesTrace trace { [] { return 0.0; } };
    linux_desktop::StandardErrorLog log { trace };
};

// The quit confirmation: its texts and buttons as asked, the box ticked when it opens; the user
// unticks it and presses the second button.
TEST_F(DialogWindowsTest, AlertAnswersWithTheButtonPressedAndTheBoxAsLeft)
{
    linux_desktop::DialogAlerts alerts(VARDEL_DIALOG_PATH, log);
    auto answer = std::async(std::launch::async, [&] {
        return alerts.runModal({ "Do you really wish to quit the Vardel tracker app?",
            "Vardel can only track your activities while the tracker app is running.",
            { "Keep Tracking", "Quit Vardel Tracker" }, true, true });
    });
    auto box = atspi::waitForElement(program, ATSPI_ROLE_CHECK_BOX, "Do not show this message again");
    ASSERT_TRUE(box);
    EXPECT_TRUE(atspi::isChecked(box.get()));
    EXPECT_TRUE(atspi::waitForElement(program, ATSPI_ROLE_LABEL, "Do you really wish to quit the Vardel tracker app?"));
    EXPECT_TRUE(atspi::waitForElement(program, ATSPI_ROLE_PUSH_BUTTON, "Keep Tracking"));
    auto quit = atspi::waitForElement(program, ATSPI_ROLE_PUSH_BUTTON, "Quit Vardel Tracker");
    ASSERT_TRUE(quit);
    EXPECT_TRUE(atspi::press(box.get()));
    EXPECT_TRUE(atspi::press(quit.get()));

    ASSERT_EQ(answer.wait_for(10s), std::future_status::ready);
    AlertResponse response = answer.get();
    EXPECT_EQ(response.button, 2);
    EXPECT_FALSE(response.suppressionState);
}

// Without the program the alert is answered as before: the first button, the box as it opened.
TEST_F(DialogWindowsTest, AlertWithoutTheProgramTakesTheFirstButton)
{
    linux_desktop::DialogAlerts alerts(std::nullopt, log);
    AlertResponse response = alerts.runModal({ "Question?", "", { "Yes", "No" }, true, true });
    EXPECT_EQ(response.button, 1);
    EXPECT_TRUE(response.suppressionState);
}

// "Start Timer": the editor opens prefilled, the user names the entry and saves; the run loop serves
// its timers all the while.
TEST_F(DialogWindowsTest, EditorIsFilledAndSavedWhileTheRunLoopGoesOn)
{
    linux_desktop::PollRunLoop runLoop;
    linux_desktop::DialogTimeEntryEditor editor(VARDEL_DIALOG_PATH, runLoop, trace, log);
    Date start { 1'790'000'000 };
    std::optional<TimeEntryProposal> saved;
    editor.present({ "Start Timer", start, Date { start.secondsSince1970 + 3600 }, "", "Research" },
        [&](const TimeEntryProposal& entry) {
            saved = entry;
            runLoop.stop(0, "saved");
        });

    std::atomic<int> ticks = 0;
    std::function<void()> tick = [&] {
        ++ticks;
        runLoop.schedule(0.1, tick);
    };
    runLoop.schedule(0.1, tick);
    // The user's part, on a thread of its own, as another program would be.
    auto user = std::async(std::launch::async, [&] {
        auto title = atspi::waitForElement(program, ATSPI_ROLE_TEXT, "Title");
        auto project = atspi::waitForElement(program, ATSPI_ROLE_TEXT, "Project");
        auto save = atspi::waitForElement(program, ATSPI_ROLE_PUSH_BUTTON, "Save");
        if (!title || !project || !save || !atspi::waitForElement(program, ATSPI_ROLE_TEXT, "Start")
            || !atspi::waitForElement(program, ATSPI_ROLE_PUSH_BUTTON, "Cancel"))
            return std::string("the editor's fields did not show");
        std::string prefilled = atspi::textOf(project.get());
        atspi::type(title.get(), "Write the report");
        // An end that is no date keeps the editor open and says why; then a real one, in local time.
        auto end = atspi::waitForElement(program, ATSPI_ROLE_TEXT, "End");
        atspi::type(end.get(), "tomorrow");
        atspi::press(save.get());
        if (!atspi::waitForElement(
                program, ATSPI_ROLE_LABEL, "The end is not a date and time such as 2026-11-25 17:45:00."))
            return std::string("no word about the end that is no date");
        atspi::type(end.get(), localText(start.secondsSince1970 + 7200));
        // The loop serves its timers while the editor is open.
        if (!waitUntil([&] { return ticks >= 5; }, 10s))
            return std::string("the run loop stood still while the editor was open");
        atspi::press(save.get());
        return prefilled;
    });
    runLoop.schedule(30, [&] { runLoop.stop(1, "timeout"); });
    runLoop.run();

    EXPECT_EQ(user.get(), "Research");
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->title, "Write the report");
    EXPECT_EQ(saved->project, "Research");
    EXPECT_EQ(saved->heading, "Start Timer");
    EXPECT_EQ(saved->start.secondsSince1970, start.secondsSince1970);
    EXPECT_EQ(saved->end.secondsSince1970, start.secondsSince1970 + 7200);
    EXPECT_EQ(editor.openEditors(), 0u);
}

} // namespace

} // namespace vardel::testing
