#include "product/IntegrationsUpdater.h"

#include "platform/Platform.h"

namespace vardel {

void IntegrationsUpdater::updateIntegrations(
    const std::optional<std::vector<std::string>>& identifiers, const std::function<void(Result)>& completion)
{
    completion(adapter_.markRefreshed(identifiers, platform().clock().now()));
}

} // namespace vardel
