// vardel-tracker: the tracker process. With VARDEL_DESKTOP it runs on the scripted desktop that the
// scenario file describes, in virtual time.

#include "platform/Platform.h"
#include "platform/scripted/ScriptedDesktop.h"
#include "product/AnalyticsWrapper.h"
#include "product/DataFolder.h"
#include "product/DatabaseWrapper.h"
#include "product/InfoLogger.h"
#include "product/StatusItemInfoProvider.h"
#include "product/SupportRequests.h"
#include "shell/VDHelperAppDelegate.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int usageErrorStatus = 2;

const char* environment(const char* name)
{
    const char* value = std::getenv(name);
    return value && *value ? value : nullptr;
}

// The trace destination: standard output for "-", else the named file.
std::ostream* openTrace(const char* destination, std::ofstream& file)
{
    if (std::string(destination) == "-")
        return &std::cout;
    file.open(destination, std::ios::out | std::ios::trunc);
    return file ? &file : nullptr;
}

// The product's stores live in the data folder; the scenario may say the database is unavailable.
void configureProductStores(const vardel::scripted::ScriptedDesktop& desktop)
{
    auto dataFolder = vardel::DataFolder::fromEnvironment(std::getenv);
    if (dataFolder) {
        vardel::AnalyticsWrapper::sharedInstance().configure(*dataFolder);
        vardel::SupportRequests::sharedInstance().configure(*dataFolder);
    }
    if (dataFolder && desktop.databaseAvailable())
        vardel::DatabaseWrapper::sharedInstance().configure(*dataFolder);
    else
        vardel::DatabaseWrapper::sharedInstance().configureUnavailable();
}

// The status item shows today's total from the activity store and the sync manager's status.
void connectStatusItemToStore()
{
    vardel::StatusItemInfoProvider::sharedInstance().setSources({
        [](vardel::Date from, vardel::Date to) {
            vardel::Database* database = vardel::DatabaseWrapper::sharedInstance().database();
            if (!database)
                return 0.0;
            auto total = database->totalActivitySecondsBetween(from, to);
            return total.ok() ? total.value() : 0.0;
        },
        [] { return vardel::DatabaseWrapper::sharedInstance().syncManager().statusTitle(); },
    });
}

int runTracker(vardel::Platform& platform, const std::vector<std::string>& arguments)
{
    vardel::InfoLogger infoLogger;
    vardel::VDHelperAppDelegate delegate(infoLogger);
    delegate.awakeFromNib(arguments);
    vardel::VDHelperAppDelegate::applicationDidFinishLaunching(arguments);
    int status = platform.runLoop().run();
    // Reaching the scenario's end ends the run as a termination request does: the recording
    // service writes what it holds.
    infoLogger.prepareForShutdownWithIsRelaunch(false);
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> arguments(argv, argv + argc);
    const char* scenario = environment("VARDEL_DESKTOP");
    if (!scenario) {
        std::cerr << "vardel-tracker: this build has no real desktop backend yet; set VARDEL_DESKTOP to a scenario "
                     "file to run on the scripted desktop\n";
        return usageErrorStatus;
    }

    std::unique_ptr<vardel::scripted::ScriptedDesktop> desktop;
    try {
        desktop = vardel::scripted::ScriptedDesktop::load(scenario);
    } catch (const vardel::scripted::ScenarioError& error) {
        std::cerr << error.what() << '\n';
        return usageErrorStatus;
    }

    std::ofstream traceFile;
    if (const char* traceDestination = environment("VARDEL_TRACE")) {
        std::ostream* trace = openTrace(traceDestination, traceFile);
        if (!trace) {
            std::cerr << "vardel-tracker: cannot write the trace to " << traceDestination << '\n';
            return usageErrorStatus;
        }
        desktop->setTraceStream(trace);
    }

    vardel::Platform::install(desktop.get());
    configureProductStores(*desktop);
    connectStatusItemToStore();
    int status = runTracker(*desktop, arguments);
    // Closes the database, so that its write-ahead log is merged back before the process ends.
    vardel::DatabaseWrapper::sharedInstance().configureUnavailable();
    desktop->trace().write("exit", { { "status", status }, { "reason", desktop->stopReason() } });
    vardel::Platform::install(nullptr);
    return status;
}
