// The library's calls of the system lead here: its table of imports is changed before main(). What the test and its head call does not.
#include <process.h>
#include <winsock2.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "interposer/plan.h"

using namespace fringix::shortage;

namespace {

template <class Result>
Result failed(int failure, Result result) noexcept {
  SetLastError(static_cast<DWORD>(failure));  // where WSAGetLastError looks, too
  return result;
}

template <class Take>
void* taken(Take&& take) noexcept {
  if (const int how = strike(memory); how != nothing) {
    errno = ENOMEM;
    return nullptr;
  }
  void* const block = take();
  if (block != nullptr) noteBlocks(1);
  return block;
}

void* takeMemory(std::size_t size) {
  return taken([&] { return std::malloc(size); });
}

void* takeClearedMemory(std::size_t count, std::size_t size) {
  return taken([&] { return std::calloc(count, size); });
}

void* resizeMemory(void* block, std::size_t size) {
  if (block == nullptr) return takeMemory(size);
  return strike(memory) == nothing ? std::realloc(block, size) : nullptr;
}

// The runtime gives a thread's own memory back when that is not watched any more, so all is counted: the imports are the library's alone.
void giveMemoryBack(void* block) {
  if (block != nullptr) noteBlocks(-1);
  std::free(block);
}

void* WINAPI mapView(HANDLE file, DWORD access, DWORD high, DWORD low, SIZE_T size) {
  if (const int how = strike(mapping); how != nothing) return failed<void*>(how, nullptr);
  return MapViewOfFile(file, access, high, low, size);
}

SOCKET WSAAPI openSocket(int family, int type, int protocol, WSAPROTOCOL_INFOW* information, GROUP group, DWORD flags) {
  if (const int how = strike(socketCall); how != nothing) return failed(how, INVALID_SOCKET);
  return WSASocketW(family, type, protocol, information, group, flags);
}

int WSAAPI connectSocket(SOCKET socket, const sockaddr* address, int size) {
  if (const int how = strike(connectCall); how != nothing) return failed(how, SOCKET_ERROR);
  return connect(socket, address, size);
}

int WSAAPI bindSocket(SOCKET socket, const sockaddr* address, int size) {
  if (const int how = strike(bindCall); how != nothing) return failed(how, SOCKET_ERROR);
  return bind(socket, address, size);
}

int WSAAPI setOption(SOCKET socket, int level, int name, const char* value, int size) {
  if (const int how = strike(optionCall); how != nothing) return failed(how, SOCKET_ERROR);
  return setsockopt(socket, level, name, value, size);
}

// Moves `size` bytes, one, or none.
template <class Move>
int moved(Function function, int size, Move&& move) noexcept {
  const int how = strike(function, size > 1);
  if (how == nothing) return move(size);
  if (how == shortCount) return move(1);
  return how == endOfFile ? 0 : failed(how, SOCKET_ERROR);
}

int WSAAPI sendBytes(SOCKET socket, const char* data, int size, int flags) {
  return moved(sendCall, size, [&](int part) { return send(socket, data, part, flags); });
}

int WSAAPI receiveBytes(SOCKET socket, char* buffer, int size, int flags) {
  return moved(receiveCall, size, [&](int part) { return recv(socket, buffer, part, flags); });
}

// Datagrams go whole or not at all.
int WSAAPI sendDatagram(SOCKET socket, const char* data, int size, int flags, const sockaddr* receiver, int receiverSize) {
  if (const int how = strike(sendCall); how != nothing) return failed(how, SOCKET_ERROR);
  return sendto(socket, data, size, flags, receiver, receiverSize);
}

int WSAAPI receiveDatagram(SOCKET socket, char* buffer, int size, int flags, sockaddr* sender, int* senderSize) {
  if (const int how = strike(receiveCall); how != nothing) return failed(how, SOCKET_ERROR);
  return recvfrom(socket, buffer, size, flags, sender, senderSize);
}

// Waits for the silence that ends a search.
bool isSilence(const timeval& limit) { return limit.tv_sec == 0 && limit.tv_usec >= 100000 && limit.tv_usec <= 300000; }

int WSAAPI waitForSockets(int count, fd_set* readable, fd_set* writable, fd_set* broken, timeval* limit) {
  if (const int how = strike(pollCall); how != nothing) return failed(how, SOCKET_ERROR);
  timeval soon{0, 30000};
  return select(count, readable, writable, broken, hurries() && limit != nullptr && isSilence(*limit) ? &soon : limit);
}

HANDLE WINAPI makeEvent(SECURITY_ATTRIBUTES* security, BOOL manual, BOOL set, const wchar_t* name) {
  if (const int how = strike(eventCall); how != nothing) return failed<HANDLE>(how, nullptr);
  return CreateEventW(security, manual, set, name);
}

using ThreadBody = unsigned(__stdcall*)(void*);

struct Start {
  ThreadBody body;
  void* argument;
};

unsigned __stdcall runWatched(void* start) {
  const Start copy = *static_cast<Start*>(start);
  std::free(start);
  setWatched(true);
  return copy.body(copy.argument);
}

uintptr_t startThread(void* security, unsigned stack, ThreadBody body, void* argument, unsigned flags, unsigned* id) {
  if (strike(threadCall) != nothing) {
    errno = EAGAIN;
    return 0;
  }
  if (!isWatched()) return _beginthreadex(security, stack, body, argument, flags, id);
  auto* const start = static_cast<Start*>(std::malloc(sizeof(Start)));
  *start = {body, argument};
  return _beginthreadex(security, stack, runWatched, start, flags, id);
}

void WINAPI pause(DWORD milliseconds) { Sleep(hurries() ? 0 : milliseconds); }

struct Detour {
  const char* name;
  void* place;
};

template <class Call>
void* placeOf(Call* call) noexcept {
  return reinterpret_cast<void*>(call);
}

const Detour detours[] = {
    {"malloc", placeOf(takeMemory)},
    {"calloc", placeOf(takeClearedMemory)},
    {"realloc", placeOf(resizeMemory)},
    {"free", placeOf(giveMemoryBack)},
    {"MapViewOfFile", placeOf(mapView)},
    {"WSASocketW", placeOf(openSocket)},
    {"connect", placeOf(connectSocket)},
    {"bind", placeOf(bindSocket)},
    {"setsockopt", placeOf(setOption)},
    {"send", placeOf(sendBytes)},
    {"recv", placeOf(receiveBytes)},
    {"sendto", placeOf(sendDatagram)},
    {"recvfrom", placeOf(receiveDatagram)},
    {"select", placeOf(waitForSockets)},
    {"CreateEventW", placeOf(makeEvent)},
    {"_beginthreadex", placeOf(startThread)},
    {"Sleep", placeOf(pause)},
};

template <class Type>
Type* in(HMODULE module, std::size_t offset) noexcept {
  return reinterpret_cast<Type*>(reinterpret_cast<std::byte*>(module) + offset);
}

void lead(IMAGE_THUNK_DATA& import, void* place) noexcept {
  DWORD before = 0;
  VirtualProtect(&import, sizeof import, PAGE_READWRITE, &before);
  import.u1.Function = reinterpret_cast<ULONGLONG>(place);
  VirtualProtect(&import, sizeof import, before, &before);
}

// How many of its imports lead elsewhere now.
std::size_t redirect(HMODULE module) noexcept {
  const auto* const headers = in<IMAGE_NT_HEADERS>(module, static_cast<std::size_t>(in<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
  const auto* part =
      in<IMAGE_IMPORT_DESCRIPTOR>(module, headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
  std::size_t count = 0;
  for (; part->Name != 0; ++part) {
    const auto* name = in<IMAGE_THUNK_DATA>(module, part->OriginalFirstThunk);
    auto* import = in<IMAGE_THUNK_DATA>(module, part->FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++import) {
      if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
      const char* const called = in<IMAGE_IMPORT_BY_NAME>(module, name->u1.AddressOfData)->Name;
      for (const Detour& detour : detours) {
        if (std::strcmp(detour.name, called) == 0) lead(*import, detour.place), ++count;
      }
    }
  }
  return count;
}

// A library that imports another set of functions would not be tested as it seems to be.
const bool ready = [] {
  const std::size_t count = redirect(GetModuleHandleA("DAXFringix.dll"));
  if (count == std::size(detours)) return true;
  std::fprintf(stderr, "%zu functions of DAXFringix.dll can be made to fail, and not %zu: see detours\n", count, std::size(detours));
  std::abort();
}();

}  // namespace
