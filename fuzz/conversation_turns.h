// The examples of conversations/ as bytes.
#pragma once

#include <string>
#include <vector>

namespace fringix::fuzz {

struct ConversationTurn {
  std::string command;
  std::string function;  // of the library
  std::string sent;      // behind the name
  std::string answered;
};

using Conversation = std::vector<ConversationTurn>;

std::vector<Conversation> conversations();

}  // namespace fringix::fuzz
