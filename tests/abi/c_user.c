#include "abi/c_user.h"

#include <stddef.h>
#include <string.h>

#include "fringix/fringix.h"

enum { no_such_handle = 4711 };

static void at_trigger(void* context) { (void)context; }

static void at_event(int32_t event, void* context, int64_t parameter) {
  (void)event;
  (void)context;
  (void)parameter;
}

static int unless(int condition) { return condition ? 0 : 1; }

int c_user_walk(void) {
  int32_t handle = 0;
  uint32_t width = 1;
  uint32_t height = 2;
  uint8_t pixel = 3;
  uint8_t* data = NULL;
  char reply = 'r';
  DeviceKeyEntry key = {4, 5, NULL};
  DeviceKeyEntryEx found = {6, 7, 8, NULL, NULL, 9, 10, 11, 12, 13, 14};
  int wrong = 0;

  wrong += unless(SLDevAlloc("127.0.0.9", &handle) == SLCONNECTION_ERROR && handle == -1);
  wrong += unless(SLGetDeviceKeyListSize(NULL) == SLALL_OKAY);
  wrong += unless(SLGetDeviceKeyListEntry(-1, &key) == SLBAD_PARAMETER && key.serial == 4);
  wrong += unless(SLGetDeviceKeyListEntryEx(256, &found) == SLBAD_PARAMETER && found.reserved == 6 && found.serial == 7);
  wrong += unless(SLShowDeviceDialog(NULL, NULL) == SLBAD_PARAMETER);
  wrong += unless(SLDevAllocBySerial(4711, &handle) == SLCONNECTION_ERROR && handle == -1);
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
  wrong += unless(SLShowImage(no_such_handle, &pixel, 1, 1, 3) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLShowImageFromSeq(no_such_handle, 1, 0) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLStartMeasurement(no_such_handle, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLStartFromTo(no_such_handle, 1, 0, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLRegisterGPIOCallback(no_such_handle, at_trigger) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLRegisterGPIOHandle(no_such_handle, NULL, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLRegisterEventhandler(no_such_handle, at_event, NULL) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLUnregisterEventhandler(no_such_handle, at_event, NULL) == SLUNKNOWN_DEVICE_ID);
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
  wrong += unless(SLCheckSystem(no_such_handle, &handle) == SLUNKNOWN_DEVICE_ID && handle == -1);
  wrong += unless(SLGetTemperature(no_such_handle, &handle) == SLUNKNOWN_DEVICE_ID && handle == -1);
  wrong += unless(SLGetLEDPower(no_such_handle, &handle) == SLUNKNOWN_DEVICE_ID && handle == -1);
  wrong += unless(SLGetBrightnessLevel(no_such_handle, &handle) == SLUNKNOWN_DEVICE_ID && handle == -1);
  wrong += unless(SLGetGain(no_such_handle, &handle) == SLUNKNOWN_DEVICE_ID && handle == -1);
  wrong += unless(SLGetCurrentExposure(no_such_handle, &handle) == SLUNKNOWN_DEVICE_ID && handle == -1);
  wrong += unless(SLGetUptime(no_such_handle, &handle) == SLUNKNOWN_DEVICE_ID && handle == -1);
  wrong += unless(SLGetProjectorTemperature(no_such_handle, &handle) == SLUNKNOWN_DEVICE_ID && handle == -1);
  wrong += unless(SLGetProjectorStatus(no_such_handle, &handle) == SLUNKNOWN_DEVICE_ID && handle == -1);
  wrong += unless(SLGetLEDPowerMinMax(no_such_handle, &handle, &handle) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLGetBrightnessMinMax(no_such_handle, &handle, &handle) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLGetGainMinMax(no_such_handle, &handle, &handle) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSetLEDPower(no_such_handle, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSetBrightnessLevel(no_such_handle, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSetGain(no_such_handle, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSetDMDState(no_such_handle, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSetLedPowerValue(no_such_handle, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSetMask(no_such_handle, &pixel, 0, 1, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLClearMask(no_such_handle) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSaveData(no_such_handle, &pixel, 1, "a") == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLLoadData(no_such_handle, &data, &handle, "a") == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLFreeData(NULL) == SLALL_OKAY);
  wrong += unless(SLReadIniInt(no_such_handle, &handle, "s", "k") == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLWriteIniInt(no_such_handle, 1, "s", "k") == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLExecRS232(no_such_handle, "x", &reply, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLExecProjCmd(no_such_handle, 1, 2, &pixel, &pixel, &pixel) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLGetGPIOStatus(no_such_handle, 1, &handle) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSetGPIOValue(no_such_handle, 1, 1) == SLUNKNOWN_DEVICE_ID);
  wrong += unless(SLSetDebugFlag(0) == SLALL_OKAY);
  wrong += unless(strcmp(SLErrorcodeToChar(SLBAD_PARAMETER), "SLBAD_PARAMETER") == 0);
  wrong += unless(QORFringixVersion() == 4002);
  return wrong;
}
