#include "platform/linux/AtspiSampleAnswers.h"

#include <gtest/gtest.h>

#include <atspi/atspi.h>

namespace vardel::linux_desktop {

namespace {

using namespace std::chrono_literals;
using Clock = AtspiSampleAnswers::Clock;

// Proxies that stand for no remote object: the answers only tell them apart.
GObjectHandle<AtspiAccessible> proxy()
{
    return GObjectHandle<AtspiAccessible>(static_cast<AtspiAccessible*>(g_object_new(ATSPI_TYPE_ACCESSIBLE, nullptr)));
}

TEST(AtspiSampleAnswersTest, AnswersHoldForOneSampleAndNoLonger)
{
    auto window = proxy();
    auto button = proxy();
    AtspiSampleAnswers answers(250ms);
    Clock::time_point start;
    answers.about(window.get(), start).name = "Window";
    EXPECT_FALSE(answers.about(button.get(), start).name);
    EXPECT_EQ(answers.about(window.get(), start + 200ms).name, std::optional<std::string>("Window"));

    // Past the lifetime, counted from the sample's first question.
    EXPECT_FALSE(answers.about(window.get(), start + 300ms).name);

    answers.about(window.get(), start).states = 1;
    answers.forget();
    EXPECT_FALSE(answers.about(window.get(), start).states);
    // A clock that went back starts a new sample too.
    answers.about(window.get(), start + 1s).states = 1;
    EXPECT_FALSE(answers.about(window.get(), start).states);
}

TEST(AtspiSampleAnswersTest, ElementsAnsweredAboutOutliveTheirLastOtherReference)
{
    AtspiSampleAnswers answers(250ms);
    auto window = proxy();
    GWeakRef weak;
    g_weak_ref_init(&weak, window.get());
    answers.about(window.get(), Clock::time_point()).name = "Window";
    window.reset();
    GObjectHandle<GObject> alive(static_cast<GObject*>(g_weak_ref_get(&weak)));
    EXPECT_TRUE(alive);
    alive.reset();
    answers.forget();
    EXPECT_EQ(g_weak_ref_get(&weak), nullptr);
    g_weak_ref_clear(&weak);
}

} // namespace

} // namespace vardel::linux_desktop
