#include "abi/c_user.h"

#include <stddef.h>
#include <string.h>

#include "fringix/fringix.h"

enum { no_such_handle = 4711 };

static int unless(int condition) { return condition ? 0 : 1; }

int c_user_walk(void) {
  int32_t handle = 0;
  uint32_t width = 1;
  uint32_t height = 2;
  uint8_t pixel = 3;
  DeviceKeyEntry key = {4, 5, NULL};
  int wrong = 0;

  wrong += unless(SLDevAlloc("127.0.0.9", &handle) == SLCONNECTION_ERROR && handle == -1);
  wrong += unless(SLDevFree(no_such_handle) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLGetDevKey(no_such_handle, &key) == SLUNKNOWN_DEVICE_ID && key.serial == 4);
  wrong += unless(SLGetCameraSize(no_such_handle, &width, &height) == SLUNKNOWN_DEVICE_ID && width == 1);
  wrong += unless(SLGetProjectorSize(no_such_handle, &width, &height) == SLUNKNOWN_DEVICE_ID && height == 2);
  wrong += unless(SLSeqAlloc(no_such_handle, 1, &width) == SLUNKNOWN_DEVICE_ID && width == 1);
  wrong += unless(SLSeqFree(no_such_handle, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSeqPut(no_such_handle, 1, &pixel, 1, 1, 3, 0) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSeqMakeGrayCode(no_such_handle, 1, 0, 0, 0, 0) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSeqMakePhase(no_such_handle, 1, 0, 0, 0, 0) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSeqMakeImage(no_such_handle, 1, 0, 0, 0, 0) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSeqMakeFromLine8(no_such_handle, 1, 0, &pixel, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSeqMakeFromCol8(no_such_handle, 1, 0, &pixel, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSeqMakeFromLine24(no_such_handle, 1, 0, &pixel, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSeqMakeFromCol24(no_such_handle, 1, 0, &pixel, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLGetNumberOfChannels(no_such_handle, &width) == SLUNKNOWN_DEVICE_ID && width == 1);
  wrong += unless(SLGetLiveImage(no_such_handle, &pixel, 1, 1) == SLUNKNOWN_DEVICE_ID && pixel == 3);
  wrong += unless(SLGetLiveImageEx(no_such_handle, 0, &pixel, 1, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLGetLiveImageROI(no_such_handle, &pixel, 0, 0, 1, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLGetLiveImageROIEx(no_such_handle, 0, &pixel, 0, 0, 1, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLGetLiveImageROILowRes(no_such_handle, 0, &pixel, 0, 0, 1, 1, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLGetLiveImageLowRes(no_such_handle, 0, &pixel, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLGetImageIndex(no_such_handle, 0, &pixel) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLGetImageIndexEx(no_such_handle, 0, 0, &pixel) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLGetImageIndexROI(no_such_handle, 0, &pixel, 0, 0, 1, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLGetImageIndexROIEx(no_such_handle, 0, 0, &pixel, 0, 0, 1, 1) == SLUNKNOWN_DEVICE_ID && pixel == 3);
  wrong += unless(SLSetDebugFlag(0) == SLALL_OKAY);
  wrong += unless(strcmp(SLErrorcodeToChar(SLBAD_PARAMETER), "SLBAD_PARAMETER") == 0);
  wrong += unless(QORFringixVersion() == 4002);
  return wrong;
}
