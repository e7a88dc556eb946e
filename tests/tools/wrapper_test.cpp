#include <gtest/gtest.h>

#include <algorithm>
#include <fringix/fringix.hpp>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "head/serving/head_server.h"
#include "small_head.h"
#include "support/scripted_head.h"

namespace fringix {
namespace {

const char* const address = "127.0.0.1";

class Wrapper : public testing::Test {
 protected:
  Wrapper() { server_.start(); }

  head::HeadServer server_{test::smallHead()};
};

test::Script opened(std::uint32_t cameraWidth, std::uint32_t cameraHeight) {
  using namespace test;
  return {reply(integer(1)),
          expect(integer(3300)),
          expect(text("40MSG_SLGetMaxImageSize")),
          reply(integers(cameraWidth, cameraHeight, 0)),
          expect(text("45MSG_SLGetProjDimension")),
          reply(integers(32, 20, 8))};
}

template <class Work>
std::int32_t codeOf(Work work) {
  try {
    work();
  } catch (const Error& error) {
    return error.code();
  }
  return SLALL_OKAY;
}

TEST_F(Wrapper, TellsWhatTheHeadSaysOfItself) {
  const Device device(address);
  EXPECT_EQ(device.key().serial, 4711);
  EXPECT_EQ(device.key().protocolVersion, 3300);
  EXPECT_EQ(device.key().address, address);
  EXPECT_EQ(device.cameraSize().width, 64U);
  EXPECT_EQ(device.cameraSize().height, 48U);
  EXPECT_EQ(device.projectorSize().width, 32U);
  EXPECT_EQ(device.projectorSize().height, 20U);
}

// Hears of calls: "SLGetGain", and "SLGetGain -10" when it has failed.
class Notes final : public CallObserver {
 public:
  Notes() { observeCalls(this); }
  ~Notes() { observeCalls(nullptr); }
  void begins(const char* operation) noexcept override { all.emplace_back(operation); }
  void ends(const char* operation, std::int32_t status) noexcept override { all.push_back(operation + (" " + std::to_string(status))); }

  std::vector<std::string> all;
};

TEST_F(Wrapper, TellsAnObserverOfEveryCallBeforeAndAfterIt) {
  Notes notes;
  {
    const Device device(address);
    device.gain();
    EXPECT_THROW(device.gpio(99), Error);
  }
  EXPECT_EQ(notes.all, (std::vector<std::string>{"SLDevAlloc", "SLDevAlloc 0", "SLGetGain", "SLGetGain 0", "SLGetGPIOStatus",
                                                 "SLGetGPIOStatus -4", "SLDevFree", "SLDevFree 0"}));
}

TEST_F(Wrapper, FetchesLivePictures) {
  const Device device = Device::open(address);
  const Image first = device.liveImage();
  EXPECT_EQ(first.width, 64U);
  EXPECT_EQ(first.height, 48U);
  ASSERT_EQ(first.pixels.size(), 64U * 48U);
  EXPECT_EQ(std::count(first.pixels.begin(), first.pixels.end(), 0), 0) << "the head's pictures have no black pixel";
}

TEST_F(Wrapper, PictureReusesTheMemoryOfTheOneBefore) {
  const Device device(address);
  Image image = device.liveImage();
  const std::vector<std::uint8_t> first = image.pixels;
  const std::uint8_t* memory = image.pixels.data();
  device.liveImage(image);
  EXPECT_EQ(image.pixels.data(), memory);
  EXPECT_NE(image.pixels, first);
}

TEST_F(Wrapper, SessionEndsWithItsDevice) {
  std::int32_t handle = -1;
  {
    const Device device(address);
    handle = device.handle();
    EXPECT_EQ(SLGetCameraSize(handle, nullptr, nullptr), SLALL_OKAY);
  }
  EXPECT_EQ(SLGetCameraSize(handle, nullptr, nullptr), SLUNKNOWN_DEVICE_ID);
}

TEST_F(Wrapper, MovingTakesTheSessionAlong) {
  Device first(address);
  const std::int32_t handle = first.handle();
  const Device second(std::move(first));
  EXPECT_EQ(second.handle(), handle);
  EXPECT_EQ(second.key().serial, 4711);
  EXPECT_FALSE(first.isOpen());
  EXPECT_EQ(codeOf([&] { first.key(); }), SLUNKNOWN_DEVICE_ID);
}

TEST_F(Wrapper, AssigningEndsTheSessionThatWasThere) {
  Device device(address);
  const std::int32_t replaced = device.handle();
  device = Device(address);
  EXPECT_EQ(SLGetCameraSize(replaced, nullptr, nullptr), SLUNKNOWN_DEVICE_ID);
  EXPECT_EQ(device.key().serial, 4711);
}

TEST_F(Wrapper, ClosingTwiceIsHarmless) {
  Device device(address);
  device.close();
  device.close();
  EXPECT_FALSE(device.isOpen());
  EXPECT_EQ(codeOf([&] { device.liveImage(); }), SLUNKNOWN_DEVICE_ID);
}

TEST(WrapperFailure, NobodyAnswers) {
  try {
    Device device(address);
    FAIL() << "a session was opened";
  } catch (const Error& error) {
    EXPECT_STREQ(error.operation(), "SLDevAlloc");
    EXPECT_EQ(error.code(), SLCONNECTION_ERROR);
    EXPECT_STREQ(error.name(), "SLCONNECTION_ERROR");
    EXPECT_STREQ(error.what(), "SLDevAlloc: SLCONNECTION_ERROR (-10)");
  }
}

TEST(WrapperFailure, BrokenConnectionStaysBroken) {
  test::ScriptedHead head(opened(4, 2) + test::Script{test::expect(test::text("41MSG_SLGetLiveImage")), test::cut()});
  Device device(address);
  EXPECT_EQ(codeOf([&] { device.liveImage(); }), SLCONNECTION_ERROR);
  EXPECT_EQ(codeOf([&] { device.cameraSize(); }), SLSYSTEM_ERROR);
  EXPECT_EQ(codeOf([&] { device.projectorSize(); }), SLSYSTEM_ERROR);
  EXPECT_EQ(codeOf([&] { device.liveImage(); }), SLSYSTEM_ERROR);
  EXPECT_EQ(codeOf([&] { device.close(); }), SLALL_OKAY);
}

TEST(WrapperFailure, HeadWithoutPicture) {
  test::ScriptedHead head(opened(2, 1) +
                          test::Script{test::expect(test::text("41MSG_SLGetLiveImage")), test::reply(test::Bytes("\0\xFF", 2))});
  const Device device(address);
  EXPECT_EQ(codeOf([&] { device.liveImage(); }), SLSYSTEM_ERROR);
}

TEST(WrapperFailure, CameraSizeThatNoPictureHasIsRefusedBeforeMemoryIsTaken) {
  test::ScriptedHead head(opened(0x10000, 0x10000));
  const Device device(address);
  EXPECT_THROW(device.liveImage(), std::length_error);
}

TEST(WrapperStatus, EveryDocumentedCodeHasAName) {
  EXPECT_STREQ(statusName(SLALL_OKAY), "SLALL_OKAY");
  EXPECT_STREQ(statusName(SLHANDSHAKE_TIMEOUT), "SLHANDSHAKE_TIMEOUT");
  EXPECT_STREQ(statusName(SLVERSION_TOO_OLD), "SLVERSION_TOO_OLD");
  EXPECT_STREQ(statusName(1), "Unknown SL-Error Code");
}

TEST(WrapperLibrary, Version) { EXPECT_EQ(libraryVersion(), 4002); }

static_assert(!std::is_copy_constructible_v<Device> && !std::is_copy_assignable_v<Device>);
static_assert(std::is_nothrow_move_constructible_v<Device> && std::is_nothrow_move_assignable_v<Device>);

}  // namespace
}  // namespace fringix
