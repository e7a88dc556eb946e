#include "soak/worker.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <thread>

#include "faults/calls.h"

namespace fringix::test {

namespace {

using std::chrono::milliseconds;

constexpr int mostCallers = 2;  // of a session at once

// A head that is out of step may state any size, and memory for that is held until it has been silent for long enough.
bool takesMemory(const Call& call) {
  const std::string_view name = call.name;
  return name == "SLLoadData" || name == "SLExecRS232";
}

void ignoreEvent(std::int32_t, void*, std::int64_t) {}
void ignoreTrigger(void*) {}

struct LocalCall {
  const char* name;
  int (*run)(std::int32_t handle);
};

const std::vector<LocalCall>& localCalls() {
  using U32 = std::uint32_t;
  static void* const noWindow = reinterpret_cast<void*>(std::intptr_t{1 << 20});
  static const std::vector<LocalCall> all{
      {"SLGetCameraSize", [](std::int32_t handle) { return SLGetCameraSize(handle, nullptr, nullptr); }},
      {"SLGetProjectorSize",
       [](std::int32_t handle) {
         U32 width = 0, height = 0;
         return SLGetProjectorSize(handle, &width, &height);
       }},
      {"SLRegisterEventhandler", [](std::int32_t handle) { return SLRegisterEventhandler(handle, ignoreEvent, nullptr); }},
      {"SLUnregisterEventhandler", [](std::int32_t handle) { return SLUnregisterEventhandler(handle, ignoreEvent, nullptr); }},
      {"SLRegisterGPIOCallback", [](std::int32_t handle) { return SLRegisterGPIOCallback(handle, ignoreTrigger); }},
      {"SLRegisterGPIOHandle", [](std::int32_t handle) { return SLRegisterGPIOHandle(handle, noWindow, 1); }},
  };
  return all;
}

// Buffers are made for heads of this size; one that was misheard is another.
bool isHeardWell(std::int32_t handle) {
  std::uint32_t camera[2] = {}, projector[2] = {};
  SLGetCameraSize(handle, &camera[0], &camera[1]);
  SLGetProjectorSize(handle, &projector[0], &projector[1]);
  return camera[0] == 8 && camera[1] == 4 && projector[0] == 6 && projector[1] == 5;
}

// For good, and each page of it is used.
void lose(std::size_t bytes) {
  static std::atomic<void*> last = nullptr;
  if (bytes > 0) last = std::memset(::operator new(bytes), 1, bytes);
}

}  // namespace

template <class Function>
int Worker::timed(const char* name, Function function) {
  const auto begin = Clock::now();
  underWay_ = name;
  began_ = begin.time_since_epoch().count();
  const int result = function();
  began_ = 0;
  const auto took = std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
  tally_.add(name, result, took);
  ++common_.operations;
  if (took > longestCall) common_.violations.add(std::string(name) + " took " + std::to_string(took.count()) + " ms");
  lose(common_.plan.leak);
  return result;
}

void Worker::complainWhenStuck() {
  const Clock::duration began{began_.load()};
  if (began.count() != 0 && Clock::now().time_since_epoch() - began > longestCall + std::chrono::seconds(30))
    common_.violations.add(std::string(underWay_) + " does not return");
}

void Worker::require(bool condition, const char* name, int result) {
  if (!condition) common_.violations.add(std::string(name) + " gives " + std::to_string(result) + ", which it may not");
}

void Worker::run() {
  const auto period = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1 / common_.plan.rate));
  for (auto next = Clock::now(); !common_.over; next = std::max(next + period, Clock::now() - period)) {
    std::this_thread::sleep_until(next);
    carryOut(choices_.next());
  }
}

void Worker::carryOut(const Choice& choice) {
  const auto session = common_.slots.get(choice.slot);
  if (choice.action == Action::search) return search(choice.slot);
  if (choice.action == Action::unknown) return callUnknown(choice.which);
  if (choice.action == Action::renew || !session) return renew(choice.slot, false);
  if (choice.action == Action::end) return end(*session);
  if (choice.action == Action::local) return callLocally(*session, choice.which);
  // A silent head would soon have all threads wait for one session.
  if (session->callers++ < mostCallers) call(*session, choice.which);
  --session->callers;
}

void Worker::call(Session& session, std::size_t which) {
  const Call& call = calls()[which % calls().size()];
  Stage stage{session.handle, nullptr, common_.heads.sequence(session.head), {}};
  const Knowledge before = session.known();
  common_.takingMemory += takesMemory(call) ? 1 : 0;
  const int result = timed(call.name, [&] { return call.run(stage); });
  common_.takingMemory -= takesMemory(call) ? 1 : 0;
  require(mayGive(call, result, before, session.known()), call.name, result);
  if (!handsOn(call)) note(session, call.name, result);
}

// The connection of a session breaks once.
void Worker::note(Session& session, const char* function, int result) {
  if (result != SLCONNECTION_ERROR) return;
  session.failed = true;
  require(++session.breaks == 1, function, result);
}

void Worker::callLocally(Session& session, std::size_t which) {
  const LocalCall& call = localCalls()[which % localCalls().size()];
  const Knowledge before = session.known();
  const int result = timed(call.name, [&] { return call.run(session.handle); });
  require(mayGiveByItself(result, before, session.known()), call.name, result);
}

void Worker::renew(std::size_t slot, bool bySerial) {
  const auto old = common_.slots.put(slot, open(slot % common_.plan.heads, bySerial));
  if (old) end(*old);
}

std::shared_ptr<Session> Worker::open(std::size_t head, bool bySerial) {
  const char* const name = bySerial ? "SLDevAllocBySerial" : "SLDevAlloc";
  std::int32_t handle = -1;
  const int result = timed(name, [&] {
    return bySerial ? SLDevAllocBySerial(Heads::serial(head), &handle) : SLDevAlloc(Heads::address(head).c_str(), &handle);
  });
  require(mayBeOpenedWith(result) && (result == SLALL_OKAY) == (handle >= 0), name, result);
  return result == SLALL_OKAY ? welcome(std::make_shared<Session>(handle, head)) : nullptr;
}

std::shared_ptr<Session> Worker::welcome(std::shared_ptr<Session> session) {
  ++common_.openings;
  DeviceKeyEntry key;
  const int result = timed("SLGetDevKey", [&] { return SLGetDevKey(session->handle, &key); });
  note(*session, "SLGetDevKey", result);
  SLRegisterEventhandler(session->handle, countTrigger, &common_.triggersHeard);
  if (isHeardWell(session->handle)) return session;
  end(*session);
  return nullptr;
}

void Worker::end(Session& session) {
  const Knowledge before = session.known();
  ++session.freeing;
  const int result = timed("SLDevFree", [&] { return SLDevFree(session.handle); });
  require(mayBeFreedWith(result, before, session.freeing > 1), "SLDevFree", result);
  note(session, "SLDevFree", result);
  session.freed = true;
}

void Worker::end(std::size_t slot) {
  if (const auto session = common_.slots.put(slot, nullptr)) end(*session);
}

void Worker::callUnknown(std::size_t which) {
  const Call& call = calls()[which % calls().size()];
  Stage stage{-1, nullptr, 0, {}};
  const int result = timed(call.name, [&] { return call.run(stage); });
  require(result == SLUNKNOWN_DEVICE_ID, call.name, result);
}

// Heads that are about to be found may be silent or lie, but entries that are counted are there.
void Worker::search(std::size_t slot) {
  std::int32_t count = 0;
  const int result = timed("SLGetDeviceKeyListSize", [&] { return SLGetDeviceKeyListSize(&count); });
  require(result == SLALL_OKAY && count >= 0, "SLGetDeviceKeyListSize", result);
  for (std::int32_t i = 0; i <= std::min(count, 255); ++i) {
    DeviceKeyEntryEx entry;
    const int given = timed("SLGetDeviceKeyListEntryEx", [&] { return SLGetDeviceKeyListEntryEx(i, &entry); });
    require(given == (i < count && i <= 255 ? SLALL_OKAY : SLBAD_PARAMETER), "SLGetDeviceKeyListEntryEx", given);
  }
  renew(slot, true);
}

}  // namespace fringix::test
