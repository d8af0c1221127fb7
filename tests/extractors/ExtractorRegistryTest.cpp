#include "activity/VDInfoExtractor.h"
#include "activity/WebAreaURLInfoExtractor.h"
#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;

class ExtractorRegistryTest : public ScriptedDesktopTest {
protected:
    void loadWithDefaults(Json defaults)
    {
        Json scenario = desktopWith(application(501, "com.example.App"));
        scenario["defaults"] = std::move(defaults);
        load(scenario);
    }

    static std::string registered(const char* identifier)
    {
        auto extractor = VDInfoExtractor::registeredExtractorForBundleIdentifier(identifier);
        return extractor ? std::string(extractor->className) : std::string("default");
    }
};

TEST_F(ExtractorRegistryTest, IdentifiersMatchExactlyAndUnknownOnesGetTheDefault)
{
    loadWithDefaults(Json::object());
    EXPECT_EQ(registered("com.adobe.PremierePro.9"), "default");
    EXPECT_EQ(registered("com.adobe.PremierePro.10"), "AdobeProjectPathInfoExtractor");
    EXPECT_EQ(registered("com.adobe.PremierePro.29"), "AdobeProjectPathInfoExtractor");
    EXPECT_EQ(registered("com.adobe.PremierePro.30"), "default");
    EXPECT_EQ(registered("com.google.Chrome.canary"), "ChromeProfileInfoExtractor");
    EXPECT_EQ(registered("com.google.Chrome.Canary"), "default");
    EXPECT_EQ(registered("com.microsoft.teams2"), "MicrosoftTeamsInfoExtractor");
    EXPECT_EQ(registered("WhatsApp"), "WhatsAppInfoExtractor");
    EXPECT_EQ(registered(""), "default");
}

TEST_F(ExtractorRegistryTest, ExtraIdentifiersFromPreferencesGiveWayToLaterRows)
{
    loadWithDefaults({ { "VDInfoExtractor_extraBundleIdentifier_webAreaTitle", "com.google.Chrome" },
        { "VDInfoExtractor_extraBundleIdentifier_firefox", "com.apple.Safari" },
        { "VDInfoExtractor_extraBundleIdentifier_webAreaURL", "com.example.Browser" },
        { "VDInfoExtractor_extraBundleIdentifier_safari", "" } });
    EXPECT_EQ(registered("com.google.Chrome"), "ChromeProfileInfoExtractor");
    EXPECT_EQ(registered("com.apple.Safari"), "SafariInfoExtractor");
    EXPECT_EQ(registered("com.example.Browser"), "WebAreaURLInfoExtractor");
}

TEST_F(ExtractorRegistryTest, ALaterRegistrationReplacesAnEarlierOne)
{
    loadWithDefaults(Json::object());
    VDInfoExtractor::addApplicationInfoExtractor(VDApplicationInfoExtractor::of<WebAreaURLInfoExtractor>(), "");
    EXPECT_EQ(registered(""), "default");
    VDInfoExtractor::addApplicationInfoExtractor(
        VDApplicationInfoExtractor::of<WebAreaURLInfoExtractor>(), "com.apple.Notes");
    EXPECT_EQ(registered("com.apple.Notes"), "WebAreaURLInfoExtractor");
}

} // namespace
} // namespace vardel
