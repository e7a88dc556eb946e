// What calls must give when a head answers them with any bytes at all: another reading of the table of commands than the library's.
#pragma once

#include <cstdint>
#include <optional>

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

  Bytes rest_;
  bool connected_ = true;
  std::optional<std::int32_t> version_;
  std::optional<std::int32_t> serial_;
};

}  // namespace fringix::test
