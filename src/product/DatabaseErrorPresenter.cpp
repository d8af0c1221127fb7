#include "product/DatabaseErrorPresenter.h"

#include "platform/Platform.h"

#include <string>

namespace vardel {

void DatabaseErrorPresenter::present(std::string_view origin, const DatabaseError& error) const
{
    platform().log().warning("[" + std::string(origin) + "] " + error.message);
    if (alert_)
        alert_(error);
}

} // namespace vardel
