// One session of a sequence: its head in memory, what has to come of that, and whether it does.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/platform/network.h"
#include "model/step.h"
#include "sweep/second_reading.h"

namespace fringix::test {

// What a head may do wrong while it answers.
enum class Damage { none, close, reset, silence, flip, more, pieces, deaf, status };

Damage damageOf(const Step& step);

// How often each status was given, rightly.
using Statuses = std::map<int, std::size_t>;

class SessionSlot {
 public:
  SessionSlot(std::size_t place, Statuses& given) : place_(place), given_(given) {}

  // Each of them does something and compares what comes of it.
  void open(const Step& step);
  void call(const Step& step);
  void callAlone(const Step& step);    // what the library answers by itself
  void callWrongly(const Step& step);  // with arguments that it refuses
  void free();

  bool isOpen() const { return reading_ != nullptr; }
  bool connected() const { return reading_ != nullptr && reading_->connected(); }
  std::string address() const { return "127.0.1." + std::to_string(place_); }
  std::int32_t serial() const { return 1001 + static_cast<std::int32_t>(place_); }

 private:
  fuzz::Connection& connection() const { return fuzz::network().others[place_]; }
  int allocate(const Step& step);
  int expectedOpening(const Step& step) const;
  Bytes damaged(Bytes answers, const Step& step);
  void say(const Bytes& answers);
  void expectCall(const EncodedExchange& exchange);
  void expectEvent(const EncodedExchange& exchange, bool wasConnected);

  void expectResult(int result, int expected, const char* what);

  const std::size_t place_;
  Statuses& given_;
  std::int32_t handle_ = -1;
  std::unique_ptr<SecondReading> reading_;  // while it is open
  bool headHasEnded_ = false;
  bool handlerIsThere_ = false;
  std::int64_t events_ = 0;    // that the handler saw
  std::int64_t expected_ = 0;  // that it has to see
};

}  // namespace fringix::test
