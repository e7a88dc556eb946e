// What a session remembers of its head, and when it asks again.
#include <gtest/gtest.h>

#include "device/camera_device.h"
#include "device/open_session.h"
#include "fringix/fringix.h"
#include "platform/clock.h"

namespace fringix::test {

namespace {

Script serialAndVersion(int serial, int version) {
  return {expect(text("21MSG_SLGetSerial")), reply(integer(serial)), expect(text("20MSG_SLGetProtocolVersion")), reply(integer(version))};
}

TEST(IdentityTest, TheKeyIsAskedForOnce) {
  OpenSession session(serialAndVersion(70123, 2900));
  for (int i = 0; i < 2; ++i) {
    DeviceKeyEntry key{};
    EXPECT_EQ(SLGetDevKey(session.handle(), &key), SLALL_OKAY);
    EXPECT_EQ(key.serial, 70123);
    EXPECT_EQ(key.info1, 2900);
    EXPECT_STREQ(key.ipAddress, "127.0.0.1");
  }
  EXPECT_EQ(readable(session.sent()), readable(text("21MSG_SLGetSerial") + text("20MSG_SLGetProtocolVersion")));
}

TEST(IdentityTest, TheKeySkipsNullOutputs) {
  OpenSession session(serialAndVersion(1, 2));
  EXPECT_EQ(session.device().GetDevKey(nullptr, nullptr, nullptr), SLALL_OKAY);
}

TEST(IdentityTest, TheKeyNeedsARecordButFirstASession) {
  OpenSession session(Script{});
  EXPECT_EQ(SLGetDevKey(session.handle(), nullptr), SLBAD_PARAMETER);
  EXPECT_EQ(SLGetDevKey(4711, nullptr), SLUNKNOWN_DEVICE_ID);
  EXPECT_EQ(session.sent(), Bytes());
}

TEST(IdentityTest, TheKeyOfABrokenConnectionFails) {
  const Bytes serial = integer(5);
  const Bytes version = integer(3300);
  const Bytes all = serial + version;
  for (std::size_t offset = 0; offset < all.size(); ++offset) {
    SCOPED_TRACE(offset);
    Script script{expect(text("21MSG_SLGetSerial")), reply(all.substr(0, offset)), cut()};
    if (offset >= serial.size()) {
      script = {expect(text("21MSG_SLGetSerial")), reply(serial), expect(text("20MSG_SLGetProtocolVersion")),
                reply(version.substr(0, offset - serial.size())), cut()};
    }
    OpenSession session(script);
    DeviceKeyEntry key{-7, -7, nullptr};
    EXPECT_EQ(SLGetDevKey(session.handle(), &key), SLCONNECTION_ERROR);
    EXPECT_EQ(key.ipAddress, nullptr);
    EXPECT_EQ(key.info1, -7);
    EXPECT_EQ(SLGetDevKey(session.handle(), &key), SLSYSTEM_ERROR);
  }
}

TEST(IdentityTest, ANegativeSerialIsNotRemembered) {
  OpenSession session({expect(text("21MSG_SLGetSerial")), reply(integer(-3)), expect(text("21MSG_SLGetSerial")), reply(integer(9))});
  std::int32_t serial = 0;
  EXPECT_EQ(session.device().GetSerial(&serial), SLALL_OKAY);
  EXPECT_EQ(serial, -3);
  EXPECT_EQ(session.device().GetSerial(&serial), SLALL_OKAY);
  EXPECT_EQ(serial, 9);
}

TEST(IdentityTest, ThePixelDepthIsRememberedInSpiteOfABadStatus) {
  OpenSession session({expect(text("22MSG_SLGetPixelDepth")), reply(integers(12, 1))});
  std::int32_t depth = 0;
  EXPECT_EQ(session.device().GetPixelDepth(&depth), SLSYSTEM_ERROR);
  EXPECT_EQ(depth, 12);
  depth = 0;
  EXPECT_EQ(session.device().GetPixelDepth(&depth), SLALL_OKAY) << "from memory";
  EXPECT_EQ(depth, 12);
  EXPECT_EQ(session.sent(), text("22MSG_SLGetPixelDepth"));
}

TEST(IdentityTest, TheLastSendTimeIsThatOfTheLastName) {
  OpenSession session(Script{});
  const std::int64_t before = platform::secondsSinceEpoch();
  ASSERT_EQ(session.device().Noop(), SLALL_OKAY);
  std::int64_t time = 0;
  EXPECT_EQ(session.device().GetLastSendTime(&time), SLALL_OKAY);
  EXPECT_GE(time, before);
  EXPECT_LE(time, platform::secondsSinceEpoch());
  EXPECT_EQ(session.device().GetLastSendTime(nullptr), SLALL_OKAY);
}

TEST(IdentityTest, WithoutAConnectionThereIsNoSendTimeAndNoKey) {
  CameraDevice device;
  std::int64_t time = 42;
  EXPECT_EQ(device.GetLastSendTime(&time), SLSYSTEM_ERROR);
  EXPECT_EQ(time, 42);
  EXPECT_EQ(device.GetDevKey(nullptr, nullptr, nullptr), SLSYSTEM_ERROR);
}

}  // namespace

}  // namespace fringix::test
