#include "extractors/BuiltInExtractors.h"

#include "activity/VDInfoExtractor.h"
#include "activity/WebAreaTitleInfoExtractor.h"
#include "activity/WebAreaURLInfoExtractor.h"
#include "extractors/AdobeProjectPathInfoExtractor.h"
#include "extractors/AmazonChimeInfoExtractor.h"
#include "extractors/CatalystInfoExtractor.h"
#include "extractors/ChatGPTAtlasInfoExtractor.h"
#include "extractors/ChatGPTInfoExtractor.h"
#include "extractors/ChromeProfileInfoExtractor.h"
#include "extractors/DiscordInfoExtractor.h"
#include "extractors/FinalCutInfoExtractor.h"
#include "extractors/FirefoxInfoExtractor.h"
#include "extractors/GitHubDesktopInfoExtractor.h"
#include "extractors/MailWritingInfoExtractor.h"
#include "extractors/MicrosoftTeamsInfoExtractor.h"
#include "extractors/MimestreamInfoExtractor.h"
#include "extractors/NewOutlookInfoExtractor.h"
#include "extractors/NotesInfoExtractor.h"
#include "extractors/NotionInfoExtractor.h"
#include "extractors/SafariInfoExtractor.h"
#include "extractors/SignalInfoExtractor.h"
#include "extractors/SlackInfoExtractor.h"
#include "extractors/SparkInfoExtractor.h"
#include "extractors/WhatsAppInfoExtractor.h"
#include "platform/Platform.h"

namespace vardel {

namespace {

template<ApplicationInfoExtractor T>
void addRow(ExtractorRegistry& registry, std::initializer_list<std::string_view> bundleIdentifiers,
    const char* extraIdentifierPreference = nullptr)
{
    auto extractor = VDApplicationInfoExtractor::of<T>();
    for (std::string_view identifier : bundleIdentifiers)
        VDInfoExtractor::addTo(registry, extractor, identifier);
    if (extraIdentifierPreference) {
        if (auto extra = platform().standardUserDefaults().getString(extraIdentifierPreference))
            VDInfoExtractor::addTo(registry, extractor, *extra);
    }
}

// One row per extractor, in this order: a later row wins over an earlier one for the same
// identifier, whether built in or added by a preference.
ExtractorRegistry builtInRegistrations()
{
    ExtractorRegistry registry;
    addRow<FinalCutInfoExtractor>(registry,
        { "com.apple.FinalCut", "com.apple.FinalCutTrial", "com.apple.FinalCutPro", "com.apple.FinalCutPro10" });
    addRow<FirefoxInfoExtractor>(registry,
        { "org.mozilla.firefox", "org.mozilla.firefoxdeveloperedition", "org.mozilla.nightly", "org.mozilla.librewolf",
            "app.zen-browser.zen" },
        "VDInfoExtractor_extraBundleIdentifier_firefox");
    addRow<SafariInfoExtractor>(registry, { "com.apple.Safari", "com.apple.SafariTechnologyPreview" },
        "VDInfoExtractor_extraBundleIdentifier_safari");
    addRow<WebAreaURLInfoExtractor>(registry,
        { "company.thebrowser.dia", "org.getstation.DesktopApp", "com.stack-beta.io", "com.shift.browser" },
        "VDInfoExtractor_extraBundleIdentifier_webAreaURL");
    addRow<ChatGPTAtlasInfoExtractor>(registry, { "com.openai.atlas" });
    addRow<MailWritingInfoExtractor>(registry, { "com.apple.mail" });
    addRow<NotesInfoExtractor>(registry, { "com.apple.Notes" });
    addRow<SlackInfoExtractor>(registry, { "com.tinyspeck.slackmacgap" });
    addRow<DiscordInfoExtractor>(registry, { "com.hnc.Discord" });
    addRow<AmazonChimeInfoExtractor>(registry, { "com.amazon.Amazon-Chime" });
    addRow<WhatsAppInfoExtractor>(registry, { "WhatsApp", "desktop.WhatsApp", "net.whatsapp.WhatsApp" });
    addRow<SignalInfoExtractor>(registry, { "org.whispersystems.signal-desktop" });
    addRow<NotionInfoExtractor>(registry, { "notion.id" });
    addRow<MicrosoftTeamsInfoExtractor>(registry, { "com.microsoft.teams", "com.microsoft.teams2" });
    addRow<NewOutlookInfoExtractor>(registry, { "com.microsoft.Outlook" });
    addRow<GitHubDesktopInfoExtractor>(registry, { "com.github.GitHubClient" });
    addRow<SparkInfoExtractor>(registry, { "com.readdle.SparkDesktop", "com.readdle.SparkDesktop.appstore" });
    addRow<ChatGPTInfoExtractor>(registry, { "com.openai.chat" });
    addRow<MimestreamInfoExtractor>(registry, { "com.mimestream.Mimestream" });
    addRow<WebAreaTitleInfoExtractor>(registry,
        { "com.canva.CanvaDesktop", "com.superhuman.electron", "io.productive", "com.anthropic.claudefordesktop" },
        "VDInfoExtractor_extraBundleIdentifier_webAreaTitle");
    addRow<ChromeProfileInfoExtractor>(registry,
        { "com.google.Chrome", "com.google.Chrome.canary", "com.google.Chrome.beta", "com.google.Chrome.dev",
            "org.chromium.Chromium" });
    for (int version = 10; version <= 29; ++version)
        VDInfoExtractor::addTo(registry, VDApplicationInfoExtractor::of<AdobeProjectPathInfoExtractor>(),
            "com.adobe.PremierePro." + std::to_string(version));
    addRow<AdobeProjectPathInfoExtractor>(registry, { "com.adobe.AfterEffects" });
    return registry;
}

} // namespace

void BuiltInExtractors::install()
{
    VDInfoExtractor::setExtractorCatalogue(
        ExtractorCatalogue { builtInRegistrations, VDApplicationInfoExtractor::of<CatalystInfoExtractor>() });
}

} // namespace vardel
