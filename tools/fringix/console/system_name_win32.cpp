#include <windows.h>

#include "console/system_name.h"

namespace fringix::tool {
namespace {

using GetVersion = LONG(WINAPI*)(OSVERSIONINFOW* version);

}  // namespace

// The documented functions tell programs without a manifest for it an older version.
std::string systemName() {
  const HMODULE system = GetModuleHandleW(L"ntdll.dll");
  const auto getVersion =
      system == nullptr ? nullptr : reinterpret_cast<GetVersion>(reinterpret_cast<void*>(GetProcAddress(system, "RtlGetVersion")));
  OSVERSIONINFOW version{};
  version.dwOSVersionInfoSize = sizeof version;
  if (getVersion == nullptr || getVersion(&version) != 0) return "Windows";
  return "Windows " + std::to_string(version.dwMajorVersion) + '.' + std::to_string(version.dwMinorVersion) + '.' +
         std::to_string(version.dwBuildNumber);
}

}  // namespace fringix::tool
