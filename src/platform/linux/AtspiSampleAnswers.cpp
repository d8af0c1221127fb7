#include "platform/linux/AtspiSampleAnswers.h"

#include <atspi/atspi.h>

namespace vardel::linux_desktop {

AtspiSampleAnswers::AtspiSampleAnswers(std::chrono::milliseconds lifetime)
    : lifetime_(lifetime)
{
}

AtspiSampleAnswers::Answers& AtspiSampleAnswers::about(AtspiAccessible* accessible, Clock::time_point now)
{
    if (!started_ || now - *started_ > lifetime_ || now < *started_) {
        entries_.clear();
        started_ = now;
    }
    auto [entry, added] = entries_.try_emplace(accessible);
    if (added)
        entry->second.accessible.reset(static_cast<AtspiAccessible*>(g_object_ref(accessible)));
    return entry->second.answers;
}

void AtspiSampleAnswers::forget()
{
    entries_.clear();
    started_.reset();
}

} // namespace vardel::linux_desktop
