#include "calls/PowerManagementDumper.h"

#include "calls/PowerManagementAssertions.h"
#include "calls/RunningCallDetector.h"
#include "platform/Platform.h"
#include "platform/ValueJson.h"

namespace vardel {

namespace {

void printLine(const std::string& line)
{
    platform().standardStreams().print(line + "\n");
}

// Quoted so that an empty text or one with separators stays readable; absent is nil.
std::string quotedOrNil(const std::optional<std::string>& text)
{
    if (!text)
        return "nil";
    std::string quoted = "\"";
    for (char character : *text) {
        if (character == '"' || character == '\\')
            quoted += '\\';
        quoted += character;
    }
    return quoted + "\"";
}

std::string describe(const std::vector<ApplicationAndMetadata>& candidates)
{
    std::string described = "[";
    for (const auto& candidate : candidates) {
        const CallMetadata& metadata = candidate.metadata;
        if (described.size() > 1)
            described += ", ";
        described += "ApplicationAndMetadata(bundleIdentifier: " + quotedOrNil(candidate.bundleIdentifier)
            + ", metadata: CallMetadata(serviceName: " + quotedOrNil(metadata.serviceName)
            + ", appName: " + quotedOrNil(metadata.appName) + ", meetingTitle: " + quotedOrNil(metadata.meetingTitle)
            + ", audioInAndOutAssertionsHaveBeenRecordedSeparately: "
            + (metadata.audioInAndOutAssertionsHaveBeenRecordedSeparately ? "true" : "false") + "))";
    }
    return described + "]";
}

} // namespace

void PowerManagementDumper::dumpPowerManagementAssertions()
{
    printLine("Dump created at: " + ValueJson::formatIso8601(platform().clock().now()));
    printLine(platform().desktopTexts().systemLine);
    PowerManagementAssertions snapshot(printLine);
    // No sampled activity: the dump shows what the assertions alone imply.
    auto candidates = RunningCallDetector::sharedInstance().assertionBasedCandidates(snapshot, nullptr);
    printLine("\nCall information derived from that:");
    printLine(describe(candidates));
}

} // namespace vardel
