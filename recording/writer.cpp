#include "recording/writer.h"

#include <algorithm>

namespace fringix::recording {

namespace {

constexpr std::size_t worthCompressing = 256;

void append(std::vector<std::uint8_t>& bytes, std::span<const std::uint8_t> more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

void setChecksum(std::span<std::uint8_t> record) {
  RecordHead head = decodeRecordHead(record);
  head.checksum = checksumOf(record, record.subspan(recordHeadSize));
  const RecordHeadBytes bytes = encode(head);
  std::copy(bytes.begin(), bytes.end(), record.begin());
}

// Calls for each of the records that stand one behind the other.
template <typename Call>
void forEach(std::span<std::uint8_t> records, Call call) {
  while (!records.empty()) {
    const std::size_t size = recordHeadSize + decodeRecordHead(records).size;
    call(records.first(size));
    records = records.subspan(size);
  }
}

}  // namespace

void appendRecord(std::vector<std::uint8_t>& bytes, Kind kind, std::uint32_t connection, std::uint64_t time,
                  std::span<const std::uint8_t> payload) {
  append(bytes, encode(RecordHead{static_cast<std::uint32_t>(payload.size()), kind, Encoding::plain, connection, time, 0}));
  append(bytes, payload);
}

Writer::Writer(const std::string& path, const Header& header) : file_(path) {
  if (header.compressed) compressor_ = std::make_unique<Compressor>();
  file_.append(encode(header));
}

void Writer::write(std::vector<std::uint8_t>& records) {
  if (compressor_) return writeCompressed(records);
  forEach(records, setChecksum);
  file_.append(records);
}

void Writer::write(Kind kind, std::uint32_t connection, std::uint64_t time, std::span<const std::uint8_t> payload) {
  std::vector<std::uint8_t> record;
  appendRecord(record, kind, connection, time, payload);
  write(record);
}

// Each leaves by itself: those before it are not lost while it is worked on.
void Writer::writeCompressed(std::vector<std::uint8_t>& records) {
  forEach(records, [this](std::span<std::uint8_t> record) {
    compressed_.clear();
    putCompressed(decodeRecordHead(record), record.subspan(recordHeadSize));
    setChecksum(compressed_);
    file_.append(compressed_);
  });
}

void Writer::putCompressed(RecordHead head, std::span<const std::uint8_t> payload) {
  std::span<const std::uint8_t> smaller;
  if (payload.size() >= worthCompressing) smaller = compressor_->compress(payload);
  if (!smaller.empty()) {
    head.encoding = Encoding::zstd;
    payload = smaller;
  }
  head.size = static_cast<std::uint32_t>(payload.size());
  append(compressed_, encode(head));
  append(compressed_, payload);
}

}  // namespace fringix::recording
