#include "platform/linux/dialog/AlertDialog.h"

#include "platform/linux/dialog/RequestText.h"

#include <gtk/gtk.h>

namespace vardel::dialog {

namespace {

constexpr const char* suppressionTitle = "Do not show this message again";

bool flag(const nlohmann::json& request, const char* key)
{
    auto found = request.find(key);
    return found != request.end() && found->is_boolean() && found->get<bool>();
}

std::vector<std::string> buttonTitles(const nlohmann::json& request)
{
    std::vector<std::string> titles;
    if (auto found = request.find("buttons"); found != request.end() && found->is_array()) {
        for (const auto& title : *found) {
            if (title.is_string())
                titles.push_back(title.get<std::string>());
        }
    }
    if (titles.empty())
        titles.emplace_back("OK");
    return titles;
}

} // namespace

nlohmann::json runAlert(const nlohmann::json& request)
{
    GtkWidget* dialog = gtk_message_dialog_new(nullptr, GTK_DIALOG_MODAL, GTK_MESSAGE_WARNING, GTK_BUTTONS_NONE, "%s",
        requestText(request, "message").c_str());
    gtk_window_set_title(GTK_WINDOW(dialog), "Vardel Tracker");
    gtk_window_set_keep_above(GTK_WINDOW(dialog), TRUE);
    if (std::string informative = requestText(request, "informativeText"); !informative.empty())
        gtk_message_dialog_format_secondary_text(GTK_MESSAGE_DIALOG(dialog), "%s", informative.c_str());
    // Response ids count from 1, as the answer does.
    auto titles = buttonTitles(request);
    for (size_t index = 0; index < titles.size(); ++index)
        gtk_dialog_add_button(GTK_DIALOG(dialog), titles[index].c_str(), static_cast<gint>(index + 1));
    gtk_dialog_set_default_response(GTK_DIALOG(dialog), 1);

    GtkWidget* suppression = nullptr;
    if (flag(request, "showsSuppressionButton")) {
        suppression = gtk_check_button_new_with_label(suppressionTitle);
        gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(suppression), flag(request, "suppressionState"));
        GtkWidget* area = gtk_message_dialog_get_message_area(GTK_MESSAGE_DIALOG(dialog));
        gtk_box_pack_start(GTK_BOX(area), suppression, FALSE, FALSE, 0);
        gtk_widget_show(suppression);
    }

    gint response = gtk_dialog_run(GTK_DIALOG(dialog));
    nlohmann::json answer = nullptr;
    if (response >= 1 && response <= static_cast<gint>(titles.size())) {
        bool suppressed = suppression ? gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(suppression)) != FALSE
                                      : flag(request, "suppressionState");
        answer = { { "button", response }, { "suppressionState", suppressed } };
    }
    gtk_widget_destroy(dialog);
    return answer;
}

} // namespace vardel::dialog
