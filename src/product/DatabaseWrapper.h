#pragma once

#include "product/ActivityWriter.h"
#include "product/Database.h"
#include "product/DatabaseErrorPresenter.h"
#include "product/SyncManager.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace vardel {

// The process's access to the product database. Start-up configures it with the data folder, or as
// unavailable; the database is opened on first use.
class DatabaseWrapper {
public:
    static DatabaseWrapper& sharedInstance();

    // Each closes a database opened under the previous configuration, after its activity writer
    // wrote what it still held: releasing the database at termination loses no activity.
    void configure(std::filesystem::path dataFolder);
    void configureUnavailable();

    // Installs the alert shown besides the log warning for every database error from now on.
    void setErrorAlert(DatabaseErrorPresenter::Alert);

    // The open database; nullptr when unavailable, not configured, or when it cannot be opened. A
    // failure to open is presented once and not retried until the next configuration.
    Database* database();

    // The writer of recorded activity into the open database; nullptr without one.
    ActivityWriter* activityWriter();

    // This build ships no sample data. The database is opened here, so that a store that cannot
    // be opened is reported at start-up rather than at the first write.
    void generateAllSampleDataIfNeeded();
    // Makes the integrations update the step after each synchronisation.
    void setupPostSyncUpdater();
    // Writes what the activity writer holds, then a backup of the database into the backups
    // folder of the data folder, keeping the newest DatabaseBackups::keptBackups. Logs the outcome.
    void createAutomaticBackup();

    SyncManager& syncManager() { return syncManager_; }

private:
    DatabaseResult<std::unique_ptr<Database>> replaceDamagedStore();
    std::optional<std::filesystem::path> dataFolder_;
    std::unique_ptr<Database> database_;
    // Declared after the database, which it writes to, so that it goes first.
    std::unique_ptr<ActivityWriter> activityWriter_;
    bool openingFailed_ = false;
    DatabaseErrorPresenter presenter_;
    SyncManager syncManager_;
};

} // namespace vardel
