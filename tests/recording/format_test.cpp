// Recordings as files: what is written is read again, and what is missing or wrong is told by its place.
#include <gtest/gtest.h>

#include <map>
#include <thread>

#include "recording/reader.h"
#include "recording/recorder.h"
#include "support/scratch_folder.h"
#include "support/wire.h"

namespace fringix::recording {
namespace {

using test::readBytes;
using test::writeBytes;

std::span<const std::uint8_t> bytesOf(const std::string& text) { return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}; }

class RecordingFile : public testing::Test {
 protected:
  // A recording of three records and its end.
  std::string written(bool compressed = false) {
    Writer writer(path(), {1'700'000'000'000'000, 0x7F000002, 0x7F000003, compressed});
    writer.write(Kind::opened, 1, 10, encode(Endpoint{0x7F000001, 4000}));
    writer.write(Kind::fromHead, 1, 20, bytesOf("hello"));
    writer.write(Kind::fromClient, 1, 30, bytesOf(large_));
    writer.write(Kind::end, 0, 40, {});
    return readBytes(scratch_ / "a.fxr");
  }

  std::vector<Record> read(std::uint64_t* leftOver = nullptr) const {
    Reader reader(path());
    std::vector<Record> records;
    while (auto record = reader.next()) records.push_back(std::move(*record));
    if (leftOver != nullptr) *leftOver = reader.leftOver();
    return records;
  }

  std::string complaint() const {
    try {
      read();
    } catch (const BadRecording& error) {
      return error.what();
    }
    return "none";
  }

  std::string path() const { return (scratch_ / "a.fxr").string(); }
  std::string at(std::size_t byte) const { return "\"" + path() + "\", byte " + std::to_string(byte) + ": "; }

  const test::ScratchFolder scratch_;
  const std::string large_ = std::string(2000, 'x') + test::noise(40);
};

TEST_F(RecordingFile, WhatIsWrittenIsRead) {
  for (const bool compressed : {false, true}) {
    const std::string file = written(compressed);
    EXPECT_EQ(file.size() < 1000, compressed);
    Reader reader(path());
    EXPECT_EQ(reader.header().startedAt, 1'700'000'000'000'000U);
    EXPECT_EQ(addressInWords(reader.header().head) + addressInWords(reader.header().listening), "127.0.0.2127.0.0.3");
    EXPECT_EQ(reader.header().compressed, compressed);
    const auto records = read();
    ASSERT_EQ(records.size(), 4U);
    EXPECT_EQ(inWords(decodeEndpoint(records[0].payload)), "127.0.0.1:4000");
    EXPECT_EQ(records[1].payload, "hello");
    EXPECT_EQ(records[2].payload, large_);
    EXPECT_EQ(records[2].connection, 1U);
    EXPECT_EQ(records[2].time, 30U);
    EXPECT_EQ(records[3].kind, Kind::end);
    std::filesystem::remove(scratch_ / "a.fxr");
  }
}

TEST_F(RecordingFile, HasTheDocumentedBytes) {
  const std::string file = written();
  EXPECT_EQ(file.substr(0, 16), std::string("\x89"
                                            "FXR\r\n\x1A\n\x01\0\0\0\0\0\0\0",
                                            16));
  EXPECT_EQ(file.substr(24, 8), std::string("\x02\0\0\x7F\x03\0\0\x7F", 8));
  const std::string second = file.substr(32 + 24 + 6, 24 + 5);
  EXPECT_EQ(second.substr(0, 20), std::string("\x05\0\0\0\x03\0\0\0\x01\0\0\0\x14\0\0\0\0\0\0\0", 20));
  EXPECT_EQ(second.substr(24), "hello");
}

// A crash may leave any number of bytes: all records are read that are whole.
TEST_F(RecordingFile, ALastRecordThatIsCutOffIsTold) {
  const std::string file = written();
  const std::size_t ends[] = {32, 62, 91, 91 + 24 + large_.size(), file.size()};
  std::size_t whole = 0;
  for (std::size_t size = 32; size <= file.size(); size += size > 120 && size + 30 < file.size() ? 29U : 1U) {
    while (whole < 4 && ends[whole + 1] <= size) ++whole;
    writeBytes(scratch_ / "a.fxr", file.substr(0, size));
    std::uint64_t leftOver = 0;
    ASSERT_EQ(read(&leftOver).size(), whole) << size;
    ASSERT_EQ(leftOver, size - ends[whole]) << size;
  }
}

TEST_F(RecordingFile, ALastRecordWithOtherBytesThanWereWrittenIsTold) {
  const std::string file = written();
  std::string torn = file.substr(0, 91 + 24 + large_.size());
  torn.replace(torn.size() - 100, 100, 100, '\0');
  writeBytes(scratch_ / "a.fxr", torn);
  std::uint64_t leftOver = 0;
  EXPECT_EQ(read(&leftOver).size(), 2U);
  EXPECT_EQ(leftOver, 24 + large_.size());
}

TEST_F(RecordingFile, DamageIsToldByItsPlace) {
  const std::string file = written();
  std::string damaged = file;
  damaged[62 + 24] = 'j';
  writeBytes(scratch_ / "a.fxr", damaged);
  EXPECT_EQ(complaint(), at(62) + "the checksum of this record is wrong; the file is damaged");
  damaged = file;
  damaged[62 + 4] = 77;
  writeBytes(scratch_ / "a.fxr", damaged);
  EXPECT_EQ(complaint(), at(62) + "no record begins here; the file is damaged");
  writeBytes(scratch_ / "a.fxr", file + file.substr(32));
  EXPECT_EQ(complaint(), at(file.size()) + "there is more behind the end of the recording");
}

TEST_F(RecordingFile, ALengthThatNoRecordHasIsRefusedBeforeMemoryIsTaken) {
  std::string file = written();
  file.replace(62, 4, "\xFF\xFF\xFF\x7F");
  writeBytes(scratch_ / "a.fxr", file);
  EXPECT_EQ(complaint(), at(62) + "no record begins here; the file is damaged");
}

TEST_F(RecordingFile, CompressedBytesThatAreNoneAreTold) {
  const std::string lies[] = {"nonsense", std::string("\x28\xB5\x2F\xFD\xA0\xFF\xFF\xFF\x7F", 9)};  // the second claims 2 GiB
  for (const std::string& lie : lies) {
    std::vector<std::uint8_t> file;
    const HeaderBytes header = encode(Header{});
    file.assign(header.begin(), header.end());
    RecordHead head{static_cast<std::uint32_t>(lie.size()), Kind::fromHead, Encoding::zstd, 1, 1, 0};
    head.checksum = checksumOf(encode(head), bytesOf(lie));
    const RecordHeadBytes bytes = encode(head);
    file.insert(file.end(), bytes.begin(), bytes.end());
    file.insert(file.end(), lie.begin(), lie.end());
    writeBytes(scratch_ / "a.fxr", {file.begin(), file.end()});
    EXPECT_EQ(complaint().find(at(32) + "compressed bytes that"), 0U) << complaint();
  }
}

TEST_F(RecordingFile, WhatIsNoRecordingIsRefused) {
  const std::string file = written();
  for (const std::string& other : {std::string(), std::string("hello"), file.substr(0, 31), "x" + file}) {
    writeBytes(scratch_ / "a.fxr", other);
    EXPECT_EQ(complaint(), "\"" + path() + "\": it is no recording: it does not begin with the header of one");
  }
  std::string later = file;
  later[8] = 2;
  writeBytes(scratch_ / "a.fxr", later);
  EXPECT_EQ(complaint(), "\"" + path() + "\": it is a recording of version 2, and this program reads version 1");
}

TEST_F(RecordingFile, IsNeverOverwritten) {
  const std::string file = written();
  EXPECT_THROW(Writer(path(), Header{}), std::runtime_error);
  EXPECT_EQ(readBytes(scratch_ / "a.fxr"), file);
}

TEST_F(RecordingFile, WhatIsRecordedFromManyThreadsIsAllThere) {
  {
    Recorder recorder(path(), Header{});
    std::vector<std::thread> threads;
    for (std::uint32_t connection = 1; connection <= 4; ++connection)
      threads.emplace_back([&, connection] {
        for (int i = 0; i < 500; ++i) recorder.add(Kind::fromHead, connection, bytesOf(std::to_string(i)));
      });
    for (std::thread& thread : threads) thread.join();
    recorder.finish();
    EXPECT_FALSE(recorder.failed()) << recorder.failure();
  }
  std::map<std::uint32_t, int> counts;
  std::uint64_t time = 0;
  for (const Record& record : read()) {
    EXPECT_GE(record.time, time);
    time = record.time;
    if (record.kind == Kind::end) continue;
    EXPECT_EQ(record.payload, std::to_string(counts[record.connection]++));
  }
  EXPECT_EQ(counts, (std::map<std::uint32_t, int>{{1, 500}, {2, 500}, {3, 500}, {4, 500}}));
}

TEST_F(RecordingFile, ADiskThatDoesNotKeepUpEndsTheRecording) {
  Recorder recorder(path(), Header{}, 100);
  recorder.add(Kind::fromHead, 1, bytesOf(large_));
  EXPECT_TRUE(recorder.failed());
  EXPECT_EQ(recorder.failure(), "the disk does not keep up: 0 MiB wait for it");
  recorder.finish();
  EXPECT_TRUE(read().empty());
}

}  // namespace
}  // namespace fringix::recording
