// Letting the user pick a head.
#include "platform/device_dialog.h"
#include "api/export_call.h"
#include "discovery/device_selector.h"

using namespace fringix;

namespace {

int32_t selectDevice(void* parent, DeviceKeyEntry& result) {
  DeviceSelector selector({SLGetDeviceKeyListSize, SLGetDeviceKeyListEntry}, result);
  const std::optional<std::int32_t> code = platform::runDeviceDialog(parent, selector);
  const bool chosen = code == DeviceSelector::chosen;
  const bool cancelled = code == DeviceSelector::cancelled;
  return chosen || cancelled ? SLALL_OKAY : SLSYSTEM_ERROR;
}

}  // namespace

int32_t SLShowDeviceDialog(void* parent, DeviceKeyEntry* result) {
  return ExportCall("SLShowDeviceDialog", "%s, Parameter: %p, %p", parent, result).guarded([&] {
    if (result == nullptr) return SLBAD_PARAMETER;
    constexpr int32_t toldByResult = -1;  // selectDevice never gives it: the record alone tells the outcome; kept on purpose
    return selectDevice(parent, *result) == toldByResult ? toldByResult : SLALL_OKAY;
  });
}
