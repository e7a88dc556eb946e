#include "recordings/changed_copy.h"

#include "recordings/told_end.h"

namespace fringix::tool {
namespace {

using protocol::Sender;
using recording::Kind;
using recording::Record;

class Copying {
 public:
  Copying(recording::Reader& reader, recording::Writer& writer, const Change& change) : reader_(reader), writer_(writer), change_(change) {}

  void copy() {
    std::uint64_t time = 0;
    while (std::optional<Record> record = reader_.next()) {
      time = record->time;
      if (record->kind == Kind::end) continue;
      const bool isSaid = record->kind == Kind::fromClient || record->kind == Kind::fromHead;
      if (isSaid)
        write(changed(std::move(*record)));
      else if (std::optional<Record> other = change_.record(std::move(*record)))
        write(*other);
    }
    write({Kind::end, 0, time, {}});
  }

 private:
  Record changed(Record record) {
    const Stream stream{record.connection, record.kind == Kind::fromClient ? Sender::client : Sender::head};
    std::uint64_t& offset = offsets_[stream];
    const std::size_t size = record.payload.size();
    record.payload = change_.bytes(stream, offset, std::move(record.payload));
    offset += size;
    return record;
  }

  void write(const Record& record) {
    const bool isSaid = record.kind == Kind::fromClient || record.kind == Kind::fromHead;
    if (isSaid && record.payload.empty()) return;
    writer_.write(record.kind, record.connection, record.time,
                  {reinterpret_cast<const std::uint8_t*>(record.payload.data()), record.payload.size()});
  }

  recording::Reader& reader_;
  recording::Writer& writer_;
  const Change& change_;
  std::map<Stream, std::uint64_t> offsets_;
};

}  // namespace

void copyChanged(const std::string& file, const std::string& output, const Change& change) {
  try {
    recording::Reader reader(file);
    recording::Header header = reader.header();
    change.header(header);
    recording::Writer writer(output, header);
    Copying(reader, writer, change).copy();
    tellEnd(reader);
  } catch (const recording::BadRecording& error) {
    throw asFailure(error);
  }
}

}  // namespace fringix::tool
