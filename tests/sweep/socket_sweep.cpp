// The sweep over all replies once more, with sockets of the system: ./run sweep. Each worker has a head of its own.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "api/device_registry.h"
#include "device/camera_device.h"
#include "device/open_session.h"
#include "fringix/fringix.h"
#include "support/scripted_head.h"
#include "sweep/second_reading.h"

namespace fringix::test {

namespace {

using protocol::Sender;

constexpr std::uint32_t receiveLimit = 2;  // seconds, in place of 30
constexpr int workers = 48;                // most of the time they wait

enum class Break { cut, reset, stall, drip };

struct SocketCase {
  const EncodedConversation* conversation;
  std::size_t offset;  // in all that the head answers
  Break how;
};

std::vector<EncodedConversation> allConversations() {
  std::vector<EncodedConversation> all;
  for (const protocol::Command& command : protocol::CommandTable::ofTheProtocol().commands()) {
    if (findCall(command.name) == nullptr) continue;
    for (const protocol::Example& example : command.examples) all.push_back(encode(example, headOfTheExamples()));
  }
  return all;
}

Bytes answersOf(const EncodedConversation& conversation) {
  Bytes answers;
  for (const EncodedExchange& exchange : conversation.exchanges) {
    for (const EncodedField& field : exchange.fields) answers += field.field->sender == Sender::head ? field.bytes : Bytes();
  }
  return answers;
}

// What the head does: up to the break it answers as the example has it. Where it only drips, it goes on.
class BrokenScript {
 public:
  BrokenScript(const EncodedConversation& conversation, std::size_t offset, Break how) : left_(offset), how_(how) {
    for (const EncodedExchange& exchange : conversation.exchanges) {
      add(expect(text(exchange.command->name)));
      for (const EncodedField& field : exchange.fields) {
        if (field.field->sender == Sender::client)
          add(expect(field.bytes));
        else
          answer(field.bytes);
      }
    }
  }

  Script script;

 private:
  void add(Step step) {
    if (!over_) script.push_back(std::move(step));
  }

  void answer(const Bytes& bytes) {
    if (left_ >= bytes.size()) {
      left_ -= bytes.size();
      return add(reply(bytes));
    }
    if (left_ > 0) add(reply(bytes.substr(0, left_)));
    add(how_ == Break::cut ? cut() : how_ == Break::reset ? reset() : how_ == Break::stall ? stall() : dribble(bytes.substr(left_)));
    over_ = over_ || how_ != Break::drip;
    left_ = 0;
  }

  std::size_t left_;
  const Break how_;
  bool over_ = false;
};

// As SLDevAlloc does it, but for the limit.
int open(const std::string& address) {
  auto channel = std::make_unique<CommandChannel>();
  EXPECT_EQ(channel->Connect(address), 0);
  channel->socket()->setReceiveTimeout(receiveLimit);
  auto session = CameraDevice::create();
  EXPECT_EQ(session->Init(std::move(channel)), SLALL_OKAY);
  return DeviceRegistry::instance().add(std::move(session));
}

void play(const SocketCase& one, const std::string& address) {
  const EncodedConversation& conversation = *one.conversation;
  const Bytes answers = answersOf(conversation);
  ScriptedHead head(handshake() + BrokenScript(conversation, one.offset, one.how).script, address.c_str());
  SecondReading reading(one.how == Break::drip ? answers : answers.substr(0, one.offset));
  const int handle = open(address);
  for (const EncodedExchange& exchange : conversation.exchanges) {
    if (!exchange.called) continue;
    SCOPED_TRACE(exchange.command->name + ", byte " + std::to_string(one.offset) + ", break " + std::to_string(static_cast<int>(one.how)));
    const Outcome expected = reading.call(exchange);
    Call call(handle, expected.numbers, expected.others);
    const int result = findCall(exchange.command->name)->run(call);
    if (!(expected.mayHide && result == SLVERSION_TOO_OLD)) {
      EXPECT_EQ(result, expected.result);
    }
    if (expected.isTold) call.expectOutputs();
  }
  std::uint32_t width = 0;
  EXPECT_EQ(SLGetCameraSize(handle, &width, nullptr), SLALL_OKAY);
  EXPECT_EQ(width, reading.connected() ? 8U : 0xFFFFFFFFU);
  EXPECT_EQ(SLDevFree(handle), SLALL_OKAY);
}

void playAll(const std::vector<SocketCase>& cases) {
  std::atomic<std::size_t> next = 0;
  std::vector<std::thread> threads;
  for (int worker = 0; worker < workers; ++worker) {
    threads.emplace_back([&, address = "127.0.2." + std::to_string(worker + 1)] {
      for (std::size_t i = next++; i < cases.size(); i = next++) play(cases[i], address);
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::printf("%zu cases\n", cases.size());
}

class SocketSweep : public testing::TestWithParam<Break> {};

TEST_P(SocketSweep, BreaksAtEveryByte) {
  const std::vector<EncodedConversation> conversations = allConversations();
  std::vector<SocketCase> cases;
  for (const EncodedConversation& conversation : conversations) {
    for (std::size_t offset = 0; offset < answersOf(conversation).size(); ++offset) cases.push_back({&conversation, offset, GetParam()});
  }
  playAll(cases);
}

std::string nameOf(const testing::TestParamInfo<Break>& test) {
  constexpr const char* names[] = {"Cut", "Reset", "Stall", "Drip"};
  return names[static_cast<int>(test.param)];
}

INSTANTIATE_TEST_SUITE_P(Ways, SocketSweep, testing::Values(Break::cut, Break::reset, Break::stall, Break::drip), nameOf);

}  // namespace

}  // namespace fringix::test
