#pragma once

#include "platform/Value.h"
#include "product/TaskActivityDescriptor.h"

#include <cstdint>
#include <ostream>

namespace vardel {

// A time entry stored in the database.
struct TaskActivity {
    int64_t identifier = 0;
    TaskActivityDescriptor descriptor;
    Date createdAt;

    bool operator==(const TaskActivity&) const = default;
};

std::ostream& operator<<(std::ostream&, const TaskActivity&);

} // namespace vardel
