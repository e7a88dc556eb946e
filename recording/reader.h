// Reads a recording, record after record; never more of it than one record is in memory.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/growing_file.h"
#include "recording/format.h"

namespace fringix::recording {

struct Record {
  Kind kind = Kind::end;
  std::uint32_t connection = 0;
  std::uint64_t time = 0;
  std::string payload;
};

class Reader {
 public:
  // This and next() throw BadRecording, which names the file and the byte, and std::runtime_error when it cannot be read.
  explicit Reader(const std::string& path);

  const Header& header() const { return header_; }
  const std::string& path() const { return file_.path(); }

  // Nothing at the end.
  std::optional<Record> next();

  // At the end: whether it was reached in order, and how many bytes of a last record are there that was not written whole.
  bool endedInOrder() const { return endedInOrder_; }
  std::uint64_t leftOver() const { return leftOver_; }

 private:
  std::optional<Record> takeRecord(const RecordHead& head, std::size_t present);
  std::optional<Record> leave(std::size_t size);
  [[noreturn]] void refuse(const std::string& what) const;

  files::SequentialFile file_;
  Header header_;
  std::vector<std::uint8_t> bytes_;  // of the record that is read
  std::uint64_t offset_ = 0;         // where it begins
  std::uint64_t leftOver_ = 0;
  bool endedInOrder_ = false;
  bool atEnd_ = false;
};

}  // namespace fringix::recording
