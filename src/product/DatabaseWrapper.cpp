#include "product/DatabaseWrapper.h"

#include "platform/ProcessWide.h"

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
    if (!opened.ok()) {
        openingFailed_ = true;
        presenter_.present("DatabaseWrapper", opened.error());
        return nullptr;
    }
    database_ = std::move(opened).value();
    database_->setErrorPresenter(presenter_);
    return database_.get();
}

} // namespace vardel
