// Each export that asks a head for something, and each that talks to nobody, with every call of the system failing that it makes.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "calls.h"
#include "faulty_head.h"
#include "shortage.h"
#include "support/eventually.h"
#include "support/export_list.h"
#include "support/process_state.h"
#include "sweep.h"

namespace fringix::test {

namespace {

int addEvents(Stage& stage) {
  const SLEventHandler handler = [](std::int32_t, void*, std::int64_t) {};
  const int added = SLRegisterEventhandler(stage.handle, handler, &stage);
  const int removed = SLUnregisterEventhandler(stage.handle, handler, &stage);
  return added == SLALL_OKAY ? removed : added;
}

const std::string longName(2000, 'n');

// What takes memory of its own that the same call with little to say does not take.
const std::vector<Call>& longCalls() {
  using S = Stage;
  static const std::vector<Call> table{
      {"SLReadIniInt, long names", "", Reply::status,
       [](S& s) { return SLReadIniInt(s.handle, reinterpret_cast<std::int32_t*>(s.output), longName.c_str(), longName.c_str()); }},
      {"SLExecRS232, long texts", "", Reply::status,
       [](S& s) { return SLExecRS232(s.handle, longName.c_str(), reinterpret_cast<char*>(s.output), sizeof s.output); }, SLSYSTEM_ERROR,
       SLVERSION_TOO_OLD},
  };
  return table;
}

// In a session that knows these already they would find nothing to do.
bool wantsNewSession(const Call& call) {
  static const std::set<std::string> names{"SLGetDevKey", "SLGetGainMinMax", "SLRegisterEventhandler", "SLRegisterGPIOHandle"};
  return names.count(call.name) > 0;
}

// What a session is for beyond asking its head for something.
const std::vector<Call>& registrations() {
  using S = Stage;
  static const std::vector<Call> table{
      {"SLRegisterEventhandler", "", Reply::none, addEvents},
      {"SLRegisterGPIOHandle", "", Reply::none, [](S& s) { return SLRegisterGPIOHandle(s.handle, nullptr, 1); }},
      {"SLRegisterGPIOCallback", "", Reply::none, [](S& s) { return SLRegisterGPIOCallback(s.handle, nullptr); }},
  };
  return table;
}

// While it lives, the library does not pause on this thread.
struct Hurry {
  Hurry() {
    shortage_hurry(1);
    shortage_watch(1);
  }
  ~Hurry() {
    shortage_watch(0);
    shortage_hurry(0);
  }
};

// One call again and again, in a session that lasts as long as its connection.
class SessionUnderFaults {
 public:
  explicit SessionUnderFaults(FaultyHead& head) : head_(head), stage_{-1, &head.server.model(), head.sequence, {}} {}
  SessionUnderFaults(const SessionUnderFaults&) = delete;
  SessionUnderFaults& operator=(const SessionUnderFaults&) = delete;

  void sweepOver(const Call& call) {
    open(call);
    head_.server.model().allocateSequence(1, spare_);
    expected_ = run(call);
    head_.server.model().allocateSequence(1, spare_);
    if (wantsNewSession(call)) renew(call);
    sweep({call.name, [&] { result_ = run(call); }, [&](const Fault& fault) { return check(call, fault); }});
    close();
  }

 private:
  void open(const Call& call) {
    ASSERT_EQ(SLDevAlloc(head_.address.c_str(), &stage_.handle), SLALL_OKAY);
    std::int32_t uptime = 0;
    if (wantsNewSession(call)) return;
    EXPECT_EQ(SLGetUptime(stage_.handle, &uptime), SLALL_OKAY) << "from now on the session knows the head's version";
  }

  void close() {
    const Hurry hurry;
    EXPECT_EQ(SLDevFree(stage_.handle), SLALL_OKAY);
  }

  void renew(const Call& call) {
    close();
    open(call);
  }

  // The model of the head takes memory of its own, which is not to fail: two calls do without it here.
  int run(const Call& call) {
    if (call.name == std::string("SLSeqAlloc")) return SLSeqAlloc(stage_.handle, 1, reinterpret_cast<std::uint32_t*>(stage_.output));
    if (call.name == std::string("SLSeqFree")) return SLSeqFree(stage_.handle, spare_);
    return call.run(stage_);
  }

  testing::AssertionResult check(const Call& call, const Fault& fault) {
    head_.server.model().allocateSequence(1, spare_);
    const bool lost = result_ == SLCONNECTION_ERROR;
    const bool outOfStep = result_ != expected_ && call.name == std::string("SLLoadData");  // a block without memory stays unread
    std::int32_t gain = 0;
    const int wanted = lost ? SLSYSTEM_ERROR : SLALL_OKAY;
    const int next = outOfStep ? wanted : SLGetGain(stage_.handle, &gain);
    const int again = lost ? run(call) : call.withoutConnection;
    if (lost || outOfStep || next != wanted || wantsNewSession(call)) renew(call);
    if (mayGive(fault, result_) && next == wanted && again == call.withoutConnection) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "gave " << result_ << ", then another call " << next << ", and it again " << again;
  }

  bool mayGive(const Fault& fault, int result) const {
    if (fault.struck == 0 || fault.isHarmless()) return result == expected_;
    const bool lost = result == SLCONNECTION_ERROR;
    return fault.isOf("malloc") ? lost || result == SLSYSTEM_ERROR || result == expected_ : lost;
  }

  FaultyHead& head_;
  int expected_ = 0;
  int result_ = 0;
  std::uint32_t spare_ = 0;
  Stage stage_;
};

class ShortageTest : public testing::Test {
 protected:
  ~ShortageTest() override { printTally(); }

  FaultyHead head{"127.0.0.1"};
};

TEST_F(ShortageTest, CommandsEndWithTheirStatus) {
  const std::size_t threads = threadCount();
  const std::size_t descriptors = descriptorCount();
  {
    SessionUnderFaults session(head);
    for (const auto* table : {&calls(), &longCalls(), &registrations()}) {
      for (const Call& call : *table) session.sweepOver(call);
    }
  }
  EXPECT_TRUE(eventually([&] { return threadCount() == threads && descriptorCount() == descriptors; }))
      << threadCount() << " threads for " << threads << ", " << descriptorCount() << " files for " << descriptors;
}

}  // namespace

}  // namespace fringix::test
