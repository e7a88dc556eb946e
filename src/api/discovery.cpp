// Finding heads, and opening one by its serial number.
#include "api/export_call.h"
#include "discovery/device_enumerator.h"

using namespace fringix;

namespace {

void fill(DeviceKeyEntry& record, const DeviceListEntry& found) noexcept {
  record.serial = found.reply.serial;
  record.info1 = found.reply.info1;
  record.ipAddress = found.ipAddress.c_str();
}

void fill(DeviceKeyEntryEx& record, const DeviceListEntry& found) noexcept {  // `reserved` stays the caller's; kept on purpose
  record.serial = found.reply.serial;
  record.info1 = found.reply.info1;
  record.ipAddress = found.ipAddress.c_str();
  record.modelName = found.modelName;
  record.info2 = found.reply.info2;
  record.info3 = found.reply.info3;
  record.info4 = found.reply.info4;
  record.info5 = found.reply.info5;
  record.info6 = found.reply.info6;
  record.info7 = found.reply.info7;
}

template <class Record>
int32_t listEntry(int32_t index, Record* record) {
  if (record == nullptr) return SLBAD_PARAMETER;
  const DeviceListEntry* found = DeviceEnumerator::instance().entry(index);
  if (found == nullptr) return SLBAD_PARAMETER;
  fill(*record, *found);
  return SLALL_OKAY;
}

}  // namespace

int32_t SLGetDeviceKeyListSize(int32_t* count) {
  return ExportCall("SLGetDeviceKeyListSize", "%s, Parameter: %p", count).guarded([&] {
    const std::size_t found = DeviceEnumerator::instance().ScanForDevices();
    if (count != nullptr) *count = static_cast<int32_t>(found);
    return SLALL_OKAY;
  });
}

int32_t SLGetDeviceKeyListEntry(int32_t index, DeviceKeyEntry* entry) {
  return ExportCall("SLGetDeviceKeyListEntry", "%s, Parameter: %i, %p", index, entry).guarded([&] { return listEntry(index, entry); });
}

int32_t SLGetDeviceKeyListEntryEx(int32_t index, DeviceKeyEntryEx* entry) {
  return ExportCall("SLGetDeviceKeyListEntryEx", "%s, Parameter: %i, %p", index, entry).guarded([&] { return listEntry(index, entry); });
}

// Traces nothing of its own, only what it calls does; and a list of more than 256 heads ends in the refusal of entry 256. Both kept on
// purpose.
int32_t SLDevAllocBySerial(int32_t serial, int32_t* handle) {
  int32_t count = 0;
  if (const int32_t result = SLGetDeviceKeyListSize(&count); result != SLALL_OKAY) return result;
  for (int32_t index = 0; index < count; ++index) {
    DeviceKeyEntry entry{};
    if (const int32_t result = SLGetDeviceKeyListEntry(index, &entry); result != SLALL_OKAY) return result;
    if (entry.serial == serial) return SLDevAlloc(entry.ipAddress, handle);
  }
  return SLCONNECTION_ERROR;
}
