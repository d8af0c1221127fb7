// Every extractor meets random trees: wrong types, references that make cycles through AXParent and
// AXChildren, deep and wide trees and hostile text. Each sample must end, quickly and without a crash.

#include "activity/VDInfoExtractor.h"
#include "support/RandomElementTrees.h"

namespace vardel {
namespace {

using namespace vardel::testing;

const char* const bundleIdentifiers[] = { "com.apple.FinalCut", "org.mozilla.firefox", "com.apple.Safari",
    "company.thebrowser.dia", "com.openai.atlas", "com.apple.mail", "com.apple.Notes", "com.tinyspeck.slackmacgap",
    "com.hnc.Discord", "com.amazon.Amazon-Chime", "net.whatsapp.WhatsApp", "WhatsApp",
    "org.whispersystems.signal-desktop", "notion.id", "com.microsoft.teams2", "com.microsoft.Outlook",
    "com.github.GitHubClient", "com.readdle.SparkDesktop", "com.openai.chat", "com.mimestream.Mimestream",
    "com.superhuman.electron", "com.google.Chrome", "com.adobe.PremierePro.24", "com.adobe.AfterEffects",
    "com.example.Unknown", "com.google.Chrome.app.abcdef", "com.apple.Safari.WebApp.1" };

class ExtractorFuzzTest : public ScriptedDesktopTest { };

TEST_F(ExtractorFuzzTest, RandomTreesNeverCrashOrHangAnExtractor)
{
    RandomElementTrees generator(20261123);
    for (int round = 0; round < 6; ++round) {
        for (const char* bundleIdentifier : bundleIdentifiers) {
            ProcessWideState::resetAll();
            load(generator.scenario(bundleIdentifier));
            auto activity = VDInfoExtractor::currentActivity();
            ASSERT_TRUE(activity) << bundleIdentifier;
            VDInfoExtractor::callInfoExtractorForActivity(*activity);
        }
    }
}

} // namespace
} // namespace vardel
