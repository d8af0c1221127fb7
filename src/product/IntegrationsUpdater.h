#pragma once

#include "product/DatabaseResult.h"
#include "product/VardelIntegrationsDatabaseAdapter.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vardel {

// Brings the product's integrations up to date. This build has no outside service to ask, so an
// update refreshes the stored integrations from the database alone.
class IntegrationsUpdater {
public:
    // How many integrations were refreshed, or why the update failed.
    using Result = DatabaseResult<int64_t>;

    explicit IntegrationsUpdater(VardelIntegrationsDatabaseAdapter adapter)
        : adapter_(adapter)
    {
    }

    // Updates the named integrations, or all of them for nothing; the completion runs before this
    // returns.
    void updateIntegrations(
        const std::optional<std::vector<std::string>>& identifiers, const std::function<void(Result)>& completion);

private:
    VardelIntegrationsDatabaseAdapter adapter_;
};

} // namespace vardel
