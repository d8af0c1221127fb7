#pragma once

#include "product/IntegrationsUpdater.h"
#include "product/PostSyncUpdater.h"

#include <memory>

namespace vardel {

// The step after each synchronisation: every integration is updated.
class IntegrationsPostSyncUpdater final : public PostSyncUpdater {
public:
    explicit IntegrationsPostSyncUpdater(std::shared_ptr<IntegrationsUpdater> integrationsUpdater)
        : integrationsUpdater_(std::move(integrationsUpdater))
    {
    }

    // The update's outcome reaches the completion unchanged.
    void updateAfterSync(Completion completion) override;

    const std::shared_ptr<IntegrationsUpdater>& integrationsUpdater() const { return integrationsUpdater_; }

private:
    const std::shared_ptr<IntegrationsUpdater> integrationsUpdater_;
};

} // namespace vardel
