// A recording written anew, with some of its bytes changed or left out.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "protocol/conversations.h"
#include "recording/reader.h"
#include "recording/writer.h"

namespace fringix::tool {

// What either side said in a connection.
using Stream = std::pair<std::uint32_t, protocol::Sender>;

struct Change {
  std::function<void(recording::Header& header)> header;
  // The bytes that `bytes`, which begin at `offset` of their stream, become.
  std::function<std::string(Stream stream, std::uint64_t offset, std::string bytes)> bytes;
  // What another record becomes; nothing: it is left out.
  std::function<std::optional<recording::Record>(recording::Record record)> record;
};

// Throws Failure where the file is damaged; what stands before that is in the copy then.
void copyChanged(const std::string& file, const std::string& output, const Change& change);

}  // namespace fringix::tool
