// An example of conversations/ as bytes, with what the library asks by itself on the way.
#pragma once

#include <vector>

#include "device/conversation_calls.h"
#include "protocol/conversations.h"

namespace fringix::test {

struct EncodedField {
  const protocol::Field* field;
  Bytes bytes;
};

struct EncodedExchange {
  const protocol::Command* command;
  std::vector<EncodedField> fields;
  protocol::Facts numbers;  // of its fields
  Contents others;
  bool called = true;  // else the library asks by itself, for the next one that is called

  Bytes sent() const;  // by the client
};

struct EncodedConversation {
  std::vector<EncodedExchange> exchanges;
};

EncodedExchange encode(const protocol::Exchange& exchange, protocol::Facts& facts);
EncodedConversation encode(const protocol::Example& example, protocol::Facts facts);

// What the library's function gives in the end.
int resultOf(const protocol::Example& example);

}  // namespace fringix::test
