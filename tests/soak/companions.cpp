#include "soak/companions.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <stdexcept>

#include "faults/calls.h"
#include "support/eventually.h"

namespace fringix::test {

namespace {

using std::chrono::seconds;

constexpr std::string_view struckWord = "(struck ";
constexpr std::string_view heardWord = "heard ";

std::uint64_t numberBehind(std::string_view word, std::string_view line) {
  const std::size_t place = line.find(word);
  std::uint64_t number = 0;
  if (place != std::string_view::npos) std::from_chars(line.data() + place + word.size(), line.data() + line.size(), number);
  return number;
}

// "struck once", "struck 12 times" or "not struck yet" of each head; or that it has no fault.
void takeStruck(Reader& reader, std::string_view line) {
  if (line.find("struck") == std::string_view::npos && line.find("no fault") == std::string_view::npos) return;
  reader.number += line.find("struck once") != std::string_view::npos ? 1 : numberBehind(struckWord, line);
  ++reader.lines;
}

void takeHeard(Reader& reader, std::string_view line) { reader.number = std::max(reader.number.load(), numberBehind(heardWord, line)); }

std::vector<std::string> headArguments(const SoakPlan& plan) {
  return {"--heads",      std::to_string(plan.heads),
          "--address",    Heads::address(0),
          "--camera",     "8x4",
          "--projector",  "6x5",
          "--image-time", "0",
          "--clients",    "400"};
}

void require(int result, const char* what) {
  if (result != SLALL_OKAY) throw std::runtime_error(std::string(what) + " gives " + SLErrorcodeToChar(result));
}

}  // namespace

Reader::Reader(const std::string& program, const std::vector<std::string>& arguments, Take take) : process(program, arguments) {
  process.waitForLine("ready");
  thread_ = std::thread([this, take] { read(take); });
}

Reader::~Reader() {
  over_ = true;
  process.kill();
  thread_.join();
}

void Reader::read(Take take) {
  while (!over_) {
    if (const auto line = process.nextLine(seconds(1))) take(*this, *line);
  }
}

Heads::Heads(const SoakPlan& plan) : sequences_(plan.heads), reader_(FRINGIX_HEAD, headArguments(plan), takeStruck) {
  for (std::size_t head = 0; head < plan.heads; ++head) prepare(head);
}

// What the calls ask for.
void Heads::prepare(std::size_t head) {
  Stage stage{-1, nullptr, 0, {}};
  const auto opens = [&] { return SLDevAlloc(address(head).c_str(), &stage.handle) == SLALL_OKAY; };
  if (!eventually(opens))
    throw std::runtime_error("the head at " + address(head) + " cannot be opened: does another program use its port?");
  require(SLSeqAlloc(stage.handle, 2, &stage.sequence), "SLSeqAlloc");
  sequences_[head] = stage.sequence;
  for (const Call& call : calls()) {
    if (std::string_view(call.name) == "SLStartMeasurement" || std::string_view(call.name) == "SLSaveData")
      require(call.run(stage), call.name);
  }
  require(SLDevFree(stage.handle), "SLDevFree");
}

void Heads::misbehave(std::uint64_t seed, double rate) {
  if (rate > 0) reader_.process.write("fault random:" + std::to_string(seed) + ":" + std::to_string(rate) + "\n");
}

void Heads::trigger(std::size_t head) { reader_.process.write("trigger " + std::to_string(1 + head) + "\n"); }

std::uint64_t Heads::faultsStruck() {
  reader_.process.write("fault list\n");
  eventually([&] { return reader_.lines >= sequences_.size(); });
  return reader_.number;
}

Follower::Follower() : reader_(FRINGIX_SOAK, {"--follow", Heads::address(0)}, takeHeard) {}

void countTrigger(std::int32_t event, void* count, std::int64_t) {
  if (event == SLEVENT_TRIGGER) ++*static_cast<TriggerCount*>(count);
}

int runFollower(const std::string& address) {
  static TriggerCount heard = 0;
  std::int32_t handle = -1;
  std::int32_t gain = 0;
  std::puts("ready");
  for (;;) {
    if (handle >= 0 && SLGetGain(handle, &gain) != SLALL_OKAY) {
      SLDevFree(handle);
      handle = -1;
    }
    if (handle < 0 && SLDevAlloc(address.c_str(), &handle) == SLALL_OKAY) SLRegisterEventhandler(handle, countTrigger, &heard);
    std::printf("heard %llu\n", static_cast<unsigned long long>(heard.load()));
    std::fflush(stdout);
    std::this_thread::sleep_for(seconds(1));
  }
}

}  // namespace fringix::test
