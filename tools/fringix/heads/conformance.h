// Plays the conversations with a head: whether it says what the protocol has it say.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace fringix::tool {

enum class Conformity { asExpected, differs, broken, leftOut };

struct ConversationResult {
  std::string command;
  std::string example;
  Conformity verdict = Conformity::asExpected;
  std::vector<std::string> reasons;  // what differs, why it broke, or why it was left out
};

struct ConformanceTask {
  std::string address;
  std::chrono::milliseconds limit;  // for whatever the head is waited for
  bool destructive = false;         // also conversations that leave something changed
};

// Tells each result as it comes. Throws Failure when there is no head.
std::vector<ConversationResult> playConversations(const ConformanceTask& task, const std::function<void(const ConversationResult&)>& tell);

}  // namespace fringix::tool
