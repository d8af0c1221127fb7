#pragma once

#include "product/SupportAttachment.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vardel {

// Support requests, kept on this machine: each becomes a folder under "support" in the data folder,
// holding body.txt and the attachments, for the user to send or a support engineer to collect.
class SupportRequests {
public:
    static SupportRequests& sharedInstance();

    void configure(std::filesystem::path dataFolder) { dataFolder_ = std::move(dataFolder); }

    // Writes the request to a new folder and traces it. Attachment names are made safe: a name can
    // neither leave the folder nor replace body.txt or another attachment. The folder, or nothing
    // when the request could not be written (logged).
    std::optional<std::filesystem::path> createRequest(
        const std::string& body, const std::vector<SupportAttachment>& attachments);

private:
    std::optional<std::filesystem::path> createRequestFolder();

    std::optional<std::filesystem::path> dataFolder_;
    uint64_t requestsCreated_ = 0;
};

} // namespace vardel
