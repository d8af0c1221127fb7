#pragma once

#include "platform/PropertyListFiles.h"

#include <nlohmann/json.hpp>

namespace vardel::linux_desktop {

// Linux has no property lists: the files the logic reads are JSON files at the same paths, objects
// becoming dictionaries, arrays lists, and texts, numbers and booleans themselves.
class JsonPropertyListFiles final : public PropertyListFiles {
public:
    std::optional<Value> read(const std::string& path) override;

    // Nothing for null, or a container holding one.
    static std::optional<Value> valueOf(const nlohmann::json&);
};

} // namespace vardel::linux_desktop
