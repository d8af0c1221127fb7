#include "platform/linux/desktop/LiveLinuxDesktop.h"

#include <gtest/gtest.h>

#include <deque>

namespace vardel::testing {

namespace {

class AtspiAttributeWriteTest : public ::testing::Test {
protected:
    Accessibility& accessibility() { return liveLinuxDesktop().platform->accessibility(); }

    std::optional<std::string> text(const AXUIElement& element, const char* attribute)
    {
        auto value = accessibility().copyAttributeValue(element, attribute);
        return value.ok() && value.value->asText() ? std::optional(*value.value->asText()) : std::nullopt;
    }

    std::optional<AXUIElement> withRole(const std::string& role)
    {
        auto application = accessibility().createApplication(liveLinuxDesktop().contractApplication);
        if (!application)
            return std::nullopt;
        std::deque<AXUIElement> pending { *application };
        for (int visited = 0; !pending.empty() && visited < 1000; ++visited) {
            AXUIElement element = pending.front();
            pending.pop_front();
            if (text(element, "AXRole") == role)
                return element;
            auto children = accessibility().copyAttributeValue(element, "AXChildren");
            if (children.ok() && children.value->asList()) {
                for (const Value& child : *children.value->asList())
                    pending.push_back(*child.asElement());
            }
        }
        return std::nullopt;
    }
};

TEST_F(AtspiAttributeWriteTest, TextValueForElementsWithoutEditableTextIsRefused)
{
    for (const char* role : { "AXButton", "AXWindow", "AXWebArea" }) {
        auto element = withRole(role);
        ASSERT_TRUE(element) << role;
        EXPECT_EQ(accessibility().isAttributeSettable(*element, "AXValue").value, false) << role;
        EXPECT_EQ(
            accessibility().setAttributeValue(*element, "AXValue", Value("typed")), AXErrorCode::attributeUnsupported)
            << role;
    }
}

} // namespace

} // namespace vardel::testing
