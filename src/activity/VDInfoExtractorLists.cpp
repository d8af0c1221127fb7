#include "activity/VDInfoExtractor.h"
#include "platform/Platform.h"
#include "platform/ProcessWide.h"

namespace vardel {

namespace {

enum class Combination { added, replacesBuiltIn };

// Built on first use from the built-in contents and a list preference of the user defaults; a
// preference that is not a list of text leaves the built-in contents alone.
BundleIdentifierSet buildSet(BundleIdentifierSet builtIn, const char* preferenceKey, Combination combination)
{
    auto extra = platform().standardUserDefaults().getStringList(preferenceKey);
    if (!extra)
        return builtIn;
    if (combination == Combination::replacesBuiltIn)
        builtIn.clear();
    builtIn.insert(extra->begin(), extra->end());
    return builtIn;
}

ProcessWide<BundleIdentifierSet> alwaysIgnoredBundleIdentifiers([] {
    return buildSet(
        {
            "com.apple.loginwindow",
            "com.apple.securityagent",
            "com.apple.UnmountAssistantAgent",
            "com.apple.UserNotificationCenter",
            "com.apple.systemuiserver",
            "com.apple.ScreenSaver.Engine",
            "com.apple.coreservices.uiagent",
            "com.apple.WebKit.PluginHost",
            "com.apple.AutomatorRunner",
            "com.apple.frameworks.diskimages.uiagent",
            "com.apple.iCal.helper",
            "com.apple.dock",
            "com.apple.dashboard.client",
            "com.apple.dock.syncclient",
            "com.apple.dashboard.installer",
            "com.apple.dashboard.widgetadvisory",
            "com.apple.FontRegistryUIAgent",
            "com.apple.eap8021x.eaptlstrust",
            "com.apple.NetAuthAgent",
            "com.apple.airport.helper",
            "com.apple.FollowUpUI",
            "com.apple.SecurityAgent",
            "com.apple.locationmenu",
        },
        "extraAlwaysIgnoredApplicationBundleIdentifiers", Combination::added);
});

ProcessWide<BundleIdentifierSet> alwaysIgnoredExecutableNames(
    [] { return buildSet({ "ccc_helper" }, "extraAlwaysIgnoredApplicationExecutableNames", Combination::added); });

ProcessWide<BundleIdentifierSet> noWindowTitleBundleIdentifiers([] {
    return buildSet({ "info.quenby.VardelHelper", "info.quenby.Vardel-setapp.VardelHelper", "com.blizzard.Starcraft" },
        "extraNoWindowTitleApplicationBundleIdentifiers", Combination::added);
});

ProcessWide<BundleIdentifierSet> noAccessibilityBundleIdentifiers([] {
    return buildSet(
        {
            "com.mathworks.matlab",
            "org.rstudio.RStudio",
            "org.datavyu",
            "com.serato.seratodj",
            "com.moleskine.journey",
            "com.codeux.apps.textual",
            "org.gephi",
            "com.aquafold.datastudio.DataStudio",
        },
        "extraNoAccessibilityApplicationBundleIdentifiers", Combination::replacesBuiltIn);
});

ProcessWide<BundleIdentifierSet> noPathExtractionBundleIdentifiers([] {
    return buildSet({}, "VDInfoExtractor_extraNoPathExtractionApplicationBundleIdentifiers", Combination::added);
});

} // namespace

const BundleIdentifierSet& VDInfoExtractor::alwaysIgnoredApplicationBundleIdentifiers()
{
    return alwaysIgnoredBundleIdentifiers.get();
}

const BundleIdentifierSet& VDInfoExtractor::alwaysIgnoredApplicationExecutableNames()
{
    return alwaysIgnoredExecutableNames.get();
}

const BundleIdentifierSet& VDInfoExtractor::noWindowTitleApplicationBundleIdentifiers()
{
    return noWindowTitleBundleIdentifiers.get();
}

const BundleIdentifierSet& VDInfoExtractor::noAccessibilityApplicationBundleIdentifiers()
{
    return noAccessibilityBundleIdentifiers.get();
}

const BundleIdentifierSet& VDInfoExtractor::noPathExtractionApplicationBundleIdentifiers()
{
    return noPathExtractionBundleIdentifiers.get();
}

} // namespace vardel
