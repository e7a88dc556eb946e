// The dialog module: the device selector in GTK 3. The controls bear their identifiers as widget names.
#include <gdk/gdkx.h>
#include <gmodule.h>
#include <gtk/gtk.h>

#include <cstdlib>
#include <string>

#include "platform/posix/device_dialog_module.h"

namespace fringix::platform {

namespace {

constexpr int labelIdentifier = -1;
constexpr int spacing = 8;  // pixels

// The columns of the list.
constexpr int textColumn = 0;
constexpr int dataColumn = 1;

class Dialog final : public DeviceDialogView {
 public:
  Dialog(DeviceDialogActions& actions, Window parent);
  ~Dialog();
  Dialog(const Dialog&) = delete;
  Dialog& operator=(const Dialog&) = delete;

  std::optional<std::int32_t> run();  // nothing when somebody else destroyed the window

  void clearLines() noexcept override { gtk_list_store_clear(lines_); }
  void addLine(const char* text) noexcept override;
  void setLineData(std::int32_t line, std::int32_t data) noexcept override;
  void selectLine(std::int32_t line) noexcept override { gtk_combo_box_set_active(GTK_COMBO_BOX(list_), line); }
  std::optional<std::int32_t> selectedLineData() const noexcept override;
  void enableOk(bool enabled) noexcept override { gtk_widget_set_sensitive(ok_, enabled); }
  void setWaitCursor() noexcept override;
  void restoreCursor() noexcept override { showCursor(nullptr); }
  void end(std::int32_t code) noexcept override;

 private:
  GtkWidget* makeChoice();
  GtkWidget* makeButtons();
  GtkWidget* makeButton(const char* text, int identifier);
  void placeBefore(Window parent);
  void showCursor(GdkCursor* cursor) noexcept;
  static void pressed(GtkWidget* button, Dialog* dialog);
  static void responded(GtkDialog* window, int response, Dialog* dialog);

  DeviceDialogActions& actions_;
  GtkWidget* window_ = gtk_dialog_new();
  GtkListStore* lines_ = gtk_list_store_new(2, G_TYPE_STRING, G_TYPE_INT);
  GtkWidget* list_ = gtk_combo_box_new_with_model(GTK_TREE_MODEL(lines_));
  GtkWidget* ok_ = makeButton("OK", device_dialog::ok);
  std::optional<std::int32_t> code_;
};

GtkWidget* named(GtkWidget* widget, int identifier) {
  gtk_widget_set_name(widget, std::to_string(identifier).c_str());
  return widget;
}

Dialog::Dialog(DeviceDialogActions& actions, Window parent) : actions_(actions) {
  g_object_ref(window_);  // it stays valid when somebody else destroys it
  gtk_window_set_title(GTK_WINDOW(window_), "Device selector");
  gtk_window_set_position(GTK_WINDOW(window_), GTK_WIN_POS_CENTER);
  gtk_window_set_resizable(GTK_WINDOW(window_), FALSE);
  GtkBox* const content = GTK_BOX(gtk_dialog_get_content_area(GTK_DIALOG(window_)));
  gtk_container_set_border_width(GTK_CONTAINER(content), spacing);
  gtk_box_set_spacing(content, spacing);
  gtk_box_pack_start(content, makeChoice(), FALSE, FALSE, 0);
  gtk_box_pack_start(content, makeButtons(), FALSE, FALSE, 0);
  gtk_widget_show_all(GTK_WIDGET(content));
  g_signal_connect(window_, "response", G_CALLBACK(responded), this);
  gtk_widget_realize(window_);
  placeBefore(parent);
}

Dialog::~Dialog() {
  GdkDisplay* const display = gtk_widget_get_display(window_);
  gtk_widget_destroy(window_);
  g_object_unref(window_);
  g_object_unref(lines_);
  gdk_display_flush(display);  // the program may not come back to the toolkit for a long time
}

GtkWidget* Dialog::makeChoice() {
  GtkCellRenderer* const cell = gtk_cell_renderer_text_new();
  gtk_cell_layout_pack_start(GTK_CELL_LAYOUT(list_), cell, TRUE);
  gtk_cell_layout_add_attribute(GTK_CELL_LAYOUT(list_), cell, "text", textColumn);
  GtkWidget* const row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, spacing);
  gtk_box_pack_start(GTK_BOX(row), named(gtk_label_new("Select device"), labelIdentifier), FALSE, FALSE, 0);
  gtk_box_pack_start(GTK_BOX(row), named(list_, device_dialog::list), TRUE, TRUE, 0);
  return row;
}

GtkWidget* Dialog::makeButtons() {
  GtkWidget* const row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, spacing);
  gtk_box_pack_start(GTK_BOX(row), ok_, FALSE, FALSE, 0);
  gtk_box_pack_end(GTK_BOX(row), makeButton("Cancel", device_dialog::cancel), FALSE, FALSE, 0);
  gtk_box_pack_end(GTK_BOX(row), makeButton("Rescan", device_dialog::rescan), FALSE, FALSE, 0);
  gtk_widget_set_can_default(ok_, TRUE);
  return row;
}

GtkWidget* Dialog::makeButton(const char* text, int identifier) {
  GtkWidget* const button = named(gtk_button_new_with_label(text), identifier);
  g_signal_connect(button, "clicked", G_CALLBACK(pressed), this);
  return button;
}

// A window that does not exist (any more) is none.
void Dialog::placeBefore(Window parent) {
  GdkDisplay* const display = gtk_widget_get_display(window_);
  if (parent == 0 || !GDK_IS_X11_DISPLAY(display)) return;
  GdkWindow* const owner = gdk_x11_window_foreign_new_for_display(display, parent);
  if (owner == nullptr) return;
  gdk_window_set_transient_for(gtk_widget_get_window(window_), owner);
  g_object_unref(owner);
}

std::optional<std::int32_t> Dialog::run() {
  actions_.opened(*this);
  gtk_widget_grab_default(ok_);
  gtk_dialog_run(GTK_DIALOG(window_));
  return code_;
}

void Dialog::addLine(const char* text) noexcept {
  gtk_list_store_insert_with_values(lines_, nullptr, -1, textColumn, text, dataColumn, 0, -1);
}

void Dialog::setLineData(std::int32_t line, std::int32_t data) noexcept {
  GtkTreeIter place;
  if (gtk_tree_model_iter_nth_child(GTK_TREE_MODEL(lines_), &place, nullptr, line))
    gtk_list_store_set(lines_, &place, dataColumn, data, -1);
}

std::optional<std::int32_t> Dialog::selectedLineData() const noexcept {
  GtkTreeIter place;
  if (!gtk_combo_box_get_active_iter(GTK_COMBO_BOX(list_), &place)) return std::nullopt;
  int data = 0;
  gtk_tree_model_get(GTK_TREE_MODEL(lines_), &place, dataColumn, &data, -1);
  return data;
}

void Dialog::setWaitCursor() noexcept {
  GdkCursor* const cursor = gdk_cursor_new_for_display(gtk_widget_get_display(window_), GDK_WATCH);
  showCursor(cursor);
  g_object_unref(cursor);
}

void Dialog::showCursor(GdkCursor* cursor) noexcept {
  gdk_window_set_cursor(gtk_widget_get_window(window_), cursor);
  gdk_display_flush(gtk_widget_get_display(window_));  // before a scan keeps the thread busy
}

void Dialog::end(std::int32_t code) noexcept {
  code_ = code;
  gtk_dialog_response(GTK_DIALOG(window_), GTK_RESPONSE_NONE);
}

void Dialog::pressed(GtkWidget* button, Dialog* dialog) { dialog->actions_.command(*dialog, std::atoi(gtk_widget_get_name(button))); }

// The Escape key and the window's own button.
void Dialog::responded(GtkDialog*, int response, Dialog* dialog) {
  if (response == GTK_RESPONSE_DELETE_EVENT) dialog->actions_.command(*dialog, device_dialog::cancel);
}

// The locale is the program's: the toolkit is not to set it.
bool startToolkit() {
  if (gdk_display_get_default() != nullptr) return true;
  static const bool started = [] {
    gtk_disable_setlocale();
    return true;
  }();
  return started && gtk_init_check(nullptr, nullptr);
}

}  // namespace

extern "C" G_MODULE_EXPORT bool fringixRunDeviceDialog(void* parent, DeviceDialogActions* actions, std::int32_t* code) {
  if (!startToolkit()) return false;
  const std::optional<std::int32_t> ended = Dialog(*actions, reinterpret_cast<Window>(parent)).run();
  *code = ended.value_or(0);
  return ended.has_value();
}

}  // namespace fringix::platform
