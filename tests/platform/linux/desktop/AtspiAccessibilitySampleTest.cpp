// What the backend remembers within one sample, on the live headless desktop.

#include "platform/linux/AtspiAccessibility.h"
#include "platform/linux/desktop/LiveLinuxDesktop.h"

#include <gtest/gtest.h>

namespace vardel::testing {

namespace {

class AtspiAccessibilitySampleTest : public ::testing::Test {
protected:
    linux_desktop::AtspiAccessibility& accessibility()
    {
        return dynamic_cast<linux_desktop::AtspiAccessibility&>(liveLinuxDesktop().platform->accessibility());
    }

    AXUIElement startSample()
    {
        auto application = accessibility().createApplication(liveLinuxDesktop().contractApplication);
        if (!application)
            throw std::runtime_error("the application element cannot be created");
        return *application;
    }

    // What the logic reads of the frontmost window in a sample, and the calls that cost.
    std::pair<std::string, uint64_t> readWindow(const AXUIElement& application)
    {
        uint64_t before = accessibility().callCount();
        std::string read;
        for (const char* attribute : { "AXMainWindow", "AXFocusedWindow" }) {
            auto window = accessibility().copyAttributeValue(application, attribute);
            if (!window.ok() || !window.value->asElement())
                return { "no " + std::string(attribute), 0 };
            for (const char* windowAttribute : { "AXTitle", "AXDocument", "AXFullScreen" }) {
                auto value = accessibility().copyAttributeValue(*window.value->asElement(), windowAttribute);
                if (!value.ok())
                    read += "-;";
                else if (value.value->asText())
                    read += *value.value->asText() + ";";
                else
                    read += value.value->asBoolean().value_or(false) ? "true;" : "false;";
            }
        }
        return { read, accessibility().callCount() - before };
    }
};

TEST_F(AtspiAccessibilitySampleTest, RepeatedQuestionsInASampleAreAskedOnceAndTheNextSampleAsksAgain)
{
    auto [firstRead, firstCalls] = readWindow(startSample());
    EXPECT_NE(firstRead.find("Contract Window"), std::string::npos) << firstRead;
    EXPECT_NE(firstRead.find("https://example.com/contract"), std::string::npos) << firstRead;
    ASSERT_GT(firstCalls, 0u);

    // The main and the focused window are one window: the second half of a read is remembered.
    auto application = startSample();
    uint64_t before = accessibility().callCount();
    auto focused = accessibility().copyAttributeValue(application, "AXFocusedWindow");
    ASSERT_TRUE(focused.ok() && focused.value->asElement());
    uint64_t firstQuestion = accessibility().callCount() - before;
    ASSERT_TRUE(accessibility().copyAttributeValue(application, "AXFocusedWindow").ok());
    ASSERT_TRUE(accessibility().copyAttributeValue(*focused.value->asElement(), "AXTitle").ok());
    before = accessibility().callCount();
    ASSERT_TRUE(accessibility().copyAttributeValue(application, "AXFocusedWindow").ok());
    ASSERT_TRUE(accessibility().copyAttributeValue(*focused.value->asElement(), "AXTitle").ok());
    EXPECT_EQ(accessibility().callCount() - before, 0u);
    EXPECT_GT(firstQuestion, 0u);

    // A new sample reads the same, asking again.
    auto [secondRead, secondCalls] = readWindow(startSample());
    EXPECT_EQ(secondRead, firstRead);
    EXPECT_EQ(secondCalls, firstCalls);
}

TEST_F(AtspiAccessibilitySampleTest, WriteIsFollowedByFreshReads)
{
    auto application = startSample();
    auto window = accessibility().copyAttributeValue(application, "AXFocusedWindow");
    ASSERT_TRUE(window.ok() && window.value->asElement());
    ASSERT_TRUE(accessibility().copyAttributeValue(*window.value->asElement(), "AXTitle").ok());
    EXPECT_EQ(
        accessibility().setAttributeValue(application, "AXManualAccessibility", Value(true)), AXErrorCode::success);
    uint64_t before = accessibility().callCount();
    ASSERT_TRUE(accessibility().copyAttributeValue(*window.value->asElement(), "AXTitle").ok());
    EXPECT_GT(accessibility().callCount() - before, 0u);
}

} // namespace

} // namespace vardel::testing
