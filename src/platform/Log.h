#pragma once

#include <string_view>

namespace vardel {

class Log {
public:
    virtual ~Log() = default;
    virtual void warning(std::string_view message) = 0;
    virtual void info(std::string_view message) = 0;
};

} // namespace vardel
