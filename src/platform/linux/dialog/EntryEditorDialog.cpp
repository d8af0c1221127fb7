#include "platform/linux/dialog/EntryEditorDialog.h"

#include "platform/linux/dialog/RequestText.h"

#include <cmath>
#include <gtk/gtk.h>
#include <memory>
#include <optional>
#include <variant>

namespace vardel::dialog {

namespace {

constexpr gint cancelResponse = 1;
constexpr gint saveResponse = 2;
constexpr const char* dateFormat = "%Y-%m-%d %H:%M:%S";

struct DateTimeRelease {
    void operator()(GDateTime* dateTime) const { g_date_time_unref(dateTime); }
};
using DateTimeHandle = std::unique_ptr<GDateTime, DateTimeRelease>;
struct TimeZoneRelease {
    void operator()(GTimeZone* zone) const { g_time_zone_unref(zone); }
};
struct CharsRelease {
    void operator()(gchar* text) const { g_free(text); }
};

double seconds(const nlohmann::json& request, const char* key)
{
    auto found = request.find(key);
    return found != request.end() && found->is_number() ? found->get<double>() : 0;
}

std::string localText(double secondsSince1970)
{
    DateTimeHandle dateTime(g_date_time_new_from_unix_local(static_cast<gint64>(std::floor(secondsSince1970))));
    if (!dateTime)
        return {};
    std::unique_ptr<gchar, CharsRelease> formatted(g_date_time_format(dateTime.get(), dateFormat));
    return formatted ? formatted.get() : std::string();
}

// "YYYY-MM-DD HH:MM[:SS]" in local time, or any ISO 8601 date and time.
std::optional<double> parsedSeconds(std::string written)
{
    if (auto space = written.find(' '); space == 10)
        written[space] = 'T';
    std::unique_ptr<GTimeZone, TimeZoneRelease> local(g_time_zone_new_local());
    DateTimeHandle dateTime(g_date_time_new_from_iso8601(written.c_str(), local.get()));
    if (!dateTime)
        return std::nullopt;
    return static_cast<double>(g_date_time_to_unix(dateTime.get()));
}

// A labelled entry in the grid; the entry's accessible name is the label's text.
GtkWidget* addField(GtkGrid* grid, int row, const char* label, const std::string& value)
{
    GtkWidget* caption = gtk_label_new(label);
    gtk_widget_set_halign(caption, GTK_ALIGN_END);
    GtkWidget* entry = gtk_entry_new();
    gtk_entry_set_text(GTK_ENTRY(entry), value.c_str());
    gtk_entry_set_width_chars(GTK_ENTRY(entry), 28);
    gtk_label_set_mnemonic_widget(GTK_LABEL(caption), entry);
    atk_object_set_name(gtk_widget_get_accessible(entry), label);
    gtk_grid_attach(grid, caption, 0, row, 1, 1);
    gtk_grid_attach(grid, entry, 1, row, 1, 1);
    return entry;
}

struct EditorFields {
    GtkWidget* title;
    GtkWidget* project;
    GtkWidget* start;
    GtkWidget* end;
    GtkWidget* problem;
};

std::string entryText(GtkWidget* entry)
{
    return gtk_entry_get_text(GTK_ENTRY(entry));
}

// A time the user left as shown keeps its exact value; one they wrote is read back.
std::optional<double> editedSeconds(GtkWidget* entry, const std::string& shown, double original)
{
    std::string written = entryText(entry);
    return written == shown ? std::optional(original) : parsedSeconds(written);
}

// The answer for a Save, or the problem that keeps the editor open.
std::variant<nlohmann::json, std::string> savedEntry(const EditorFields& fields, const nlohmann::json& request)
{
    double originalStart = seconds(request, "start");
    double originalEnd = seconds(request, "end");
    auto start = editedSeconds(fields.start, localText(originalStart), originalStart);
    auto end = editedSeconds(fields.end, localText(originalEnd), originalEnd);
    if (!start)
        return std::string("The start is not a date and time such as 2026-11-25 09:30:00.");
    if (!end)
        return std::string("The end is not a date and time such as 2026-11-25 17:45:00.");
    if (*end < *start)
        return std::string("The end is before the start.");
    std::string project = entryText(fields.project);
    return nlohmann::json { { "saved", true }, { "title", entryText(fields.title) },
        { "project", project.empty() ? nlohmann::json(nullptr) : nlohmann::json(project) }, { "start", *start },
        { "end", *end } };
}

} // namespace

nlohmann::json runEntryEditor(const nlohmann::json& request)
{
    std::string heading = requestText(request, "heading");
    GtkWidget* dialog = gtk_dialog_new_with_buttons(
        heading.c_str(), nullptr, GTK_DIALOG_MODAL, "Cancel", cancelResponse, "Save", saveResponse, nullptr);
    gtk_window_set_keep_above(GTK_WINDOW(dialog), TRUE);
    gtk_dialog_set_default_response(GTK_DIALOG(dialog), saveResponse);

    GtkWidget* content = gtk_dialog_get_content_area(GTK_DIALOG(dialog));
    gtk_container_set_border_width(GTK_CONTAINER(content), 12);
    gtk_box_set_spacing(GTK_BOX(content), 8);
    GtkWidget* headingLabel = gtk_label_new(heading.c_str());
    atk_object_set_role(gtk_widget_get_accessible(headingLabel), ATK_ROLE_HEADING);
    gtk_widget_set_halign(headingLabel, GTK_ALIGN_START);
    gtk_box_pack_start(GTK_BOX(content), headingLabel, FALSE, FALSE, 0);

    GtkWidget* grid = gtk_grid_new();
    gtk_grid_set_row_spacing(GTK_GRID(grid), 6);
    gtk_grid_set_column_spacing(GTK_GRID(grid), 8);
    auto project = request.find("project");
    EditorFields fields { addField(GTK_GRID(grid), 0, "Title", requestText(request, "title")),
        addField(GTK_GRID(grid), 1, "Project",
            project != request.end() && project->is_string() ? project->get<std::string>() : std::string()),
        addField(GTK_GRID(grid), 2, "Start", localText(seconds(request, "start"))),
        addField(GTK_GRID(grid), 3, "End", localText(seconds(request, "end"))), gtk_label_new("") };
    gtk_entry_set_activates_default(GTK_ENTRY(fields.title), TRUE);
    gtk_box_pack_start(GTK_BOX(content), grid, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(content), fields.problem, FALSE, FALSE, 0);
    gtk_widget_show_all(dialog);

    nlohmann::json answer = { { "saved", false } };
    while (gtk_dialog_run(GTK_DIALOG(dialog)) == saveResponse) {
        auto saved = savedEntry(fields, request);
        if (auto* entry = std::get_if<nlohmann::json>(&saved)) {
            answer = *entry;
            break;
        }
        gtk_label_set_text(GTK_LABEL(fields.problem), std::get<std::string>(saved).c_str());
    }
    gtk_widget_destroy(dialog);
    return answer;
}

} // namespace vardel::dialog
