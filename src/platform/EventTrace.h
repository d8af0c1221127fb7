#pragma once

#include <nlohmann/json.hpp>

#include <string_view>

namespace vardel {

// The record of everything the program does that a user or the product could observe. Each event
// is written with the current time; a trace that nobody asked for drops everything.
class EventTrace {
public:
    virtual ~EventTrace() = default;
    virtual void write(std::string_view event, nlohmann::ordered_json fields) = 0;
};

} // namespace vardel
