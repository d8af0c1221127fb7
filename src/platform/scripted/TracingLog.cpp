#include "platform/scripted/TracingLog.h"

#include <ostream>

namespace vardel::scripted {

void TracingLog::write(std::string_view level, std::string_view message)
{
    errors_ << message << '\n';
    trace_.write("log", { { "level", level }, { "message", message } });
}

} // namespace vardel::scripted
