// What a recording has for those who are to be answered from it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "recording/conversation_reader.h"

namespace fringix::head {

struct RecordedConnection {
  std::uint32_t number = 0;
  bool clientSpoke = false;
  bool endedByHead = false;
  std::string greeting;                                         // what the head said before the client did
  std::vector<std::size_t> commands;                            // their numbers in the whole recording, as people are shown them
  std::map<std::string, recording::RecordedCommand> constants;  // commands whose reply is always the same, by their names
};

struct Survey {
  std::string announcement;  // empty: the head answered no searches
  std::size_t commandCount = 0;
  std::uint64_t leftOver = 0;                   // bytes at the end that are no record
  std::vector<RecordedConnection> connections;  // without those that a client only looked at
};

// Reads all of the recording; throws recording::BadRecording and std::runtime_error.
Survey survey(const std::string& file);

}  // namespace fringix::head
