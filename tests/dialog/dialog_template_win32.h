// Reads an extended dialog template as it stands in a module's resources. Positions and sizes are in dialog units.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace fringix::test {

struct TemplateArea {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const TemplateArea&) const = default;
};

struct TemplateControl {
  std::string className;
  std::int32_t identifier = 0;
  std::string text;
  TemplateArea area;
  std::uint32_t style = 0;
  std::uint32_t extendedStyle = 0;
  bool operator==(const TemplateControl&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const TemplateControl& control) {
    return out << control.className << ' ' << control.identifier << " \"" << control.text << "\" style " << std::hex << control.style
               << std::dec << " at " << control.area.x << ',' << control.area.y << ' ' << control.area.width << 'x' << control.area.height;
  }
};

struct DialogTemplate {
  std::string title;
  TemplateArea area;
  std::uint32_t style = 0;
  std::uint32_t extendedStyle = 0;
  std::string typeface;
  int pointSize = 0;
  int weight = 0;
  int italic = 0;
  int characterSet = 0;
  std::vector<TemplateControl> controls;  // in the template's order
};

// Throws std::runtime_error when the module has no extended template with that identifier.
DialogTemplate readDialogTemplate(const char* moduleName, int identifier);

}  // namespace fringix::test
