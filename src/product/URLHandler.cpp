#include "product/URLHandler.h"

#include "platform/Platform.h"

namespace vardel {

void URLHandler::handleGetURL(const std::string& url)
{
    platform().log().info("Received URL " + url);
}

} // namespace vardel
