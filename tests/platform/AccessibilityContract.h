#pragma once

// What every accessibility backend must do, written once. A backend takes part by deriving a
// fixture from AccessibilityContractFixture that shows the standard desktop below, and by
// instantiating the suite:
//
//     INSTANTIATE_TYPED_TEST_SUITE_P(MyBackend, AccessibilityContractTest, MyBackendFixture);

#include "platform/Platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vardel::testing {

// The standard desktop: one application with one window (titled windowTitle), which holds a button
// (titled buttonTitle, with a position and a size, the action AXPress and a settable AXFocused) and a
// web area (role AXWebArea) whose AXURL is pageUrl.
struct StandardDesktop {
    static constexpr const char* windowTitle = "Contract Window";
    static constexpr const char* buttonTitle = "Press Me";
    static constexpr const char* pageUrl = "https://example.com/contract";
};

class AccessibilityContractFixture {
public:
    virtual ~AccessibilityContractFixture() = default;
    virtual Platform& platform() = 0;
    // The pid of the standard desktop's application.
    virtual ProcessIdentifier applicationPid() = 0;
};

template<typename Fixture> class AccessibilityContractTest : public ::testing::Test {
protected:
    Accessibility& accessibility() { return fixture_.platform().accessibility(); }

    AXUIElement application()
    {
        auto application = accessibility().createApplication(fixture_.applicationPid());
        if (!application)
            throw std::runtime_error("the application element cannot be created");
        return *application;
    }

    std::optional<std::string> text(const AXUIElement& element, const char* attribute)
    {
        auto value = accessibility().copyAttributeValue(element, attribute);
        return value.ok() && value.value->asText() ? std::optional(*value.value->asText()) : std::nullopt;
    }

    std::vector<AXUIElement> elements(const AXUIElement& element, const char* attribute)
    {
        std::vector<AXUIElement> found;
        auto value = accessibility().copyAttributeValue(element, attribute);
        if (value.ok() && value.value->asList()) {
            for (const Value& member : *value.value->asList()) {
                if (member.asElement())
                    found.push_back(*member.asElement());
            }
        }
        return found;
    }

    // Breadth first, with a bound, since a real application's tree can be large.
    AXUIElement find(const std::function<bool(const AXUIElement&)>& matches)
    {
        std::deque<AXUIElement> pending { application() };
        for (int visited = 0; !pending.empty() && visited < 10000; ++visited) {
            AXUIElement element = pending.front();
            pending.pop_front();
            if (matches(element))
                return element;
            for (const AXUIElement& child : elements(element, "AXChildren"))
                pending.push_back(child);
        }
        throw std::runtime_error("no such element in the standard desktop");
    }

    AXUIElement withRole(const std::string& role)
    {
        return find([&](const AXUIElement& element) { return text(element, "AXRole") == role; });
    }

    AXUIElement button()
    {
        return find([&](const AXUIElement& element) {
            return text(element, "AXRole") == "AXButton" && text(element, "AXTitle") == StandardDesktop::buttonTitle;
        });
    }

    Fixture fixture_;
};

TYPED_TEST_SUITE_P(AccessibilityContractTest);

TYPED_TEST_P(AccessibilityContractTest, ApplicationElementIsTheApplication)
{
    auto application = this->application();
    EXPECT_EQ(this->text(application, "AXRole"), "AXApplication");
    EXPECT_EQ(this->accessibility().pid(application).value, this->fixture_.applicationPid());
    EXPECT_EQ(this->accessibility().pid(this->button()).value, this->fixture_.applicationPid());
}

TYPED_TEST_P(AccessibilityContractTest, ReadsValuesAndReportsMissingAttributes)
{
    auto window = this->withRole("AXWindow");
    EXPECT_EQ(this->text(window, "AXTitle"), StandardDesktop::windowTitle);

    auto missing = this->accessibility().copyAttributeValue(window, "AXNoSuchAttribute");
    EXPECT_EQ(missing.error, AXErrorCode::noValue);
    EXPECT_FALSE(missing.value);

    auto url = this->accessibility().copyAttributeValue(this->withRole("AXWebArea"), "AXURL");
    ASSERT_TRUE(url.ok());
    ASSERT_TRUE(url.value->asUrl());
    EXPECT_EQ(url.value->asUrl()->absoluteString, StandardDesktop::pageUrl);
}

TYPED_TEST_P(AccessibilityContractTest, AttributeNamesIncludeRoleAndChildren)
{
    auto names = this->accessibility().copyAttributeNames(this->withRole("AXWindow"));
    ASSERT_TRUE(names.ok());
    EXPECT_THAT(*names.value, ::testing::IsSupersetOf({ "AXRole", "AXChildren" }));
}

TYPED_TEST_P(AccessibilityContractTest, ChildrenNameTheirParent)
{
    auto application = this->application();
    auto windows = this->elements(application, "AXWindows");
    ASSERT_FALSE(windows.empty());
    for (const AXUIElement& window : windows) {
        auto parent = this->accessibility().copyAttributeValue(window, "AXParent");
        ASSERT_TRUE(parent.ok() && parent.value->asElement());
        EXPECT_EQ(*parent.value->asElement(), application);
    }
    // Through the whole window: every element lists exactly its own children, as many as it counts.
    std::deque<AXUIElement> pending(windows.begin(), windows.end());
    for (int visited = 0; !pending.empty() && visited < 2000; ++visited) {
        AXUIElement element = pending.front();
        pending.pop_front();
        auto children = this->elements(element, "AXChildren");
        // An element without children may have no children attribute at all.
        auto count = this->accessibility().attributeValueCount(element, "AXChildren");
        EXPECT_EQ(count.value.value_or(0), static_cast<int64_t>(children.size()));
        for (const AXUIElement& child : children) {
            auto childParent = this->accessibility().copyAttributeValue(child, "AXParent");
            ASSERT_TRUE(childParent.ok() && childParent.value->asElement());
            EXPECT_EQ(*childParent.value->asElement(), element);
            pending.push_back(child);
        }
    }
}

TYPED_TEST_P(AccessibilityContractTest, ReferencesToOneElementAreEqual)
{
    EXPECT_EQ(this->application(), this->application());
    EXPECT_EQ(this->button(), this->button());
    EXPECT_FALSE(this->button() == this->application());
    EXPECT_FALSE(this->withRole("AXWindow") == this->withRole("AXWebArea"));
}

TYPED_TEST_P(AccessibilityContractTest, HitTestFindsTheButton)
{
    auto button = this->button();
    auto position = this->accessibility().copyAttributeValue(button, "AXPosition");
    auto size = this->accessibility().copyAttributeValue(button, "AXSize");
    ASSERT_TRUE(position.ok() && position.value->asPoint());
    ASSERT_TRUE(size.ok() && size.value->asSize());
    Point origin = *position.value->asPoint();
    Size extent = *size.value->asSize();

    auto hit = this->accessibility().copyElementAtPosition(this->application(),
        static_cast<float>(origin.x + extent.width / 2), static_cast<float>(origin.y + extent.height / 2));
    ASSERT_TRUE(hit.ok());
    EXPECT_EQ(*hit.value, button);
}

TYPED_TEST_P(AccessibilityContractTest, SettableAttributeTakesAWrite)
{
    auto button = this->button();
    EXPECT_EQ(this->accessibility().isAttributeSettable(button, "AXFocused").value, true);
    EXPECT_EQ(this->accessibility().setAttributeValue(button, "AXFocused", Value(true)), AXErrorCode::success);
    auto focused = this->accessibility().copyAttributeValue(button, "AXFocused");
    ASSERT_TRUE(focused.ok());
    EXPECT_EQ(focused.value->asBoolean(), true);
}

TYPED_TEST_P(AccessibilityContractTest, ButtonOffersPress)
{
    auto actions = this->accessibility().copyActionNames(this->button());
    ASSERT_TRUE(actions.ok());
    EXPECT_THAT(*actions.value, ::testing::Contains("AXPress"));
}

REGISTER_TYPED_TEST_SUITE_P(AccessibilityContractTest, ApplicationElementIsTheApplication,
    ReadsValuesAndReportsMissingAttributes, AttributeNamesIncludeRoleAndChildren, ChildrenNameTheirParent,
    ReferencesToOneElementAreEqual, HitTestFindsTheButton, SettableAttributeTakesAWrite, ButtonOffersPress);

} // namespace vardel::testing
