#include "dialog_template_win32.h"

#include <windows.h>

#include <cstring>
#include <stdexcept>

namespace fringix::test {

namespace {

class Reader {
 public:
  explicit Reader(const void* resource) : start_(static_cast<const unsigned char*>(resource)), at_(start_) {}

  template <class Value>
  Value next() {
    Value value;
    std::memcpy(&value, at_, sizeof value);
    at_ += sizeof value;
    return value;
  }

  std::string text() {
    std::string letters;
    for (auto letter = next<std::uint16_t>(); letter != 0; letter = next<std::uint16_t>()) letters += static_cast<char>(letter);
    return letters;
  }

  // A name or, after 0xFFFF, a number.
  std::string nameOrNumber() {
    const unsigned char* const before = at_;
    if (next<std::uint16_t>() == 0xFFFF) return "#" + std::to_string(next<std::uint16_t>());
    at_ = before;
    return text();
  }

  TemplateArea area() {
    const int x = next<std::int16_t>();
    const int y = next<std::int16_t>();
    const int width = next<std::int16_t>();
    return {x, y, width, next<std::int16_t>()};
  }

  void align() { at_ += (4 - (at_ - start_) % 4) % 4; }

 private:
  const unsigned char* start_;
  const unsigned char* at_;
};

std::string className(const std::string& written) {
  if (written == "#128") return "Button";
  if (written == "#130") return "Static";
  if (written == "#133") return "ComboBox";
  return written;
}

TemplateControl readControl(Reader& in) {
  TemplateControl control;
  in.align();
  in.next<std::uint32_t>();  // help
  control.extendedStyle = in.next<std::uint32_t>();
  control.style = in.next<std::uint32_t>();
  control.area = in.area();
  control.identifier = in.next<std::int32_t>();
  control.className = className(in.nameOrNumber());
  control.text = in.nameOrNumber();
  in.next<std::uint16_t>();  // the size of creation data, of which there is none
  return control;
}

void readFont(Reader& in, DialogTemplate& dialog) {
  dialog.pointSize = in.next<std::uint16_t>();
  dialog.weight = in.next<std::uint16_t>();
  dialog.italic = in.next<std::uint8_t>();
  dialog.characterSet = in.next<std::uint8_t>();
  dialog.typeface = in.text();
}

DialogTemplate read(Reader in) {
  if (in.next<std::uint16_t>() != 1 || in.next<std::uint16_t>() != 0xFFFF) throw std::runtime_error("the template is no extended one");
  DialogTemplate dialog;
  in.next<std::uint32_t>();  // help
  dialog.extendedStyle = in.next<std::uint32_t>();
  dialog.style = in.next<std::uint32_t>();
  const auto count = in.next<std::uint16_t>();
  dialog.area = in.area();
  in.nameOrNumber();  // menu
  in.nameOrNumber();  // class
  dialog.title = in.text();
  readFont(in, dialog);
  for (int i = 0; i < count; ++i) dialog.controls.push_back(readControl(in));
  return dialog;
}

}  // namespace

DialogTemplate readDialogTemplate(const char* moduleName, int identifier) {
  const HMODULE library = GetModuleHandleA(moduleName);
  const HRSRC place = FindResourceA(library, MAKEINTRESOURCEA(identifier), MAKEINTRESOURCEA(5));  // a dialog
  if (library == nullptr || place == nullptr) throw std::runtime_error("there is no such dialog");
  return read(Reader(LockResource(LoadResource(library, place))));
}

}  // namespace fringix::test
