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
#include "platform/ProcessWide.h"

#include <map>

namespace vardel {

namespace {

using Registry = std::map<std::string, VDApplicationInfoExtractor, std::less<>>;

void add(Registry& registry, VDApplicationInfoExtractor extractor, std::string_view bundleIdentifier)
{
    if (!bundleIdentifier.empty())
        registry.insert_or_assign(std::string(bundleIdentifier), extractor);
}

template<ApplicationInfoExtractor T>
void addRow(Registry& registry, std::initializer_list<std::string_view> bundleIdentifiers,
    const char* extraIdentifierPreference = nullptr)
{
    auto extractor = VDApplicationInfoExtractor::of<T>();
    for (std::string_view identifier : bundleIdentifiers)
        add(registry, extractor, identifier);
    if (extraIdentifierPreference) {
        if (auto extra = platform().standardUserDefaults().getString(extraIdentifierPreference))
            add(registry, extractor, *extra);
    }
}

// One row per extractor, in this order: a later row wins over an earlier one for the same
// identifier, whether built in or added by a preference.
Registry builtInRegistrations()
{
    Registry registry;
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
        add(registry, VDApplicationInfoExtractor::of<AdobeProjectPathInfoExtractor>(),
            "com.adobe.PremierePro." + std::to_string(version));
    addRow<AdobeProjectPathInfoExtractor>(registry, { "com.adobe.AfterEffects" });
    return registry;
}

// Built when first needed rather than at program load, because the extra identifiers come from the
// preferences of the installed platform.
ProcessWide<Registry> registeredExtractors(builtInRegistrations);

} // namespace

void VDInfoExtractor::addApplicationInfoExtractor(
    VDApplicationInfoExtractor extractor, std::string_view bundleIdentifier)
{
    add(registeredExtractors.get(), extractor, bundleIdentifier);
}

std::optional<VDApplicationInfoExtractor> VDInfoExtractor::registeredExtractorForBundleIdentifier(
    std::string_view bundleIdentifier)
{
    const Registry& registry = registeredExtractors.get();
    if (auto found = registry.find(bundleIdentifier); found != registry.end())
        return found->second;
    return std::nullopt;
}

void VDInfoExtractor::callInfoExtractorForActivity(VDActivity& activity)
{
    if (!activity.applicationBundleIdentifier)
        return;
    auto extractor = registeredExtractorForBundleIdentifier(*activity.applicationBundleIdentifier);
    extractor.value_or(VDApplicationInfoExtractor::of<CatalystInfoExtractor>()).writeDetailsForActivity(activity);
}

} // namespace vardel
