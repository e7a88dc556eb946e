// Handles: what names a session and what does not.
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "api/device_registry.h"
#include "api/export_call.h"
#include "device/camera_device.h"
#include "device/open_session.h"
#include "fringix/fringix.h"

namespace fringix::test {

namespace {

TEST(FirstHandleInAFreshProcessTest, IsZeroAlsoAfterAFailureAndAQuery) {
  int handle = 5;
  EXPECT_EQ(SLDevAlloc("127.0.0.9", &handle), SLCONNECTION_ERROR);
  EXPECT_EQ(handle, -1);
  EXPECT_EQ(SLDevFree(0), SLUNKNOWN_DEVICE_ID);  // leaves an empty entry that the first session fills
  OpenSession session(Script{});
  EXPECT_EQ(session.handle(), 0);
  EXPECT_EQ(SLGetCameraSize(0, nullptr, nullptr), SLALL_OKAY);
  EXPECT_EQ(session.free(), SLALL_OKAY);
  EXPECT_EQ(SLDevFree(0), SLUNKNOWN_DEVICE_ID);
}

TEST(RegistryTest, AnUnknownHandleTouchesNoOutput) {
  std::uint32_t width = 42;
  std::uint8_t pixel = 42;
  DeviceKeyEntry key{42, 42, nullptr};
  EXPECT_EQ(SLGetCameraSize(99, &width, &width), SLUNKNOWN_DEVICE_ID);
  EXPECT_EQ(SLGetProjectorSize(-1, &width, &width), SLUNKNOWN_DEVICE_ID);
  EXPECT_EQ(SLGetLiveImage(99, &pixel, 1, 1), SLUNKNOWN_DEVICE_ID);
  EXPECT_EQ(SLGetDevKey(99, &key), SLUNKNOWN_DEVICE_ID);
  EXPECT_EQ(SLDevFree(99), SLUNKNOWN_DEVICE_ID);
  EXPECT_EQ(width, 42U);
  EXPECT_EQ(pixel, 42);
  EXPECT_EQ(key.serial, 42);
}

TEST(RegistryTest, NullPointersOfOpeningAreBadParameters) {
  int handle = 5;
  EXPECT_EQ(SLDevAlloc("127.0.0.1", nullptr), SLBAD_PARAMETER);
  EXPECT_EQ(SLDevAlloc(nullptr, &handle), SLBAD_PARAMETER);
  EXPECT_EQ(handle, -1);
}

TEST(RegistryTest, AQueryLeavesAnEmptyEntry) {
  DeviceRegistry registry;
  EXPECT_EQ(registry.find(3), nullptr);
  EXPECT_EQ(registry.find(3), nullptr);
  EXPECT_EQ(registry.size(), 1U);
  EXPECT_FALSE(registry.claim(3)) << "there is nothing to close";
  registry.remove(3);
  EXPECT_EQ(registry.size(), 0U);
}

TEST(RegistryTest, ASessionIsClaimedOnceAndStaysUntilItIsRemoved) {
  DeviceRegistry registry;
  const auto session = CameraDevice::create();
  EXPECT_EQ(registry.add(session), 0);
  EXPECT_TRUE(registry.claim(0));
  EXPECT_FALSE(registry.claim(0));
  EXPECT_EQ(registry.find(0), session);
  registry.remove(0);
  EXPECT_FALSE(registry.claim(0));
  EXPECT_EQ(registry.find(0), nullptr);
}

// Without order among them the entries would soon be in none.
TEST(RegistryTest, ManyThreadsFindAndRemoveAtOnce) {
  DeviceRegistry registry;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&, thread] {
      for (int i = 0; i < 100000; ++i) {
        EXPECT_EQ(registry.find(4 * (i % 64) + thread), nullptr);
        registry.remove(4 * ((i + 32) % 64) + thread);
      }
      for (int i = 0; i < 64; ++i) registry.remove(4 * i + thread);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(registry.size(), 0U);
}

TEST(RegistryTest, ACallHoldsAShareOfItsSession) {
  DeviceRegistry& registry = DeviceRegistry::instance();
  bool destroyed = false;
  const std::shared_ptr<CameraDevice> device = CameraDevice::create();
  const int handle = registry.add(std::shared_ptr<ICameraDevice>(device.get(), [&](ICameraDevice*) { destroyed = true; }));
  const int result = ExportCall("Removing", "%s").device(handle, [&](ICameraDevice&) -> int {
    registry.remove(handle);
    return destroyed ? SLSYSTEM_ERROR : SLALL_OKAY;
  });
  EXPECT_EQ(result, SLALL_OKAY) << "the session went while the call was in it";
  EXPECT_TRUE(destroyed) << "it goes with the call";
}

TEST(RegistryTest, WhatIsThrownInsideBecomesASystemError) {
  OpenSession session(Script{});
  const int result = ExportCall("Throwing", "%s").device(session.handle(), [](ICameraDevice&) -> int { throw std::bad_alloc(); });
  EXPECT_EQ(result, SLSYSTEM_ERROR);
  EXPECT_EQ(session.device().Noop(), SLALL_OKAY);
}

}  // namespace

}  // namespace fringix::test
