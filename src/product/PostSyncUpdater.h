#pragma once

#include "product/DatabaseResult.h"

#include <cstdint>
#include <functional>

namespace vardel {

// The one step the activity writer runs after each synchronisation.
class PostSyncUpdater {
public:
    // How many records the step refreshed, or why it failed.
    using Result = DatabaseResult<int64_t>;
    using Completion = std::function<void(Result)>;

    virtual ~PostSyncUpdater() = default;

    virtual void updateAfterSync(Completion) = 0;
};

} // namespace vardel
