#pragma once

#include "platform/Value.h"
#include "product/Database.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vardel {

// The integrations table of the product database: the product's connections to outside services.
class VardelIntegrationsDatabaseAdapter {
public:
    explicit VardelIntegrationsDatabaseAdapter(Database& db)
        : db_(db)
    {
    }

    // Stamps the named integrations (every one when nothing is named) as refreshed at `at`, in one
    // transaction, and gives how many were. A name that is not stored fails the whole refresh.
    DatabaseResult<int64_t> markRefreshed(const std::optional<std::vector<std::string>>& identifiers, Date at);

private:
    DatabaseResult<int64_t> markAllRefreshed(Date at);
    DatabaseResult<int64_t> markEachRefreshed(const std::vector<std::string>& identifiers, Date at);

    Database& db_;
};

} // namespace vardel
