#include "threads/thread_mgr.h"

#include <utility>

namespace fringix {

namespace {

constexpr std::chrono::milliseconds stopLimit{2000};
constexpr std::int32_t noObject = 1;

std::int32_t runThreadProc(void* object) { return object == nullptr ? noObject : static_cast<ThreadMgr*>(object)->ThreadProc(); }

}  // namespace

ThreadMgr::~ThreadMgr() { Stop(); }

std::uint32_t ThreadMgr::Start(std::shared_ptr<void> share) {
  stopEvent_.reset();
  Stop();
  return thread_.start(runThreadProc, this, std::move(share));
}

int ThreadMgr::Stop() {
  bool ended = true;
  if (thread_.held()) {
    stopEvent_.set();
    ended = thread_.end(stopLimit);
  }
  const bool goesOn = !ended && !platform::Worker::isEndedByForce();
  if (!goesOn) stopEvent_.reset();  // one that was abandoned has yet to see it
  return ended ? 0 : 1;
}

}  // namespace fringix
