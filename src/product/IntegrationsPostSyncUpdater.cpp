#include "product/IntegrationsPostSyncUpdater.h"

namespace vardel {

void IntegrationsPostSyncUpdater::updateAfterSync(Completion completion)
{
    integrationsUpdater_->updateIntegrations(std::nullopt, completion);
}

} // namespace vardel
