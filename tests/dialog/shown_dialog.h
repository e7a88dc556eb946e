// The device selector while it is shown, read and operated as by a user. Everything here is called from another thread than the
// dialog's, and throws when the dialog does not react within 10 seconds.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace fringix::test {

// Empty where a dialog can be shown; otherwise why it cannot.
std::string whyNoDisplay();

struct ShownLine {
  std::string text;
  std::int32_t data = 0;
  bool operator==(const ShownLine&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const ShownLine& line) { return out << '"' << line.text << "\" " << line.data; }
};

enum class ControlKind { list, button, label };

struct ShownControl {
  ControlKind kind;
  int identifier;
  std::string text;
  bool visible;
  bool tabStop;
  bool defaultButton;
  bool operator==(const ShownControl&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const ShownControl& control) {
    return out << static_cast<int>(control.kind) << ' ' << control.identifier << " \"" << control.text << '"'
               << (control.visible ? " visible" : "") << (control.tabStop ? " tab stop" : "") << (control.defaultButton ? " default" : "");
  }
};

class ShownDialog {
 public:
  ShownDialog();  // waits until the dialog can be seen

  std::vector<ShownControl> controls() const;  // sorted by identifier
  std::vector<ShownLine> lines() const;
  int selectedLine() const;  // -1 for none
  void selectLine(int line) const;
  bool enabled(int identifier) const;
  void press(int identifier) const;  // a button; returns when its work is done
  void closeWindow() const;          // by the window's own button
  void pressEscape() const;
  bool standsBefore(void* parent) const;  // a window as SLShowDeviceDialog takes it

 private:
  void* window_;
};

// A window of the test program, made and destroyed on the thread that shows the dialog.
class ParentWindow {
 public:
  ParentWindow();
  ~ParentWindow();
  ParentWindow(const ParentWindow&) = delete;
  ParentWindow& operator=(const ParentWindow&) = delete;

  void* handle() const;

 private:
  void* window_;
};

}  // namespace fringix::test
