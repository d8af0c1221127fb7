#pragma once

#include "platform/VDActivity.h"

#include <concepts>
#include <string_view>

namespace vardel {

// A per-application extractor: a class with one static operation that refines an activity record
// from the application's own accessibility tree. The registry holds the class, never an instance.
template<typename T>
concept ApplicationInfoExtractor = requires(VDActivity& activity)
{
    {
        T::writeDetailsForActivity(activity)
        } -> std::same_as<void>;
    {
        T::className
        } -> std::convertible_to<std::string_view>;
};

struct VDApplicationInfoExtractor {
    std::string_view className;
    void (*writeDetailsForActivity)(VDActivity&) = nullptr;

    bool operator==(const VDApplicationInfoExtractor& other) const { return className == other.className; }

    template<ApplicationInfoExtractor T> static constexpr VDApplicationInfoExtractor of()
    {
        return { T::className, &T::writeDetailsForActivity };
    }
};

} // namespace vardel
