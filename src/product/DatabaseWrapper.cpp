#include "product/DatabaseWrapper.h"

#include "platform/Platform.h"
#include "platform/ProcessWide.h"
#include "product/DamagedStores.h"
#include "product/DatabaseBackups.h"
#include "product/IntegrationsPostSyncUpdater.h"

namespace vardel {

namespace {
ProcessWideVariable<DatabaseWrapper> sharedWrapper;
}

DatabaseWrapper& DatabaseWrapper::sharedInstance()
{
    return sharedWrapper.get();
}

void DatabaseWrapper::configure(std::filesystem::path dataFolder)
{
    configureUnavailable();
    dataFolder_ = std::move(dataFolder);
}

void DatabaseWrapper::configureUnavailable()
{
    dataFolder_.reset();
    if (activityWriter_)
        activityWriter_->flush();
    activityWriter_.reset();
    database_.reset();
    openingFailed_ = false;
}

void DatabaseWrapper::setErrorAlert(DatabaseErrorPresenter::Alert alert)
{
    presenter_.setAlert(std::move(alert));
    if (database_)
        database_->setErrorPresenter(presenter_);
}

Database* DatabaseWrapper::database()
{
    if (database_ || !dataFolder_ || openingFailed_)
        return database_.get();
    auto opened = Database::open(*dataFolder_);
    if (!opened.ok() && opened.error().kind == DatabaseError::Kind::damaged)
        opened = replaceDamagedStore();
    if (!opened.ok()) {
        openingFailed_ = true;
        presenter_.present("DatabaseWrapper", opened.error());
        return nullptr;
    }
    database_ = std::move(opened).value();
    database_->setErrorPresenter(presenter_);
    return database_.get();
}

// A damaged store is kept aside rather than deleted, and recording goes on in a fresh one.
DatabaseResult<std::unique_ptr<Database>> DatabaseWrapper::replaceDamagedStore()
{
    auto kept = DamagedStores::setAside(*dataFolder_, platform().clock().now());
    if (!kept)
        return DatabaseError { DatabaseError::Kind::damaged,
            "The activity store in " + dataFolder_->string() + " is damaged and cannot be moved aside." };
    platform().log().warning(DamagedStores::describe(*dataFolder_, *kept));
    return Database::open(*dataFolder_);
}

ActivityWriter* DatabaseWrapper::activityWriter()
{
    if (!activityWriter_) {
        if (Database* opened = database())
            activityWriter_ = std::make_unique<ActivityWriter>(*opened);
    }
    return activityWriter_.get();
}

void DatabaseWrapper::generateAllSampleDataIfNeeded()
{
    database();
}

void DatabaseWrapper::setupPostSyncUpdater()
{
    ActivityWriter* writer = activityWriter();
    if (!writer)
        return;
    auto updater = std::make_shared<IntegrationsUpdater>(VardelIntegrationsDatabaseAdapter(*database_));
    writer->setPostSyncUpdater(std::make_unique<IntegrationsPostSyncUpdater>(std::move(updater)));
}

void DatabaseWrapper::createAutomaticBackup()
{
    Database* opened = database();
    if (!opened)
        return;
    if (ActivityWriter* writer = activityWriter())
        writer->flush();
    auto backup = DatabaseBackups::create(*opened, *dataFolder_, platform().clock().now());
    if (backup.ok())
        platform().log().info("Automatic backup written to " + backup.value().string());
    else
        platform().log().warning(backup.error().message);
}

} // namespace vardel
