#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "head/serving/head_server.h"
#include "head_notes.h"
#include "raw_client.h"
#include "running_head.h"

namespace fringix::head {
namespace {

HeadSettings oldHead() {
  HeadSettings settings = smallHead();
  settings.protocolVersion = 2599;
  return settings;
}

class HeadServerTest : public testing::Test {
 protected:
  void SetUp() override { server.start(); }

  Notes notes;
  HeadServer server{oldHead(), notes.observer()};
};

TEST_F(HeadServerTest, GreetsBeforeTheClientSaysAnything) {
  RawClient client;
  EXPECT_EQ(client.receiveInt(), 2599);
}

TEST_F(HeadServerTest, TellsItsFacts) {
  RawClient client;
  client.greet();
  client.sendText("40MSG_SLGetMaxImageSize");
  EXPECT_EQ(client.receiveInt(), 64);
  EXPECT_EQ(client.receiveInt(), 48);
  EXPECT_EQ(client.receiveInt(), 0);
  client.sendText("45MSG_SLGetProjDimension");
  EXPECT_EQ(client.receiveInt(), 32);
  EXPECT_EQ(client.receiveInt(), 20);
  client.receiveInt();
  client.sendText("20MSG_SLGetProtocolVersion");
  EXPECT_EQ(client.receiveInt(), 2599);
  client.sendText("21MSG_SLGetSerial");
  EXPECT_EQ(client.receiveInt(), 4711);
  client.sendText("22MSG_SLGetPixelDepth");
  EXPECT_EQ(client.receiveInt(), 8);
  EXPECT_EQ(client.receiveInt(), 0);
}

TEST_F(HeadServerTest, AnswersNothingToKeepAliveLoggingAndFarewell) {
  RawClient client;
  client.greet();
  client.sendText("100MSG_SLNOOP");
  client.sendText("70MSG_SLEnableCamLogging");
  client.sendText("ByeBye=");
  client.sendText("21MSG_SLGetSerial");
  EXPECT_EQ(client.receiveInt(), 4711) << "the first bytes that arrive are the serial number";
}

TEST_F(HeadServerTest, ServesACommandThatArrivesByteByByte) {
  RawClient client;
  client.greet();
  for (const char byte : std::string("    1721MSG_SLGetSerial")) client.sendRaw({&byte, 1});
  EXPECT_EQ(client.receiveInt(), 4711);
}

TEST_F(HeadServerTest, ServesCommandsThatArriveTogether) {
  RawClient client;
  client.greet();
  client.sendRaw("    1721MSG_SLGetSerial    2620MSG_SLGetProtocolVersion    1721MSG_SLGetSerial");
  EXPECT_EQ(client.receiveInt(), 4711);
  EXPECT_EQ(client.receiveInt(), 2599);
  EXPECT_EQ(client.receiveInt(), 4711);
}

TEST_F(HeadServerTest, SendsWholeLivePictures) {
  RawClient client;
  client.greet();
  client.sendText("41MSG_SLGetLiveImage");
  const auto first = client.receiveBytes(frameBytes);
  client.sendText("41MSG_SLGetLiveImage");
  const auto second = client.receiveBytes(frameBytes);
  EXPECT_NE(first, second);
  client.sendText("21MSG_SLGetSerial");
  EXPECT_EQ(client.receiveInt(), 4711);
}

TEST_F(HeadServerTest, ClosesOnAnUnknownCommandAndTellsItsName) {
  RawClient client;
  client.greet();
  client.sendText("999MSG_Unheard");
  EXPECT_TRUE(client.closedByHead());
  EXPECT_TRUE(notes.waitFor(Happening::trouble, "999MSG_Unheard"));
}

TEST_F(HeadServerTest, DoesNotKnowCommandsThatAreNewerThanItsProtocol) {
  RawClient client;
  client.greet();
  client.sendText("224MSG_SLNumberOfChannels");
  EXPECT_TRUE(client.closedByHead());
}

TEST_F(HeadServerTest, ClosesOnALengthThatIsNoNumberOrTooLarge) {
  for (const char* field : {"abcdef", "    -1", "  12ab", "999999", "      "}) {
    RawClient client;
    client.greet();
    client.sendRaw(field);
    EXPECT_TRUE(client.closedByHead()) << field;
  }
}

TEST_F(HeadServerTest, ServesSeveralClientsAtOnce) {
  std::vector<RawClient> clients(8);
  for (auto& client : clients) client.greet();
  for (auto& client : clients) client.sendText("21MSG_SLGetSerial");
  for (auto& client : clients) EXPECT_EQ(client.receiveInt(), 4711);
}

TEST_F(HeadServerTest, StopEndsConnectionsAndFreesThePort) {
  RawClient idle;
  idle.greet();
  RawClient silent;
  server.stop();
  EXPECT_TRUE(idle.closedByHead());
  EXPECT_THROW(RawClient(), std::runtime_error);
  server.start();
  EXPECT_EQ(RawClient().greet(), 2599);
}

TEST_F(HeadServerTest, StopDoesNotWaitForAClientThatReadsNothing) {
  HeadSettings settings = oldHead();
  settings.address = "127.0.0.3";
  settings.camera = {1280, 1024};
  HeadServer other(settings);
  other.start();
  RawClient client("127.0.0.3");
  client.greet();
  for (int i = 0; i < 40; ++i) client.sendText("41MSG_SLGetLiveImage");
  client.receiveBytes(1);
  const auto begin = std::chrono::steady_clock::now();
  other.stop();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
}

TEST_F(HeadServerTest, ATakenPortIsAnErrorWithTheAddress) {
  HeadServer second(oldHead());
  try {
    second.start();
    FAIL() << "two heads listen on one port";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("127.0.0.2"), std::string::npos);
  }
}

TEST_F(HeadServerTest, SeveralHeadsLiveInOneProcess) {
  HeadSettings settings = oldHead();
  settings.address = "127.0.0.3";
  settings.serial = 4712;
  HeadServer neighbour(settings);
  neighbour.start();
  RawClient client("127.0.0.3");
  client.greet();
  client.sendText("21MSG_SLGetSerial");
  EXPECT_EQ(client.receiveInt(), 4712);
}

TEST_F(HeadServerTest, TellsConnectionsAndCommands) {
  {
    RawClient client;
    client.greet();
    client.sendText("100MSG_SLNOOP");
    EXPECT_TRUE(notes.waitFor(Happening::connected, ""));
    EXPECT_TRUE(notes.waitFor(Happening::command, "100MSG_SLNOOP"));
  }
  EXPECT_TRUE(notes.waitFor(Happening::disconnected, ""));
}

}  // namespace
}  // namespace fringix::head
