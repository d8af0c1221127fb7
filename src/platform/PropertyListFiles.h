#pragma once

#include "platform/Value.h"

#include <optional>
#include <string>

namespace vardel {

// Property-list files of the system and of application bundles, such as localised string tables.
class PropertyListFiles {
public:
    virtual ~PropertyListFiles() = default;

    // The file's contents, or nothing when it does not exist or cannot be read.
    virtual std::optional<Value> read(const std::string& path) = 0;
};

} // namespace vardel
