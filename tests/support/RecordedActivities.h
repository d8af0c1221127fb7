#pragma once

#include "platform/Value.h"
#include "product/RecordedActivity.h"

#include <optional>
#include <string>

namespace vardel::testing {

// 2026-01-05T09:00:00Z, the scripted desktop's default start.
constexpr double nine = 1767603600;

inline Date at(double secondsAfterNine)
{
    return Date { nine + secondsAfterNine };
}

// The record of an application "com.example.NAME" named NAME.
inline RecordedActivity inApplication(const std::string& name, std::optional<std::string> windowTitle = std::nullopt)
{
    RecordedActivity activity;
    activity.bundleIdentifier = "com.example." + name;
    activity.applicationName = name;
    activity.windowTitle = std::move(windowTitle);
    return activity;
}

} // namespace vardel::testing
