#pragma once

#include "extractors/BuiltInExtractors.h"
#include "platform/Platform.h"
#include "platform/ProcessWide.h"
#include "platform/scripted/ScriptedDesktop.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>

namespace vardel::testing {

using Json = nlohmann::ordered_json;

// A test that runs the logic on a scripted desktop built from a compact JSON scenario, with the
// extractors the tracker installs. Process-wide state starts afresh in every test.
class ScriptedDesktopTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        BuiltInExtractors::install();
        ProcessWideState::resetAll();
    }

    void TearDown() override
    {
        Platform::install(nullptr);
        ProcessWideState::resetAll();
    }

    scripted::ScriptedDesktop& load(const Json& scenario)
    {
        Platform::install(nullptr);
        desktop_ = scripted::ScriptedDesktop::fromJson(scenario.dump());
        desktop_->setRecordingEvents(true);
        Platform::install(desktop_.get());
        return *desktop_;
    }

    scripted::ScriptedDesktop& desktop() { return *desktop_; }

    AXUIElement element(const std::string& id)
    {
        auto found = desktop_->element(id);
        if (!found)
            throw std::runtime_error("no element " + id);
        return *found;
    }

    // The recorded events with that name.
    std::vector<Json> events(const std::string& name) const
    {
        std::vector<Json> matching;
        for (const auto& event : desktop_->recordedEvents()) {
            if (event["event"] == name)
                matching.push_back(event);
        }
        return matching;
    }

private:
    std::unique_ptr<scripted::ScriptedDesktop> desktop_;
};

// Compact builders for scenario trees.
inline Json ref(const std::string& id)
{
    return { { "ref", id } };
}

inline Json application(int pid, const std::string& bundleIdentifier, Json ui = nullptr)
{
    Json app = { { "pid", pid }, { "bundleIdentifier", bundleIdentifier }, { "localizedName", bundleIdentifier } };
    if (!ui.is_null())
        app["ui"] = std::move(ui);
    return app;
}

// A list given as { item }: Clang reads a lone item in braces as that item, GCC as a list of it, so
// helpers that take a list of objects pass it through here.
inline Json asList(Json items)
{
    if (items.is_object())
        return Json::array({ std::move(items) });
    return items;
}

inline Json node(const std::string& role, Json attributes = Json::object(), Json children = Json::array())
{
    Json made = { { "AXRole", role } };
    for (auto& [key, value] : attributes.items())
        made[key] = value;
    children = asList(std::move(children));
    if (!children.empty())
        made["children"] = std::move(children);
    return made;
}

inline Json withId(Json element, const std::string& id)
{
    element["id"] = id;
    return element;
}

inline Json staticText(const std::string& value)
{
    return node("AXStaticText", { { "AXValue", value } });
}

inline Json group(Json children, Json attributes = Json::object())
{
    return node("AXGroup", std::move(attributes), std::move(children));
}

// A desktop with one frontmost application.
inline Json desktopWith(Json app)
{
    int pid = app["pid"];
    return { { "applications", Json::array({ std::move(app) }) }, { "frontmost", pid } };
}

} // namespace vardel::testing
