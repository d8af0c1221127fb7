// The standard desktop of the accessibility contract as a real GTK 3 application: a window titled
// "Contract Window" holding a button "Press Me" and a web area whose address is
// https://example.com/contract. GTK has no web view, so a drawing area plays one: its accessible
// says it is a web document and gives the address as the document's DocURL.

#include <gtk/gtk-a11y.h>
#include <gtk/gtk.h>

namespace {

constexpr const char* pageAddress = "https://example.com/contract";

} // namespace

extern "C" {

typedef struct {
    GtkWidgetAccessible parent;
} ContractPageAccessible;
typedef struct {
    GtkWidgetAccessibleClass parent_class;
} ContractPageAccessibleClass;

static void contract_page_accessible_document_init(AtkDocumentIface* iface);

G_DEFINE_TYPE_WITH_CODE(ContractPageAccessible, contract_page_accessible, GTK_TYPE_WIDGET_ACCESSIBLE,
    G_IMPLEMENT_INTERFACE(ATK_TYPE_DOCUMENT, contract_page_accessible_document_init))

static const gchar* contract_page_attribute_value(AtkDocument*, const gchar* name)
{
    return g_strcmp0(name, "DocURL") == 0 ? pageAddress : nullptr;
}

static AtkAttributeSet* contract_page_attributes(AtkDocument*)
{
    auto* attribute = static_cast<AtkAttribute*>(g_malloc(sizeof(AtkAttribute)));
    attribute->name = g_strdup("DocURL");
    attribute->value = g_strdup(pageAddress);
    return g_slist_append(nullptr, attribute);
}

static void contract_page_accessible_document_init(AtkDocumentIface* iface)
{
    iface->get_document_attribute_value = contract_page_attribute_value;
    iface->get_document_attributes = contract_page_attributes;
}

static void contract_page_accessible_initialize(AtkObject* object, gpointer data)
{
    ATK_OBJECT_CLASS(contract_page_accessible_parent_class)->initialize(object, data);
    atk_object_set_role(object, ATK_ROLE_DOCUMENT_WEB);
    atk_object_set_name(object, "Contract Page");
}

static void contract_page_accessible_class_init(ContractPageAccessibleClass* klass)
{
    ATK_OBJECT_CLASS(klass)->initialize = contract_page_accessible_initialize;
}

static void contract_page_accessible_init(ContractPageAccessible*) { }

typedef struct {
    GtkDrawingArea parent;
} ContractPage;
typedef struct {
    GtkDrawingAreaClass parent_class;
} ContractPageClass;

G_DEFINE_TYPE(ContractPage, contract_page, GTK_TYPE_DRAWING_AREA)

static void contract_page_class_init(ContractPageClass* klass)
{
    gtk_widget_class_set_accessible_type(GTK_WIDGET_CLASS(klass), contract_page_accessible_get_type());
}

static void contract_page_init(ContractPage*) { }

} // extern "C"

int main(int argc, char** argv)
{
    gtk_init(&argc, &argv);
    GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(window), "Contract Window");
    gtk_window_set_default_size(GTK_WINDOW(window), 600, 400);
    g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), nullptr);

    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 8);
    gtk_container_add(GTK_CONTAINER(window), box);
    gtk_box_pack_start(GTK_BOX(box), gtk_button_new_with_label("Press Me"), FALSE, FALSE, 0);
    GtkWidget* page = GTK_WIDGET(g_object_new(contract_page_get_type(), nullptr));
    gtk_widget_set_size_request(page, 400, 300);
    gtk_box_pack_start(GTK_BOX(box), page, TRUE, TRUE, 0);

    gtk_widget_show_all(window);
    gtk_main();
    return 0;
}
