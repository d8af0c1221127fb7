#include "activity/VDInfoExtractor.h"
#include "activity/WebAreaTitleInfoExtractor.h"
#include "activity/WebAreaURLInfoExtractor.h"
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
    addRow<WebAreaURLInfoExtractor>(registry,
        { "company.thebrowser.dia", "org.getstation.DesktopApp", "com.stack-beta.io", "com.shift.browser" },
        "VDInfoExtractor_extraBundleIdentifier_webAreaURL");
    addRow<WebAreaTitleInfoExtractor>(registry,
        { "com.canva.CanvaDesktop", "com.superhuman.electron", "io.productive", "com.anthropic.claudefordesktop" },
        "VDInfoExtractor_extraBundleIdentifier_webAreaTitle");
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
    if (auto extractor = registeredExtractorForBundleIdentifier(*activity.applicationBundleIdentifier))
        extractor->writeDetailsForActivity(activity);
}

} // namespace vardel
