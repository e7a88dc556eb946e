#include <winsock2.h>

#include <windows.h>

#include <iphlpapi.h>

#include <algorithm>
#include <cstddef>
#include <memory>

#include "heads/trigger_port.h"

namespace fringix::tool {
namespace {

// The mutex that the listener with the port holds, in the library and in other programs that take part.
constexpr const char* exchangeLock = "C5128585-87BE-4b48-9F65-9A4CAC572E59";

struct Closed {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
using Handle = std::unique_ptr<HANDLE, Closed>;

// Who finds it free has it for a moment; nobody else ends by that.
bool someListenerHasTheLock() {
  const Handle lock(OpenMutexA(SYNCHRONIZE | MUTEX_MODIFY_STATE, FALSE, exchangeLock));
  if (!lock) return false;
  const DWORD waited = WaitForSingleObject(lock.get(), 0);
  if (waited == WAIT_OBJECT_0 || waited == WAIT_ABANDONED) ReleaseMutex(lock.get());
  return waited == WAIT_TIMEOUT;
}

std::string programOf(DWORD process) {
  const Handle handle(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process));
  char path[MAX_PATH] = "";
  DWORD size = sizeof path;
  if (!handle || QueryFullProcessImageNameA(handle.get(), 0, path, &size) == 0) return {};
  const std::string whole(path, size);
  return whole.substr(whole.find_last_of("\\/") + 1);
}

std::optional<std::vector<DWORD>> processesWithPort() {
  DWORD size = 0;
  GetExtendedUdpTable(nullptr, &size, FALSE, AF_INET, UDP_TABLE_OWNER_PID, 0);
  std::vector<std::byte> buffer(size + 4096);  // others come and go between the two calls
  size = static_cast<DWORD>(buffer.size());
  const auto* table = reinterpret_cast<const MIB_UDPTABLE_OWNER_PID*>(buffer.data());
  if (GetExtendedUdpTable(buffer.data(), &size, FALSE, AF_INET, UDP_TABLE_OWNER_PID, 0) != NO_ERROR) return {};
  std::vector<DWORD> processes;
  for (DWORD i = 0; i < table->dwNumEntries; ++i) {
    if (ntohs(static_cast<u_short>(table->table[i].dwLocalPort)) == triggerPort) processes.push_back(table->table[i].dwOwningPid);
  }
  return processes;
}

}  // namespace

// Which process has the lock is not told: where this one has the port, the lock is its own.
std::optional<std::vector<PortHolder>> triggerPortHolders() {
  const auto processes = processesWithPort();
  if (!processes) return {};
  const DWORD self = GetCurrentProcessId();
  const bool own = std::find(processes->begin(), processes->end(), self) != processes->end();
  const bool shared = !own && someListenerHasTheLock();
  std::vector<PortHolder> holders;
  for (const DWORD process : *processes) holders.push_back({process, programOf(process), {}, own ? process == self : shared});
  return holders;
}

}  // namespace fringix::tool
