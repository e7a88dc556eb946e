// Three named objects, the same in every process of the host: other programs that know the names take part.
#include "platform/trigger_exchange.h"

#include <winsock2.h>

#include <windows.h>

namespace fringix::platform {

namespace {

constexpr const char* blockName = "5CD4232B-DC80-424a-9B46-B85B97F28D95";
constexpr const char* lockName = "C5128585-87BE-4b48-9F65-9A4CAC572E59";
constexpr const char* notificationName = "01C8BBBF-2F08-43b6-A986-6EE1CA79A1BE";
constexpr DWORD blockSize = 64;  // bytes 0 to 3: the sender's address in host byte order; the rest is reserved and zero

HANDLE handleOf(const ManualResetEvent& event) noexcept { return reinterpret_cast<HANDLE>(event.native()); }

void close(HANDLE& handle) noexcept {
  if (handle != nullptr) CloseHandle(handle);
  handle = nullptr;
}

}  // namespace

struct TriggerExchange::Native {
  HANDLE mapping = nullptr;
  void* view = nullptr;
  HANDLE lock = nullptr;
  HANDLE notification = nullptr;
  WSAEVENT arrival = WSA_INVALID_EVENT;
  bool receiver = false;
  DWORD error = 0;
};

TriggerExchange::TriggerExchange() : native_(std::make_unique<Native>()) {}

TriggerExchange::~TriggerExchange() {
  resign();
  close(native_->notification);
  close(native_->lock);
  if (native_->view != nullptr) UnmapViewOfFile(native_->view);
  close(native_->mapping);
}

TriggerExchange::Block TriggerExchange::openBlock() noexcept {
  native_->mapping = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, blockSize, blockName);
  if (native_->mapping == nullptr) {
    native_->error = GetLastError();
    return Block::none;
  }
  native_->view = MapViewOfFile(native_->mapping, FILE_MAP_ALL_ACCESS, 0, 0, blockSize);
  if (native_->view != nullptr) return Block::ready;
  native_->error = GetLastError();
  close(native_->mapping);
  return Block::noView;
}

bool TriggerExchange::openLock() noexcept {
  native_->lock = CreateMutexA(nullptr, FALSE, lockName);
  return native_->lock != nullptr;
}

bool TriggerExchange::openNotification() noexcept {
  native_->notification = CreateEventA(nullptr, TRUE, FALSE, notificationName);
  return native_->notification != nullptr;
}

std::uint32_t TriggerExchange::lastError() const noexcept { return native_->error; }

TriggerExchange::Turn TriggerExchange::waitForTurn(const ManualResetEvent& stop) noexcept {
  const HANDLE handles[] = {native_->lock, handleOf(stop), native_->notification};
  switch (WaitForMultipleObjects(3, handles, FALSE, INFINITE)) {
    case WAIT_OBJECT_0:
      native_->receiver = true;
      return Turn::receiver;
    case WAIT_OBJECT_0 + 1:
      return Turn::stop;
    case WAIT_OBJECT_0 + 2:
      return Turn::trigger;
    default:
      return Turn::failed;  // also when the receiver's thread was ended by force and left the lock behind; kept on purpose
  }
}

bool TriggerExchange::hasView() const noexcept { return native_->view != nullptr; }

// Another process may do to the block what it likes: the system's own copy reports a fault where an access would raise it.
bool TriggerExchange::readSender(std::uint32_t* address) noexcept {
  return ReadProcessMemory(GetCurrentProcess(), native_->view, address, sizeof *address, nullptr) != 0;
}

bool TriggerExchange::openArrival() noexcept {
  native_->arrival = WSACreateEvent();
  return native_->arrival != WSA_INVALID_EVENT;
}

TriggerExchange::Arrival TriggerExchange::waitForDatagram(const ManualResetEvent& stop, const Socket& socket) noexcept {
  if (WSAEventSelect(socket.handle(), native_->arrival, FD_READ) != 0) return Arrival::noSelection;
  const HANDLE handles[] = {handleOf(stop), native_->arrival};
  switch (WaitForMultipleObjects(2, handles, FALSE, INFINITE)) {
    case WAIT_OBJECT_0:
      return Arrival::stop;
    case WAIT_OBJECT_0 + 1:
      return Arrival::datagram;
    default:
      return Arrival::failed;
  }
}

void TriggerExchange::resetArrival() noexcept { WSAResetEvent(native_->arrival); }

bool TriggerExchange::writeSender(std::uint32_t address) noexcept {
  return WriteProcessMemory(GetCurrentProcess(), native_->view, &address, sizeof address, nullptr) != 0;
}

void TriggerExchange::announce() noexcept { SetEvent(native_->notification); }

void TriggerExchange::settle() noexcept { ResetEvent(native_->notification); }

void TriggerExchange::resign() noexcept {
  if (native_->receiver) ReleaseMutex(native_->lock);
  native_->receiver = false;
  if (native_->arrival != WSA_INVALID_EVENT) WSACloseEvent(native_->arrival);
  native_->arrival = WSA_INVALID_EVENT;
}

}  // namespace fringix::platform
