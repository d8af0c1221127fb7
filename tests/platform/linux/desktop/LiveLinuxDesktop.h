#pragma once

// One headless desktop per test process, with the contract application running and the Linux
// backend installed on it. libatspi connects to one accessibility bus per process, so the desktop
// lives until the process ends rather than per test.

#include "platform/JsonLinesTrace.h"
#include "platform/linux/LinuxDesktop.h"
#include "platform/linux/MemoryPreferenceStore.h"
#include "support/HeadlessDesktop.h"

#include <filesystem>
#include <fstream>
#include <memory>

namespace vardel::testing {

struct LiveLinuxDesktop {
    static constexpr const char* contractBundleIdentifier = "com.example.Contract";

    HeadlessDesktop desktop;
    JsonLinesTrace trace { [] { return 0.0; } };
    linux_desktop::MemoryPreferenceStore defaults { "defaults", trace };
    linux_desktop::MemoryPreferenceStore preferences { "preferences", trace };
    linux_desktop::MemoryDefaultsDomains domains { trace };
    std::filesystem::path desktopEntry;
    std::unique_ptr<linux_desktop::LinuxDesktop> platform;
    pid_t contractApplication = 0;

    LiveLinuxDesktop()
    {
        // The contract application's desktop entry, found by its window class; the preference maps
        // its id to an identifier of our choosing.
        auto applications = desktop.scratchFolder() / "home" / ".local" / "share" / "applications";
        std::filesystem::create_directories(applications);
        desktopEntry = applications / "vardel-contract.desktop";
        std::ofstream(desktopEntry) << "[Desktop Entry]\nType=Application\nName=Contract Application\nExec="
                                    << VARDEL_CONTRACT_APPLICATION_PATH
                                    << "\nIcon=vardel-contract\nStartupWMClass=Vardel-contract-application\n";
        defaults.setObject("LinuxDesktop_applicationIdentifiers",
            Value(Value::Dictionary { { "vardel-contract", Value(contractBundleIdentifier) } }));
        platform = linux_desktop::LinuxDesktop::open({ defaults, preferences, domains }, trace);
        contractApplication = desktop.start(VARDEL_CONTRACT_APPLICATION_PATH, {});
        desktop.waitForActiveWindow(contractApplication, "Contract Window");
    }
};

inline LiveLinuxDesktop& liveLinuxDesktop()
{
    static LiveLinuxDesktop live;
    return live;
}

} // namespace vardel::testing
