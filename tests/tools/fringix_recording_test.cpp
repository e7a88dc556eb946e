// Recordings that are changed: parts of them, and such that do not tell whose they are.
#include <gtest/gtest.h>

#include "arguments/usage_error.h"
#include "plain_client.h"
#include "recorded_head.h"
#include "recording/conversation_reader.h"
#include "recording/writer.h"
#include "recordings/anonymise.h"
#include "recordings/cut.h"
#include "replaying_head.h"
#include "support/wire.h"

namespace fringix::test {
namespace {

using recording::ConversationReader;
using recording::RecordedCommand;

class FringixRecording : public RecordedHead {
 protected:
  // Commands 1 to 9: the greeting, the camera's size, and then these.
  void recordASession() {
    record();
    PlainClient client;
    const auto ask = [&](const Bytes& words, std::size_t size) {
      client.say(words);
      return client.receive(size);
    };
    ask(text("20MSG_SLGetProtocolVersion"), 4);
    ask(text("80MSG_SLSaveDataToFile") + integers(13, 2), 4);
    ask(Bytes("a\0", 2) + "head 4711 a 1", 4);
    ask(text("21MSG_SLGetSerial"), 4);
    first_ = ask(text("41MSG_SLGetLiveImage"), std::size_t{64} * 48);
    ask(text("81MSG_SLReadDataFromFile") + integer(2), 4);
    ask(Bytes("a\0", 2), 4 + 13 + 4);
    second_ = ask(text("41MSG_SLGetLiveImage"), std::size_t{64} * 48);
    client.say(text("ByeBye="));
  }

  // Into b.fxr; gives what has failed.
  std::string cut(const std::string& from, const std::string& to = "") {
    const auto place = [](const std::string& text) { return text.empty() ? tool::CutPlace{} : tool::toCutPlace(text); };
    return change([&] { tool::cutRecording(path("a.fxr"), place(from), place(to), path("b.fxr")); });
  }
  std::string anonymise(const tool::Anonymity& anonymity) {
    return change([&] { tool::anonymiseRecording(path("a.fxr"), anonymity, path("b.fxr")); });
  }
  std::string change(const std::function<void()>& work) {
    std::filesystem::remove(scratch_ / "b.fxr");
    try {
      work();
    } catch (const tool::Failure& failure) {
      return failure.what();
    }
    return "";
  }

  std::vector<RecordedCommand> commands(const std::string& name = "b.fxr") const {
    ConversationReader reader((scratch_ / name).string());
    std::vector<RecordedCommand> commands;
    while (auto happening = reader.next()) {
      if (happening->command) commands.push_back(std::move(*happening->command));
    }
    return commands;
  }

  std::vector<std::string> namesOfCommands() const {
    std::vector<std::string> names;
    for (const RecordedCommand& command : commands()) names.push_back(command.name.substr(0, 4));
    return names;
  }

  Bytes repliesTo(const std::string& name) const {
    Bytes replies;
    for (const RecordedCommand& command : commands()) {
      if (command.name == name) replies += command.by(protocol::Sender::head).bytes;
    }
    return replies;
  }

  Bytes first_;
  Bytes second_;
};

using Names = std::vector<std::string>;

TEST_F(FringixRecording, IsCutByNumbersOfCommands) {
  recordASession();
  finishRecording(1);
  EXPECT_EQ(cut("6", "7"), "");
  EXPECT_EQ(namesOfCommands(), (Names{"gree", "40MS", "20MS", "21MS", "41MS", "81MS"}));
  EXPECT_EQ(cut("8"), "");
  EXPECT_EQ(namesOfCommands(), (Names{"gree", "40MS", "20MS", "21MS", "41MS", "ByeB"}));
  EXPECT_TRUE(has(show("b.fxr").output, "connection 1 ended by the client")) << "its end is in the part";
  EXPECT_EQ(cut("", "4"), "");
  EXPECT_EQ(namesOfCommands(), (Names{"gree", "40MS", "20MS", "80MS"}));
  EXPECT_FALSE(has(show("b.fxr").output, "ended by the client"));
  const std::string failure = cut("40");
  EXPECT_TRUE(has(failure, "there is no command in this part of the recording, which has 9")) << failure;
}

TEST_F(FringixRecording, IsCutByTimes) {
  {
    recording::Writer writer((scratch_ / "a.fxr").string(), {});
    const auto write = [&](recording::Kind kind, int seconds, const Bytes& bytes) {
      writer.write(kind, 1, static_cast<std::uint64_t>(seconds) * 1'000'000'000,
                   {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    };
    write(recording::Kind::opened, 0, Bytes(6, '\0'));
    write(recording::Kind::fromHead, 0, integer(3300));
    write(recording::Kind::fromClient, 0, integer(3300) + text("100MSG_SLNOOP"));
    write(recording::Kind::fromClient, 10, text("100MSG_SLNOOP") + text("70MSG_SLEnableCamLogging"));
    write(recording::Kind::fromClient, 90, text("ByeBye="));
  }
  EXPECT_EQ(cut("10s", "1min"), "");
  EXPECT_EQ(namesOfCommands(), (Names{"gree", "100M", "70MS"}));
  EXPECT_EQ(cut("0.5"), "");
  EXPECT_EQ(namesOfCommands(), (Names{"gree", "100M", "70MS", "ByeB"}));
  EXPECT_EQ(cut("", "9999ms"), "");
  EXPECT_EQ(namesOfCommands(), (Names{"gree", "100M"}));
  const std::string failure = cut("2min");
  EXPECT_TRUE(has(failure, "there is no command in this part")) << failure;
  EXPECT_THROW(tool::toCutPlace("yesterday"), arguments::UsageError);
}

TEST_F(FringixRecording, APartIsReplayed) {
  recordASession();
  finishRecording(1);
  server_.stop();
  EXPECT_EQ(cut("8"), "");
  ReplayingHead head(scratch_ / "b.fxr");
  {
    PlainClient client;
    client.say(text("41MSG_SLGetLiveImage"));
    EXPECT_EQ(client.receive(second_.size()), second_);
    client.say(text("21MSG_SLGetSerial"));
    EXPECT_EQ(client.receive(4), integer(4711));
    client.say(text("ByeBye="));
  }
  EXPECT_EQ(head.differences(1), 0U);
}

TEST_F(FringixRecording, OfADamagedOneWhatStandsBeforeIsSaved) {
  recordASession();
  finishRecording(1);
  std::string file = readBytes(scratch_ / "a.fxr");
  file[file.size() - 24 - 25 - 8] ^= 1;  // in the farewell
  writeBytes(scratch_ / "a.fxr", file);
  const std::string failure = cut("", "7");
  EXPECT_TRUE(has(failure, "the checksum of this record is wrong")) << failure;
  EXPECT_EQ(commands().size(), 7U);
}

TEST_F(FringixRecording, IsAnonymised) {
  recordASession();
  finishRecording(1);
  EXPECT_EQ(anonymise({}), "");
  EXPECT_EQ(commands().size(), 9U);
  EXPECT_EQ(repliesTo("21MSG_SLGetSerial"), integer(1000));
  EXPECT_EQ(repliesTo("81MSG_SLReadDataFromFile"), integers(0, 13) + "head 1000 a 1" + integer(0)) << "the same as elsewhere";
  EXPECT_EQ(repliesTo("41MSG_SLGetLiveImage"), first_ + second_);
  const std::string shown = show("b.fxr").output;
  EXPECT_TRUE(has(shown, ": the head at 192.0.2.1, for clients at 192.0.2.2\n")) << shown;
  EXPECT_TRUE(has(shown, "\"SERIAL 1000 MODEL 1 ")) << shown;
  EXPECT_TRUE(has(shown, "connection 1 from 192.0.2.1:")) << "the client is on the head's machine here" << shown;
  const std::string bytes = readBytes(scratch_ / "b.fxr");
  EXPECT_EQ(bytes.find("4711"), bytes.npos);
}

TEST_F(FringixRecording, DataAndPicturesAreAnonymisedWhenAsked) {
  recordASession();
  finishRecording(1);
  EXPECT_EQ(anonymise({true, true}), "");
  const Bytes pictures = repliesTo("41MSG_SLGetLiveImage");
  EXPECT_EQ(pictures.size(), first_.size() + second_.size());
  EXPECT_EQ(pictures.find(first_.substr(0, 100)), pictures.npos);
  EXPECT_EQ(first_ == second_, pictures.substr(0, first_.size()) == pictures.substr(first_.size()));
  std::vector<Bytes> data;
  for (const RecordedCommand& command : commands()) {
    for (const auto& value : command.fields) {
      if (value.field->name == "data") data.emplace_back(command.bytesOf(value));
    }
  }
  ASSERT_EQ(data.size(), 2U);
  EXPECT_EQ(data[0], data[1]) << "saved and loaded";
  EXPECT_EQ(data[0].size(), 13U);
  EXPECT_EQ(data[0].find("head"), std::string::npos);
}

}  // namespace
}  // namespace fringix::test
