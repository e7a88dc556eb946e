// How the library is brought to send a command of the protocol: one call for each.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>

#include "device/ICameraDevice.h"
#include "protocol/encoding.h"
#include "support/wire.h"

namespace fringix::test {

// What has crossed the wire and is no number, by the names of its fields.
using Contents = std::map<std::string, Bytes, std::less<>>;

// A call under way: arguments and expected outputs go by the names of the command's fields.
class Call {
 public:
  Call(int handle, const protocol::Facts& numbers, const Contents& others) : handle_(handle), numbers_(numbers), others_(others) {}

  int handle() const { return handle_; }
  ICameraDevice& device() const;

  template <class Number = std::int32_t>
  Number number(std::string_view field) const {
    return static_cast<Number>(numbers_.find(field)->second);
  }
  const Bytes& content(std::string_view field) const { return others_.find(field)->second; }
  const std::uint8_t* bytes(std::string_view field) const { return reinterpret_cast<const std::uint8_t*>(content(field).data()); }

  // Places for outputs. What is there in the end has to be what the head has said, plus `more`, which wraps.
  std::int32_t* into(std::string_view field, std::int32_t more = 0);
  std::uint8_t* intoBytes(std::string_view field);
  void expectOutputs() const;

 private:
  struct NumberOutput {
    std::string field;
    std::int32_t expected;
    std::int32_t found;
  };
  struct BytesOutput {
    std::string field;
    Bytes found;
  };

  const int handle_;
  const protocol::Facts& numbers_;
  const Contents& others_;
  std::deque<NumberOutput> numberOutputs_;
  std::deque<BytesOutput> bytesOutputs_;
};

struct ConversationCall {
  std::string_view command;
  int (*run)(Call& call);
  std::string_view asksFirst = {};  // another command, which the library sends by itself before this one
};

// Null for the commands with which a session begins and ends.
const ConversationCall* findCall(std::string_view command);

}  // namespace fringix::test
