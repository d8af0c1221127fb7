#include "diagnostics/AccessibilityDumper.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/ElementTreeWalker.h"
#include "activity/EnhancedAccessibility.h"
#include "activity/UIElementUtilities.h"
#include "diagnostics/AccessibilitySearch.h"
#include "diagnostics/AccessibilityTreeFormatter.h"
#include "platform/Platform.h"
#include "platform/UserDirectories.h"
#include "product/TextHelpers.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace vardel {

namespace {

constexpr const char* iconFileKey = "CFBundleIconFile";
// Within the level bound, a tree whose children are shared by many parents still grows
// exponentially. Each window or web area reads at most this many elements for its tree text, and
// with a query as many for the search and again for the trees below its matches: many times the
// largest real windows, and a few seconds of output.
constexpr int maxDumpedElements = 500000;

void printLine(const std::string& text)
{
    platform().standardStreams().print(text + "\n");
}

void printErrorLine(const std::string& text)
{
    platform().standardStreams().printError(text + "\n");
}

std::optional<RunningApplication> runningApplication(const std::string& bundleIdentifier)
{
    for (RunningApplication& application : platform().workspace().runningApplications()) {
        if (application.bundleIdentifier == bundleIdentifier)
            return application;
    }
    return std::nullopt;
}

std::optional<AXUIElement> elementAttribute(std::string_view attribute, const std::optional<AXUIElement>& element)
{
    auto value = element ? UIElementUtilities::valueOfAttribute(attribute, *element) : std::nullopt;
    return value && value->asElement() ? std::optional(*value->asElement()) : std::nullopt;
}

void dumpTree(const AXUIElement& root, const std::string& label)
{
    printLine("\n\n" + label + ":");
    ElementTreeWalker walker(maxDumpedElements);
    printLine(AccessibilityTreeFormatter::treeText(root, UIElementUtilities::maxRecursionLevel(), walker));
}

// A search cut short says so after the matches it found, even when it found none.
void searchTree(const AXUIElement& root, const std::string& label, const std::string& query)
{
    int levels = UIElementUtilities::maxRecursionLevel();
    ElementTreeWalker searchWalker(maxDumpedElements);
    std::vector<ElementPath> matches = AccessibilitySearch::matches(root, query, levels, searchWalker);
    if (matches.empty() && !searchWalker.cutShort())
        return;
    printLine("\n\n" + label + " - Found " + std::to_string(matches.size()) + " matches:");
    ElementTreeWalker matchesWalker(maxDumpedElements);
    for (size_t index = 0; index < matches.size(); ++index) {
        printLine("\nMatch #" + std::to_string(index + 1) + ":");
        printLine(AccessibilityTreeFormatter::matchText(matches[index], levels, matchesWalker));
    }
    if (searchWalker.cutShort())
        printLine("\n" + AccessibilityTreeFormatter::cutShortLine(searchWalker));
}

// The whole tree, or with a query its matches, of a window and then of each of its web areas,
// whose content is often not reachable through the window's children.
void showWindow(
    const std::optional<AXUIElement>& window, const std::string& label, const std::optional<std::string>& preparedQuery)
{
    if (!window)
        return;
    auto show = [&](const AXUIElement& root, const std::string& rootLabel) {
        if (preparedQuery)
            searchTree(root, rootLabel, *preparedQuery);
        else
            dumpTree(root, rootLabel);
    };
    show(*window, label);
    ElementHelpers::ElementList webAreas = ElementHelpers::findWebAreas(*window, nullptr);
    for (size_t index = 0; index < webAreas.size(); ++index)
        show(webAreas[index], label + " web area #" + std::to_string(index));
}

bool hasChildren(const AXUIElement& element)
{
    return !ElementHelpers::children(element).empty();
}

bool exposesContent(
    std::initializer_list<std::optional<AXUIElement>> namedWindows, const ElementHelpers::ElementList& windows)
{
    return std::any_of(namedWindows.begin(), namedWindows.end(), [](const std::optional<AXUIElement>& window) {
        return window && hasChildren(*window);
    }) || std::any_of(windows.begin(), windows.end(), hasChildren);
}

// Said on standard error, so that the dump itself keeps its form. Chromium and the applications built
// on it hide their content from accessibility unless told otherwise at launch.
std::string noContentNote(const std::string& bundleIdentifier)
{
    return "Note: the windows of '" + bundleIdentifier
        + "' expose no content to accessibility. Applications built on Chromium expose it only when started with "
          "--force-renderer-accessibility (see the README).";
}

std::optional<std::string> iconFileName(const ApplicationBundle& bundle)
{
    auto entry = bundle.info.find(iconFileKey);
    if (entry == bundle.info.end() || !entry->second.asText())
        return std::nullopt;
    return *entry->second.asText();
}

// The name comes from another application's bundle: it must not lead out of the target folder.
std::string targetFileName(
    const std::string& bundleIdentifier, const std::string& localizedName, const std::string& iconExtension)
{
    std::string name = bundleIdentifier + " " + localizedName + iconExtension;
    std::replace(name.begin(), name.end(), '/', '_');
    return name;
}

bool copyIcon(const std::filesystem::path& iconPath, const std::string& fileName)
{
    auto documents = UserDirectories::documentsFolder();
    if (!documents) {
        printErrorLine("Cannot copy the application icon: the documents folder is unknown, HOME is not set.");
        return false;
    }
    std::filesystem::path folder = *documents / "Vardel" / "AppIcons";
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        printErrorLine("Cannot create the folder '" + folder.string() + "': " + error.message());
        return false;
    }
    std::filesystem::path target = folder / fileName;
    std::filesystem::copy_file(iconPath, target, std::filesystem::copy_options::none, error);
    if (error) {
        printErrorLine("Cannot copy '" + iconPath.string() + "' to '" + target.string() + "': " + error.message());
        return false;
    }
    return true;
}

} // namespace

void AccessibilityDumper::dumpWindowsForApplicationWithBundleIdentifier(
    const std::string& bundleIdentifier, const std::optional<std::string>& searchQuery)
{
    auto running = runningApplication(bundleIdentifier);
    if (!running) {
        printLine("Application '" + bundleIdentifier + "' not found.");
        return;
    }
    auto application = platform().accessibility().createApplication(running->processIdentifier);
    if (application)
        EnhancedAccessibility::enableFakeVoiceOver(*application, bundleIdentifier, true);

    std::optional<std::string> preparedQuery;
    if (searchQuery) {
        printLine("Using search query: '" + *searchQuery + "'");
        preparedQuery = AccessibilitySearch::preparedQuery(*searchQuery);
    }
    auto mainWindow = elementAttribute(AX::mainWindow, application);
    showWindow(mainWindow, "Main Window", preparedQuery);

    auto focusedWindow = elementAttribute(AX::focusedWindow, application);
    if (focusedWindow && focusedWindow != mainWindow)
        showWindow(focusedWindow, "Focused Window", preparedQuery);
    else
        printLine("\n\nFocused Window: Same as Main Window");

    ElementHelpers::ElementList windows
        = application ? ElementHelpers::windows(*application) : ElementHelpers::ElementList {};
    for (size_t index = 0; index < windows.size(); ++index) {
        if (windows[index] != mainWindow && windows[index] != focusedWindow)
            showWindow(windows[index], "Window " + std::to_string(index), preparedQuery);
    }
    if (!exposesContent({ mainWindow, focusedWindow }, windows))
        printErrorLine(noContentNote(bundleIdentifier));
}

bool AccessibilityDumper::dumpIconForApplicationWithPossibleBundleIdentifier(const std::string& argument)
{
    auto bundle = platform().workspace().applicationBundle(argument);
    if (!bundle || !bundle->bundleIdentifier || !bundle->localizedName) {
        printLine("Application '" + argument + "' not found.");
        return true;
    }
    const std::string& bundleIdentifier = *bundle->bundleIdentifier;
    auto iconFile = iconFileName(*bundle);
    if (!iconFile) {
        printLine("Application icon path for '" + bundleIdentifier + "' not found.");
        return true;
    }
    std::string iconPath = bundle->resourcesPath + "/" + *iconFile;
    if (!TextHelpers::hasSuffix(iconPath, bundle->iconExtension))
        iconPath += bundle->iconExtension;
    std::error_code error;
    if (!std::filesystem::exists(iconPath, error)) {
        printLine("Application icon for '" + bundleIdentifier + "' not found at '" + iconPath + "'.");
        return true;
    }
    return copyIcon(iconPath, targetFileName(bundleIdentifier, *bundle->localizedName, bundle->iconExtension));
}

} // namespace vardel
