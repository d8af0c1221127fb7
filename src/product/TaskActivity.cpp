#include "product/TaskActivity.h"

namespace vardel {

std::ostream& operator<<(std::ostream& stream, const TaskActivity& activity)
{
    return stream << "time entry " << activity.identifier << ": " << activity.descriptor;
}

} // namespace vardel
