#include "recording/reader.h"

#include <span>

#include "recording/compression.h"

namespace fringix::recording {

Reader::Reader(const std::string& path) : file_(path), bytes_(headerSize) {
  const std::size_t size = file_.read(bytes_);
  try {
    header_ = decodeHeader(std::span(bytes_).first(size));
  } catch (const BadRecording& error) {
    throw BadRecording("\"" + path + "\": " + error.what());
  }
  offset_ = headerSize;
}

void Reader::refuse(const std::string& what) const {
  throw BadRecording("\"" + path() + "\", byte " + std::to_string(offset_) + ": " + what);
}

std::optional<Record> Reader::leave(std::size_t size) {
  leftOver_ = size;
  atEnd_ = true;
  return {};
}

std::optional<Record> Reader::next() {
  if (atEnd_) return {};
  bytes_.resize(recordHeadSize);
  const std::size_t size = file_.read(bytes_);
  if (size < recordHeadSize) return leave(size);
  const RecordHead head = decodeRecordHead(bytes_);
  if (!isReasonable(head)) refuse("no record begins here; the file is damaged");
  bytes_.resize(recordHeadSize + head.size);
  return takeRecord(head, recordHeadSize + file_.read(std::span(bytes_).subspan(recordHeadSize)));
}

// What the program wrote when it, or the machine, died may lack its end, or have another one.
std::optional<Record> Reader::takeRecord(const RecordHead& head, std::size_t present) {
  if (present < bytes_.size()) return leave(present);
  const std::span<const std::uint8_t> payload = std::span(bytes_).subspan(recordHeadSize);
  if (checksumOf(bytes_, payload) != head.checksum) {
    std::uint8_t more = 0;
    if (file_.read({&more, 1}) == 0) return leave(present);
    refuse("the checksum of this record is wrong; the file is damaged");
  }
  Record record{head.kind, head.connection, head.time, {}};
  try {
    if (head.encoding == Encoding::zstd) {
      const std::vector<std::uint8_t> plain = decompress(payload);
      record.payload.assign(plain.begin(), plain.end());
    } else {
      record.payload.assign(payload.begin(), payload.end());
    }
  } catch (const BadRecording& error) {
    refuse(error.what());
  }
  if (endedInOrder_) refuse("there is more behind the end of the recording");
  offset_ += bytes_.size();
  endedInOrder_ = record.kind == Kind::end;
  return record;
}

}  // namespace fringix::recording
