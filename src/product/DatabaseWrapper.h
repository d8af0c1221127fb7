#pragma once

#include "product/Database.h"
#include "product/DatabaseErrorPresenter.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace vardel {

// The process's access to the product database. Start-up configures it with the data folder, or as
// unavailable; the database is opened on first use.
class DatabaseWrapper {
public:
    static DatabaseWrapper& sharedInstance();

    // Each closes a database opened under the previous configuration.
    void configure(std::filesystem::path dataFolder);
    void configureUnavailable();

    // Installs the alert shown besides the log warning for every database error from now on.
    void setErrorAlert(DatabaseErrorPresenter::Alert);

    // The open database; nullptr when unavailable, not configured, or when it cannot be opened. A
    // failure to open is presented once and not retried until the next configuration.
    Database* database();

private:
    std::optional<std::filesystem::path> dataFolder_;
    std::unique_ptr<Database> database_;
    bool openingFailed_ = false;
    DatabaseErrorPresenter presenter_;
};

} // namespace vardel
