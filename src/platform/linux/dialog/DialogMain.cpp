// vardel-dialog: the tracker's windows, kept out of the tracker's process so that it never loads a
// toolkit. `vardel-dialog alert` or `vardel-dialog editor` reads one JSON request on standard input,
// shows the window and writes one JSON line on standard output when it closes (null for an alert
// closed without an answer). Exit status 2 for a bad command line or request, 1 without a display.

#include "platform/linux/dialog/AlertDialog.h"
#include "platform/linux/dialog/EntryEditorDialog.h"

#include <gtk/gtk.h>
#include <iostream>
#include <iterator>
#include <string>

namespace {

constexpr int noDisplayStatus = 1;
constexpr int usageStatus = 2;

} // namespace

int main(int argc, char** argv)
{
    std::string mode = argc == 2 ? argv[1] : "";
    if (mode != "alert" && mode != "editor") {
        std::cerr << "usage: vardel-dialog alert|editor < request.json\n";
        return usageStatus;
    }
    std::string input((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
    auto request = nlohmann::json::parse(input, nullptr, false);
    if (!request.is_object()) {
        std::cerr << "vardel-dialog: the request is not a JSON object\n";
        return usageStatus;
    }
    if (!gtk_init_check(&argc, &argv)) {
        std::cerr << "vardel-dialog: cannot open the display\n";
        return noDisplayStatus;
    }
    g_set_prgname("vardel-dialog");
    auto answer = mode == "alert" ? vardel::dialog::runAlert(request) : vardel::dialog::runEntryEditor(request);
    std::cout << answer.dump() << '\n' << std::flush;
    return 0;
}
