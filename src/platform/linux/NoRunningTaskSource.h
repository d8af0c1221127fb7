#pragma once

#include "platform/RunningTaskSource.h"

namespace vardel::linux_desktop {

// The product's task timer does not run on this desktop yet.
class NoRunningTaskSource final : public RunningTaskSource {
public:
    std::optional<RunningTaskTimer> runningTask() const override { return std::nullopt; }
};

} // namespace vardel::linux_desktop
