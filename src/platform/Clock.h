#pragma once

#include "platform/Value.h"

namespace vardel {

class Clock {
public:
    virtual ~Clock() = default;
    virtual Date now() = 0;
};

} // namespace vardel
