// The operations of the abstract classes stand in their tables in a fixed order.
#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "device/ICameraDevice.h"
#include "net/my_tcp_socket.h"
#include "threads/trigger_callback_class.h"

namespace fringix::test {

namespace {

// The place in the table. A pointer to a virtual member function holds its offset there, told from an address by the lowest bit.
template <class Operation>
std::size_t placeOf(Operation operation) {
  struct Representation {
    std::uintptr_t offset;
    std::ptrdiff_t adjustment;
  };
  const auto [offset, adjustment] = std::bit_cast<Representation>(operation);
  return offset % 2 == 1 ? offset / sizeof(void*) : SIZE_MAX;
}

struct Operation {
  std::string name;
  std::size_t place;
};

// From `first` on, one behind the other.
void expectInOrder(const std::vector<Operation>& operations, std::size_t first) {
  for (const auto& [name, place] : operations) EXPECT_EQ(place, first++) << name;
}

constexpr std::size_t destructor = 2;  // places that a virtual destructor takes: one leaves the memory alone, the other frees it

const std::vector<Operation> cameraDevice = {
    {"Close", placeOf(&ICameraDevice::Close)},
    {"SetTriggerWindow", placeOf(&ICameraDevice::SetTriggerWindow)},
    {"SetGPIOCallback", placeOf(&ICameraDevice::SetGPIOCallback)},
    {"SetContextCallback", placeOf(&ICameraDevice::SetContextCallback)},
    {"AddEventWindow", placeOf(&ICameraDevice::AddEventWindow)},
    {"AddEventHandler", placeOf(&ICameraDevice::AddEventHandler)},
    {"RemoveEventWindow", placeOf(&ICameraDevice::RemoveEventWindow)},
    {"RemoveEventHandler", placeOf(&ICameraDevice::RemoveEventHandler)},
    {"EnableCamLogging", placeOf(&ICameraDevice::EnableCamLogging)},
    {"CheckSystem", placeOf(&ICameraDevice::CheckSystem)},
    {"GetTemperature", placeOf(&ICameraDevice::GetTemperature)},
    {"SeqAlloc", placeOf(&ICameraDevice::SeqAlloc)},
    {"SeqFree", placeOf(&ICameraDevice::SeqFree)},
    {"SeqPut", placeOf(&ICameraDevice::SeqPut)},
    {"SeqMakeGrayCode", placeOf(&ICameraDevice::SeqMakeGrayCode)},
    {"SeqMakePhase", placeOf(&ICameraDevice::SeqMakePhase)},
    {"SeqMakeFromLine8", placeOf(&ICameraDevice::SeqMakeFromLine8)},
    {"SeqMakeFromCol8", placeOf(&ICameraDevice::SeqMakeFromCol8)},
    {"SeqMakeFromLine24", placeOf(&ICameraDevice::SeqMakeFromLine24)},
    {"SeqMakeFromCol24", placeOf(&ICameraDevice::SeqMakeFromCol24)},
    {"CalcGrayCode", placeOf(&ICameraDevice::CalcGrayCode)},
    {"SeqMakeImage", placeOf(&ICameraDevice::SeqMakeImage)},
    {"ShowImage24", placeOf(&ICameraDevice::ShowImage24)},
    {"ShowImage8", placeOf(&ICameraDevice::ShowImage8)},
    {"ShowFromSeq", placeOf(&ICameraDevice::ShowFromSeq)},
    {"GetSerial", placeOf(&ICameraDevice::GetSerial)},
    {"GetPixelDepth", placeOf(&ICameraDevice::GetPixelDepth)},
    {"GetLEDPowerMinMax", placeOf(&ICameraDevice::GetLEDPowerMinMax)},
    {"StartMeasurement", placeOf(&ICameraDevice::StartMeasurement)},
    {"StartFromTo", placeOf(&ICameraDevice::StartFromTo)},
    {"GetNumberOfChannels", placeOf(&ICameraDevice::GetNumberOfChannels)},
    {"GetLiveImage", placeOf(&ICameraDevice::GetLiveImage)},
    {"GetLiveImageEx", placeOf(&ICameraDevice::GetLiveImageEx)},
    {"GetLiveImageROI", placeOf(&ICameraDevice::GetLiveImageROI)},
    {"GetLiveImageROIEx", placeOf(&ICameraDevice::GetLiveImageROIEx)},
    {"GetLiveImageROILowRes", placeOf(&ICameraDevice::GetLiveImageROILowRes)},
    {"GetLiveImageLowRes", placeOf(&ICameraDevice::GetLiveImageLowRes)},
    {"GetImageIndex", placeOf(&ICameraDevice::GetImageIndex)},
    {"GetImageIndexEx", placeOf(&ICameraDevice::GetImageIndexEx)},
    {"GetImageIndexROI", placeOf(&ICameraDevice::GetImageIndexROI)},
    {"GetImageIndexROIEx", placeOf(&ICameraDevice::GetImageIndexROIEx)},
    {"SetLEDPower", placeOf(&ICameraDevice::SetLEDPower)},
    {"GetLEDPower", placeOf(&ICameraDevice::GetLEDPower)},
    {"GetBrightnessMinMax", placeOf(&ICameraDevice::GetBrightnessMinMax)},
    {"SetBrightnessLevel", placeOf(&ICameraDevice::SetBrightnessLevel)},
    {"GetBrightnessLevel", placeOf(&ICameraDevice::GetBrightnessLevel)},
    {"GetGainMinMax", placeOf(&ICameraDevice::GetGainMinMax)},
    {"SetGain", placeOf(&ICameraDevice::SetGain)},
    {"GetGain", placeOf(&ICameraDevice::GetGain)},
    {"SaveData", placeOf(&ICameraDevice::SaveData)},
    {"LoadData", placeOf(&ICameraDevice::LoadData)},
    {"GetCameraWidth", placeOf(&ICameraDevice::GetCameraWidth)},
    {"GetCameraHeight", placeOf(&ICameraDevice::GetCameraHeight)},
    {"GetProjectorWidth", placeOf(&ICameraDevice::GetProjectorWidth)},
    {"GetProjectorHeight", placeOf(&ICameraDevice::GetProjectorHeight)},
    {"GetCameraPixelCount", placeOf(&ICameraDevice::GetCameraPixelCount)},
    {"Noop", placeOf(&ICameraDevice::Noop)},
    {"GetLastSendTime", placeOf(&ICameraDevice::GetLastSendTime)},
    {"ReadIniInt", placeOf(&ICameraDevice::ReadIniInt)},
    {"WriteIniInt", placeOf(&ICameraDevice::WriteIniInt)},
    {"SetOutputSettings", placeOf(&ICameraDevice::SetOutputSettings)},
    {"ExecOutput", placeOf(&ICameraDevice::ExecOutput)},
    {"GetGPIOStatus", placeOf(&ICameraDevice::GetGPIOStatus)},
    {"SetGPIOValue", placeOf(&ICameraDevice::SetGPIOValue)},
    {"ExecRS232", placeOf(&ICameraDevice::ExecRS232)},
    {"GetUptime", placeOf(&ICameraDevice::GetUptime)},
    {"GetProjectorTemperature", placeOf(&ICameraDevice::GetProjectorTemperature)},
    {"GetProjectorStatus", placeOf(&ICameraDevice::GetProjectorStatus)},
    {"SetDMDState", placeOf(&ICameraDevice::SetDMDState)},
    {"GetCurrentExposure", placeOf(&ICameraDevice::GetCurrentExposure)},
    {"SetMask", placeOf(&ICameraDevice::SetMask)},
    {"ClearMask", placeOf(&ICameraDevice::ClearMask)},
    {"ExecProjCmd", placeOf(&ICameraDevice::ExecProjCmd)},
    {"SetLedPowerValue", placeOf(&ICameraDevice::SetLedPowerValue)},
    {"GetDevKey", placeOf(&ICameraDevice::GetDevKey)},
};

class OneMoreOperation : public ICameraDevice {
 public:
  virtual void behindAll() = 0;
};

TEST(SlotsTest, TheSessionsOperationsStandInOrder) {
  expectInOrder(cameraDevice, destructor);
  EXPECT_EQ(placeOf(&OneMoreOperation::behindAll), destructor + cameraDevice.size()) << "there are others";
}

TEST(SlotsTest, WhatATriggerListenerSeesStandsInOrder) {
  expectInOrder({{"OnTrigger", placeOf(&TriggerCallbackClass::OnTrigger)}, {"Init", placeOf(&TriggerCallbackClass::Init)}}, 0);
}

TEST(SlotsTest, TheSocketsOperationsStandInOrder) {
  expectInOrder({{"ConnectWithTimeout", placeOf(&myTcpSocket::ConnectWithTimeout)}, {"Connect", placeOf(&myTcpSocket::Connect)}},
                destructor);
}

}  // namespace

}  // namespace fringix::test
