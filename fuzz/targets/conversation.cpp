// The table of the protocol's commands from any text, and its examples as bytes.
#include <algorithm>
#include <stdexcept>

#include "fuzz/target.h"
#include "protocol/conversations.h"
#include "protocol/encoding.h"

namespace fringix::fuzz::conversation_target {

namespace {

void encodeAll(const protocol::CommandTable& table) {
  protocol::Facts facts{{"camera.width", 8}, {"camera.height", 4}};
  for (const protocol::Command& command : table.commands()) {
    for (const protocol::Example& example : command.examples) {
      for (const protocol::Exchange& exchange : example.exchanges) {
        const auto& fields = table.find(exchange.command).fields;
        for (std::size_t i = 0; i < exchange.values.size(); ++i) protocol::encode(fields[i], exchange.values[i], facts);
      }
    }
  }
}

void run(Bytes input) {
  try {
    encodeAll(protocol::CommandTable(textOf(input)));
  } catch (const std::runtime_error&) {
  }
}

// Each command by itself.
std::vector<std::string> seeds() {
  std::vector<std::string> all;
  std::string_view rest = protocol::conversationFiles();
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find("\ncommand", 1), rest.size());
    all.emplace_back(rest.substr(0, end));
    rest.remove_prefix(end);
  }
  return all;
}

const Registered target("conversation", run, seeds);

}  // namespace

}  // namespace fringix::fuzz::conversation_target
