#include "product/TaskActivityDescriptor.h"

#include "platform/ValueJson.h"

namespace vardel {

std::ostream& operator<<(std::ostream& stream, const TaskActivityDescriptor& descriptor)
{
    return stream << '"' << descriptor.title << "\" (" << descriptor.project.value_or("no project") << ") "
                  << ValueJson::formatIso8601(descriptor.start) << " to " << ValueJson::formatIso8601(descriptor.end);
}

} // namespace vardel
