// What the DLL carries besides code: the dialog, as it is written down and as Windows shows it, and the version.
#include <gtest/gtest.h>

#include <windows.h>

#include <vector>

#include "dialog_template_win32.h"
#include "fringix/fringix.h"
#include "user.h"

namespace fringix::test {

namespace {

constexpr const char* library = "DAXFringix.dll";
constexpr int dialogIdentifier = 101;
constexpr std::uint32_t shown = WS_CHILD | WS_VISIBLE;

const std::vector<TemplateControl> table = {
    {"ComboBox", 1001, "", {59, 7, 184, 77}, shown | WS_VSCROLL | WS_TABSTOP | CBS_DROPDOWNLIST, 0},
    {"Button", 1, "OK", {7, 27, 50, 14}, shown | WS_TABSTOP | BS_DEFPUSHBUTTON, 0},
    {"Button", 2, "Cancel", {193, 27, 50, 14}, shown | WS_TABSTOP, 0},
    {"Static", -1, "Select device", {7, 9, 43, 8}, shown | WS_GROUP | SS_LEFT, 0},
    {"Button", 1005, "Rescan", {140, 27, 50, 14}, shown | WS_TABSTOP, 0},
};

TEST(DialogResourceTest, TheTemplateHoldsExactlyTheseControls) { EXPECT_EQ(readDialogTemplate(library, dialogIdentifier).controls, table); }

TEST(DialogResourceTest, TheTemplateHoldsThisDialog) {
  const DialogTemplate dialog = readDialogTemplate(library, dialogIdentifier);
  EXPECT_EQ(dialog.title, "Device selector");
  EXPECT_EQ(dialog.area, (TemplateArea{0, 0, 250, 48}));
  EXPECT_EQ(dialog.style, WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_CENTER | std::uint32_t{DS_SHELLFONT});
  EXPECT_EQ(dialog.extendedStyle, std::uint32_t{WS_EX_APPWINDOW | WS_EX_TOOLWINDOW});
  EXPECT_EQ(dialog.typeface, "MS Shell Dlg");
  EXPECT_EQ(dialog.pointSize, 8);
  EXPECT_EQ(dialog.weight, 400);
  EXPECT_EQ(dialog.italic, 0);
  EXPECT_EQ(dialog.characterSet, 1);
}

struct Rectangle {
  LONG left, top, width, height;
  bool operator==(const Rectangle&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Rectangle& r) {
    return out << r.left << ',' << r.top << ' ' << r.width << 'x' << r.height;
  }
};

Rectangle inPixels(HWND dialog, const TemplateArea& units) {
  RECT area = {units.x, units.y, units.width, units.height};  // each number is scaled by itself
  MapDialogRect(dialog, &area);
  return {area.left, area.top, area.right, area.bottom};
}

Rectangle areaOf(HWND control) {
  RECT area = {};
  GetWindowRect(control, &area);
  MapWindowPoints(nullptr, GetParent(control), reinterpret_cast<POINT*>(&area), 2);
  return {area.left, area.top, area.right - area.left, area.bottom - area.top};
}

void expectShownAs(HWND control, const TemplateControl& expected) {
  char text[100] = "";
  GetClassNameA(control, text, sizeof text);
  EXPECT_EQ(text, expected.className);
  EXPECT_EQ(GetDlgCtrlID(control), expected.identifier);
  Rectangle area = areaOf(control);
  const Rectangle place = inPixels(GetParent(control), expected.area);
  // The system decides how high a drop-down list is while it is closed, and shows its scroll bar in the part that drops down.
  const bool dropsDown = expected.className == "ComboBox";
  if (dropsDown) area.height = place.height;
  EXPECT_EQ(area, place) << expected;
  const std::uint32_t compared = ~(dropsDown ? WS_DISABLED | WS_VSCROLL : std::uint32_t{WS_DISABLED});
  EXPECT_EQ(static_cast<std::uint32_t>(GetWindowLongPtrA(control, GWL_STYLE)) & compared, expected.style & compared) << expected;
  GetWindowTextA(control, text, sizeof text);
  EXPECT_EQ(text, dropsDown ? "No devices available" : expected.text);
}

TEST(DialogResourceTest, WindowsShowsTheControlsInTheirPlaces) {
  if (const std::string reason = whyNoDisplay(); !reason.empty()) GTEST_SKIP() << reason;
  const User user([](const ShownDialog& dialog) {
    const HWND window = FindWindowA("#32770", "Device selector");
    HWND control = GetWindow(window, GW_CHILD);
    for (const TemplateControl& expected : table) {
      expectShownAs(control, expected);
      control = GetWindow(control, GW_HWNDNEXT);
    }
    EXPECT_EQ(control, nullptr);
    dialog.press(cancel);
  });
  DeviceKeyEntry record = {};
  EXPECT_EQ(SLShowDeviceDialog(nullptr, &record), SLALL_OKAY);
}

std::string versionText(const std::vector<char>& information, const char* name) {
  void* text = nullptr;
  UINT size = 0;
  const std::string path = std::string("\\StringFileInfo\\040904B0\\") + name;
  return VerQueryValueA(information.data(), path.c_str(), &text, &size) ? static_cast<const char*>(text) : "";
}

TEST(DialogResourceTest, TheVersionResourceNamesLibraryAndVersion) {
  std::vector<char> information(GetFileVersionInfoSizeA(library, nullptr));
  ASSERT_TRUE(GetFileVersionInfoA(library, 0, static_cast<DWORD>(information.size()), information.data()));
  void* found = nullptr;
  UINT size = 0;
  ASSERT_TRUE(VerQueryValueA(information.data(), "\\", &found, &size));
  const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(found);
  EXPECT_EQ(fixed.dwFileVersionMS, 4U << 16U | 0U);
  EXPECT_EQ(fixed.dwFileVersionLS, 0U << 16U | 2U);
  EXPECT_EQ(versionText(information, "FileVersion"), PROJECT_VERSION_TEXT);
  EXPECT_EQ(versionText(information, "ProductName"), "DAXFringix");
  EXPECT_EQ(versionText(information, "OriginalFilename"), library);
}

}  // namespace

}  // namespace fringix::test
