#include "activity/VDInfoExtractor.h"
#include "platform/ProcessWide.h"

namespace vardel {

namespace {

std::optional<ExtractorCatalogue>& installedCatalogue()
{
    static std::optional<ExtractorCatalogue> catalogue;
    return catalogue;
}

// Built when first needed rather than at program load, because the catalogue's extra identifiers
// come from the preferences of the installed platform.
ProcessWide<ExtractorRegistry> registeredExtractors([] {
    const auto& catalogue = installedCatalogue();
    return catalogue ? catalogue->builtInRegistrations() : ExtractorRegistry {};
});

} // namespace

void VDInfoExtractor::setExtractorCatalogue(std::optional<ExtractorCatalogue> catalogue)
{
    installedCatalogue() = catalogue;
}

void VDInfoExtractor::addApplicationInfoExtractor(
    VDApplicationInfoExtractor extractor, std::string_view bundleIdentifier)
{
    addTo(registeredExtractors.get(), extractor, bundleIdentifier);
}

void VDInfoExtractor::addTo(
    ExtractorRegistry& registry, VDApplicationInfoExtractor extractor, std::string_view bundleIdentifier)
{
    if (!bundleIdentifier.empty())
        registry.insert_or_assign(std::string(bundleIdentifier), extractor);
}

std::optional<VDApplicationInfoExtractor> VDInfoExtractor::registeredExtractorForBundleIdentifier(
    std::string_view bundleIdentifier)
{
    const ExtractorRegistry& registry = registeredExtractors.get();
    if (auto found = registry.find(bundleIdentifier); found != registry.end())
        return found->second;
    return std::nullopt;
}

void VDInfoExtractor::callInfoExtractorForActivity(VDActivity& activity)
{
    if (!activity.applicationBundleIdentifier)
        return;
    auto extractor = registeredExtractorForBundleIdentifier(*activity.applicationBundleIdentifier);
    if (!extractor && installedCatalogue())
        extractor = installedCatalogue()->defaultExtractor;
    if (extractor)
        extractor->writeDetailsForActivity(activity);
}

} // namespace vardel
