#include <winsock2.h>

#include <windows.h>

#include <netfw.h>

#include <array>
#include <cstring>
#include <memory>

#include "diagnosis/firewall_reading.h"

namespace fringix::tool::diagnosis {
namespace {

constexpr const char* policy = "SYSTEM\\CurrentControlSet\\Services\\SharedAccess\\Parameters\\FirewallPolicy";

struct Closed {
  using pointer = HKEY;
  void operator()(HKEY key) const noexcept { RegCloseKey(key); }
};
using Key = std::unique_ptr<HKEY, Closed>;

Key open(const std::string& path) {
  HKEY key = nullptr;
  RegOpenKeyExA(HKEY_LOCAL_MACHINE, (policy + path).c_str(), 0, KEY_READ, &key);
  return Key(key);
}

bool isSet(const Key& key, const char* name, bool otherwise) {
  DWORD value = 0;
  DWORD size = sizeof value;
  const bool told = RegQueryValueExA(key.get(), name, nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &size) == ERROR_SUCCESS;
  return told ? value != 0 : otherwise;
}

// Of the networks that this machine is in just now; all of them where the system does not tell.
long profilesInUse() {
  long profiles = 0;
  INetFwPolicy2* firewall = nullptr;
  const HRESULT begun = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  const HRESULT made =
      CoCreateInstance(__uuidof(NetFwPolicy2), nullptr, CLSCTX_INPROC_SERVER, __uuidof(INetFwPolicy2), reinterpret_cast<void**>(&firewall));
  if (SUCCEEDED(made) && firewall != nullptr) {
    if (FAILED(firewall->get_CurrentProfileTypes(&profiles))) profiles = 0;
    firewall->Release();
  }
  if (SUCCEEDED(begun)) CoUninitialize();
  return profiles == 0 ? NET_FW_PROFILE2_DOMAIN | NET_FW_PROFILE2_PRIVATE | NET_FW_PROFILE2_PUBLIC : profiles;
}

struct Profile {
  long type;
  const char* name;  // in rules
  const char* path;
};

constexpr Profile allProfiles[] = {{NET_FW_PROFILE2_DOMAIN, "Domain", "\\DomainProfile"},
                                   {NET_FW_PROFILE2_PRIVATE, "Private", "\\StandardProfile"},
                                   {NET_FW_PROFILE2_PUBLIC, "Public", "\\PublicProfile"}};

// "profile Public on block"
std::string describeProfiles() {
  const long inUse = profilesInUse();
  std::string text;
  for (const Profile& profile : allProfiles) {
    const Key key = open(profile.path);
    if ((inUse & profile.type) == 0 || !key) continue;
    text += std::string("profile ") + profile.name + (isSet(key, "EnableFirewall", true) ? " on " : " off ") +
            (isSet(key, "DefaultInboundAction", true) ? "block\n" : "allow\n");
  }
  return text;
}

// Values "{GUID}" = "v2.31|Action=Allow|...".
std::string readRules() {
  const Key key = open("\\FirewallRules");
  std::string text;
  std::array<char, 16384> name;
  std::array<char, 16384> rule;
  for (DWORD index = 0; key; ++index) {
    DWORD nameSize = name.size();
    DWORD size = rule.size() - 1;
    const LSTATUS status =
        RegEnumValueA(key.get(), index, name.data(), &nameSize, nullptr, nullptr, reinterpret_cast<BYTE*>(rule.data()), &size);
    if (status == ERROR_MORE_DATA) continue;
    if (status != ERROR_SUCCESS) break;
    rule[size] = '\0';
    text += rule.data();
    text += '\n';
  }
  return text;
}

std::string programPath() {
  std::array<char, 4096> path{};
  GetModuleFileNameA(nullptr, path.data(), path.size() - 1);
  return path.data();
}

}  // namespace

const System thisSystem = System::windows;

// The registry has the same words in every language, and every user may read it.
std::vector<Firewall> readFirewalls() {
  if (!open("\\FirewallRules")) return {};
  return {{FirewallKind::windows, true, "program " + programPath() + "\n" + describeProfiles() + readRules()}};
}

}  // namespace fringix::tool::diagnosis
