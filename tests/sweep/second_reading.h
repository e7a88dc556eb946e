// What calls must give when a head answers them with any bytes at all: another reading of the table of commands than the library's.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "device/encoded_conversation.h"

namespace fringix::test {

protocol::Facts headOfTheExamples();

struct Outcome {
  int result;
  bool mayHide = false;  // the version could not be asked for: SLVERSION_TOO_OLD will do as well
  bool isTold = false;   // outputs have what the head has said
  protocol::Facts numbers{};
  Contents others{};
};

class SecondReading {
 public:
  explicit SecondReading(Bytes answers) : rest_(std::move(answers)) {}

  bool connected() const { return connected_; }
  Outcome call(const EncodedExchange& exchange);

  // A session that goes on: what its head says more, or that it takes no further request.
  void hear(const Bytes& more);
  void stopRequests();
  bool takesRequests() const { return !deaf_; }
  bool needsNot(const std::string& command) const;  // what it asks is known
  std::optional<std::int32_t> serial() const { return serial_; }
  static int withoutConnection(const EncodedExchange& exchange);

 private:
  int read(const EncodedExchange& exchange, Outcome& outcome);
  std::optional<int> readBefore(const EncodedExchange& exchange, Outcome& outcome);
  std::optional<int> read(const protocol::Field& field, Outcome& outcome, const std::string& command);
  std::optional<int> readNumber(const protocol::Field& field, std::int32_t value, Outcome& outcome);
  std::optional<int> readBytes(const protocol::Field& field, Outcome& outcome, const std::string& command);
  std::optional<std::int32_t> takeInteger();
  std::optional<Bytes> take(std::size_t size);
  bool knows(std::optional<std::int32_t>& fact);  // asks, where need be
  void remember(const EncodedExchange& exchange, const Outcome& outcome);

  Bytes rest_;
  bool connected_ = true;
  bool deaf_ = false;
  std::map<std::string, protocol::Facts> known_;  // what some commands have told, which are not sent again then
  std::optional<std::int32_t> version_;
  std::optional<std::int32_t> serial_;
};

}  // namespace fringix::test
