/* Scans, and reads the list once more when everything of the process that can end has ended. */
#include <stdio.h>
#include <stdlib.h>

#include "fringix/fringix.h"

static const char* address;

static void readList(void) {
  DeviceKeyEntryEx entry = {0};
  const int32_t result = SLGetDeviceKeyListEntryEx(0, &entry);
  printf("%d %d %s %s\n", (int)result, (int)entry.serial, entry.ipAddress, address);
  fflush(stdout);
}

int main(void) {
  int32_t count = 0;
  DeviceKeyEntry entry = {0};
  atexit(readList); /* called after whatever the library itself may have registered, which it does at the first scan */
  if (SLGetDeviceKeyListSize(&count) != SLALL_OKAY || SLGetDeviceKeyListEntry(0, &entry) != SLALL_OKAY) return EXIT_FAILURE;
  address = entry.ipAddress;
  return EXIT_SUCCESS;
}
