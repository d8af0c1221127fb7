#include "product/ApplicationList.h"

namespace vardel::ApplicationList {

const std::vector<std::string>& chromeBasedBrowserBundleIDs()
{
    static const std::vector<std::string> identifiers = {
        "com.google.Chrome",
        "com.google.Chrome.beta",
        "com.google.Chrome.dev",
        "com.google.Chrome.canary",
        "org.chromium.Chromium",
        "com.microsoft.edgemac",
        "com.microsoft.edgemac.Beta",
        "com.microsoft.edgemac.Dev",
        "com.microsoft.edgemac.Canary",
        "com.brave.Browser",
        "com.brave.Browser.beta",
        "com.brave.Browser.nightly",
        "com.vivaldi.Vivaldi",
        "com.operasoftware.Opera",
        "com.operasoftware.OperaGX",
        "company.thebrowser.Browser",
        "company.thebrowser.dia",
        "com.openai.atlas",
        "ru.yandex.desktop.yandex-browser",
        "com.sidekick.Sidekick",
        "com.pushplaylabs.sidekick",
        "com.naver.Whale",
        "com.coccoc.Coccoc",
        "org.getstation.DesktopApp",
        "com.stack-beta.io",
        "com.shift.browser",
        "net.imput.helium",
    };
    return identifiers;
}

const std::vector<std::string>& webBrowsing()
{
    static const std::vector<std::string> identifiers = [] {
        std::vector<std::string> browsers = {
            "com.apple.Safari",
            "com.apple.SafariTechnologyPreview",
            "org.mozilla.firefox",
            "org.mozilla.firefoxdeveloperedition",
            "org.mozilla.nightly",
            "org.mozilla.librewolf",
            "app.zen-browser.zen",
            "net.waterfox.waterfox",
            "org.torproject.torbrowser",
            "com.kagi.kagimacOS",
        };
        const auto& chromium = chromeBasedBrowserBundleIDs();
        browsers.insert(browsers.end(), chromium.begin(), chromium.end());
        return browsers;
    }();
    return identifiers;
}

} // namespace vardel::ApplicationList
