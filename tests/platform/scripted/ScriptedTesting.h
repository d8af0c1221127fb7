#pragma once

#include "platform/scripted/ScriptedDesktop.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vardel::scripted::testing {

using Json = nlohmann::ordered_json;

inline std::unique_ptr<ScriptedDesktop> desktopFrom(const Json& scenario)
{
    auto desktop = ScriptedDesktop::fromJson(scenario.dump());
    desktop->setRecordingEvents(true);
    return desktop;
}

// The error line a scenario gives, or "loaded".
inline std::string loadError(std::string_view text)
{
    try {
        ScriptedDesktop::fromJson(text);
        return "loaded";
    } catch (const ScenarioError& error) {
        return error.what();
    }
}

// The recorded events with that name, without "t" and "event" unless asked.
inline std::vector<Json> events(const ScriptedDesktop& desktop, const std::string& name, bool withTime = false)
{
    std::vector<Json> found;
    for (Json event : desktop.recordedEvents()) {
        if (event["event"] != name)
            continue;
        event.erase("event");
        if (!withTime)
            event.erase("t");
        found.push_back(std::move(event));
    }
    return found;
}

inline AXUIElement element(ScriptedDesktop& desktop, const std::string& id)
{
    auto found = desktop.element(id);
    if (!found)
        throw std::runtime_error("no element " + id);
    return *found;
}

} // namespace vardel::scripted::testing
