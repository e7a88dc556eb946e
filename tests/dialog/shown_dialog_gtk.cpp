#include <gdk/gdkx.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

#include "shown_dialog.h"

namespace fringix::test {

namespace {

constexpr int listIdentifier = 1001;

using Action = std::packaged_task<void()>;

// Carries an action out on the thread of the dialog, inside its main loop, and waits for the end of it.
void onDialogThread(const std::function<void()>& action) {
  auto task = std::make_shared<Action>(action);
  std::future<void> done = task->get_future();
  const auto perform = [](gpointer data) -> gboolean {
    (**static_cast<std::shared_ptr<Action>*>(data))();
    return G_SOURCE_REMOVE;
  };
  const auto forget = [](gpointer data) { delete static_cast<std::shared_ptr<Action>*>(data); };
  const guint source = g_idle_add_full(G_PRIORITY_DEFAULT, perform, new std::shared_ptr<Action>(task), forget);
  if (done.wait_for(std::chrono::seconds(10)) != std::future_status::ready) {
    g_source_remove(source);
    throw std::runtime_error("the dialog does not react");
  }
  done.get();
}

template <class Result>
Result askDialog(const std::function<Result()>& question) {
  Result result{};
  onDialogThread([&] { result = question(); });
  return result;
}

GtkWidget* findDialog() {
  GtkWidget* found = nullptr;
  GList* const windows = gtk_window_list_toplevels();
  for (const GList* item = windows; item != nullptr; item = item->next) {
    auto* const window = GTK_WINDOW(item->data);
    const char* const title = gtk_window_get_title(window);
    if (title != nullptr && std::string(title) == "Device selector") found = GTK_WIDGET(window);
  }
  g_list_free(windows);
  return found;
}

bool isControl(GtkWidget* widget) { return std::atoi(gtk_widget_get_name(widget)) != 0; }

void collect(GtkWidget* widget, gpointer controls) {
  if (isControl(widget)) {
    static_cast<std::vector<GtkWidget*>*>(controls)->push_back(widget);
  } else if (GTK_IS_CONTAINER(widget)) {
    gtk_container_foreach(GTK_CONTAINER(widget), collect, controls);
  }
}

std::vector<GtkWidget*> controlsOf(void* dialog) {
  std::vector<GtkWidget*> controls;
  collect(GTK_WIDGET(dialog), &controls);
  return controls;
}

GtkWidget* control(void* dialog, int identifier) {
  for (GtkWidget* widget : controlsOf(dialog)) {
    if (gtk_widget_get_name(widget) == std::to_string(identifier)) return widget;
  }
  throw std::runtime_error("there is no control " + std::to_string(identifier));
}

GtkComboBox* listOf(void* dialog) { return GTK_COMBO_BOX(control(dialog, listIdentifier)); }

ControlKind kindOf(GtkWidget* widget) {
  if (GTK_IS_COMBO_BOX(widget)) return ControlKind::list;
  if (GTK_IS_BUTTON(widget)) return ControlKind::button;
  if (GTK_IS_LABEL(widget)) return ControlKind::label;
  throw std::runtime_error(std::string("a control of type ") + G_OBJECT_TYPE_NAME(widget));
}

std::string textOf(GtkWidget* widget) {
  if (GTK_IS_BUTTON(widget)) return gtk_button_get_label(GTK_BUTTON(widget));
  if (GTK_IS_LABEL(widget)) return gtk_label_get_text(GTK_LABEL(widget));
  return "";
}

ShownControl describe(GtkWidget* widget) {
  const ControlKind kind = kindOf(widget);
  return {kind,
          std::atoi(gtk_widget_get_name(widget)),
          textOf(widget),
          gtk_widget_get_mapped(widget) != 0,
          kind != ControlKind::label,
          gtk_window_get_default_widget(GTK_WINDOW(gtk_widget_get_toplevel(widget))) == widget};
}

}  // namespace

std::string whyNoDisplay() { return std::getenv("DISPLAY") == nullptr ? "there is no display" : ""; }

ShownDialog::ShownDialog() : window_(nullptr) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  const auto shown = [] {
    GtkWidget* const window = findDialog();
    return window != nullptr && gtk_widget_get_mapped(window) ? window : nullptr;
  };
  while (window_ == nullptr) {
    if (std::chrono::steady_clock::now() > end) throw std::runtime_error("no dialog is shown");
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    window_ = askDialog<GtkWidget*>(shown);
  }
}

std::vector<ShownControl> ShownDialog::controls() const {
  return askDialog<std::vector<ShownControl>>([this] {
    std::vector<ShownControl> found;
    for (GtkWidget* widget : controlsOf(window_)) found.push_back(describe(widget));
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.identifier < b.identifier; });
    return found;
  });
}

std::vector<ShownLine> ShownDialog::lines() const {
  return askDialog<std::vector<ShownLine>>([this] {
    std::vector<ShownLine> found;
    GtkTreeModel* const model = gtk_combo_box_get_model(listOf(window_));
    GtkTreeIter place;
    for (gboolean there = gtk_tree_model_get_iter_first(model, &place); there; there = gtk_tree_model_iter_next(model, &place)) {
      char* text = nullptr;
      int data = 0;
      gtk_tree_model_get(model, &place, 0, &text, 1, &data, -1);
      found.push_back({text, data});
      g_free(text);
    }
    return found;
  });
}

int ShownDialog::selectedLine() const {
  return askDialog<int>([this] { return gtk_combo_box_get_active(listOf(window_)); });
}

void ShownDialog::selectLine(int line) const {
  onDialogThread([&] { gtk_combo_box_set_active(listOf(window_), line); });
}

bool ShownDialog::enabled(int identifier) const {
  return askDialog<bool>([&] { return gtk_widget_is_sensitive(control(window_, identifier)) != 0; });
}

void ShownDialog::press(int identifier) const {
  onDialogThread([&] { gtk_button_clicked(GTK_BUTTON(control(window_, identifier))); });
}

void ShownDialog::closeWindow() const {
  onDialogThread([this] { gtk_window_close(GTK_WINDOW(window_)); });
}

void ShownDialog::pressEscape() const {
  onDialogThread([this] { gtk_bindings_activate(G_OBJECT(window_), GDK_KEY_Escape, GdkModifierType{}); });
}

bool ShownDialog::standsBefore(void* parent) const {
  return askDialog<bool>([&] {
    guchar* value = nullptr;
    const bool told = gdk_property_get(gtk_widget_get_window(GTK_WIDGET(window_)), gdk_atom_intern("WM_TRANSIENT_FOR", FALSE),
                                       gdk_atom_intern("WINDOW", FALSE), 0, sizeof(long), FALSE, nullptr, nullptr, nullptr, &value) != 0;
    const bool stands = told && *reinterpret_cast<Window*>(value) == reinterpret_cast<Window>(parent);
    g_free(value);
    return stands;
  });
}

ParentWindow::ParentWindow() {
  gtk_init_check(nullptr, nullptr);
  window_ = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_widget_show_now(GTK_WIDGET(window_));
}
ParentWindow::~ParentWindow() { gtk_widget_destroy(GTK_WIDGET(window_)); }
void* ParentWindow::handle() const { return reinterpret_cast<void*>(gdk_x11_window_get_xid(gtk_widget_get_window(GTK_WIDGET(window_)))); }

}  // namespace fringix::test
