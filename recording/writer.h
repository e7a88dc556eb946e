// Writes a recording, record after record. What was written stays readable however the program ends.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "files/growing_file.h"
#include "recording/compression.h"
#include "recording/format.h"

namespace fringix::recording {

// A record as one run of bytes, but for its checksum.
void appendRecord(std::vector<std::uint8_t>& bytes, Kind kind, std::uint32_t connection, std::uint64_t time,
                  std::span<const std::uint8_t> payload);

class Writer {
 public:
  // Makes the file, which must not be there. This and the others throw std::runtime_error when it cannot be written.
  Writer(const std::string& path, const Header& header);

  // Records as appendRecord makes them; checksums are set.
  void write(std::vector<std::uint8_t>& records);
  void write(Kind kind, std::uint32_t connection, std::uint64_t time, std::span<const std::uint8_t> payload);

 private:
  void writeCompressed(std::vector<std::uint8_t>& records);
  void putCompressed(RecordHead head, std::span<const std::uint8_t> payload);

  files::GrowingFile file_;
  std::unique_ptr<Compressor> compressor_;
  std::vector<std::uint8_t> compressed_;
};

}  // namespace fringix::recording
