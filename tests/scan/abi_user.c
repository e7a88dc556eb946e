/* A user's program in C: it reaches every function of scan.h through the shared library. */
#include "abi_user.h"

#include <stddef.h>
#include <string.h>

#include "fringix/scan.h"

enum { width = 64, height = 48, pixels = width * height, projector_columns = 1280 };

static int unless(int condition) { return condition ? 0 : 1; }

static SLScanCalibration calibration(void) {
  SLScanCalibration record;
  memset(&record, 0, sizeof record);
  record.serial = 7;
  strcpy(record.date, "2024-05-06");
  record.cameraCount = 1;
  record.cameras[0].width = width;
  record.cameras[0].height = height;
  record.cameras[0].fx = record.cameras[0].fy = 70;
  record.projector.width = projector_columns;
  record.projector.height = 800;
  record.projector.fx = record.projector.fy = 1300;
  record.projector.translation[0] = -150;
  for (int i = 0; i < 9; i += 4) record.cameras[0].rotation[i] = record.projector.rotation[i] = 1;
  return record;
}

int abi_user_walk(void) {
  static uint8_t picture[pixels];
  static float points[3 * pixels];
  static char text[8192];
  static uint8_t line[projector_columns];
  const uint8_t* pictures[20];
  SLScanPlan plan;
  SLScanPicture role;
  SLScanSettings settings;
  SLScanFindings findings;
  SLScanCloud cloud = {pixels, points, NULL, NULL, NULL, NULL, NULL, NULL, NULL};
  SLScanCalibration head = calibration();
  SLScanCalibration back;
  SLScanner* scanner = NULL;
  uint32_t length = 0;
  uint64_t count = 1;
  int32_t number = 0;
  int wrong = 0;
  for (int i = 0; i < 20; ++i) pictures[i] = picture;

  wrong += unless(SLScanVersion() == 0x04000002);
  wrong += unless(SLScanPlanDefaults(SLSCAN_GRAY_AND_PHASE, projector_columns, &plan) == SLSCAN_OKAY);
  wrong += unless(SLScanPlanPictureCount(&plan, &number) == SLSCAN_OKAY && number == 20);
  wrong += unless(SLScanPlanPicture(&plan, 2, &role) == SLSCAN_OKAY && role.kind == SLSCAN_GRAY && role.number == 7);
  wrong += unless(SLScanPlanLine(&plan, 0, line, projector_columns) == SLSCAN_OKAY && line[5] == 255);
  wrong += unless(SLScanPlanLine(&plan, 0, line, 5) == SLSCAN_BAD_PARAMETER && strstr(SLScanErrorText(), "1280 bytes") != NULL);
  wrong += unless(SLScanPlanPicture(&plan, 20, &role) == SLSCAN_BAD_PARAMETER);

  wrong += unless(SLScanCalibrationWrite(&head, NULL, 0, &length) == SLSCAN_BAD_PARAMETER && length > 500);
  wrong += unless(SLScanCalibrationWrite(&head, text, sizeof text, &length) == SLSCAN_OKAY && strlen(text) == length);
  wrong += unless(SLScanCalibrationRead(text, length, &back) == SLSCAN_OKAY && memcmp(&head, &back, sizeof head) == 0);
  wrong += unless(SLScanCalibrationRead(text, length / 2, &back) == SLSCAN_BAD_CALIBRATION);

  wrong += unless(SLScanSettingsDefaults(&settings) == SLSCAN_OKAY && settings.threads == 1 && settings.clean == 1);
  head.projector.rotation[0] = -1;
  wrong += unless(SLScannerAlloc(&plan, &head, &settings, &scanner) == SLSCAN_BAD_CALIBRATION && scanner == NULL);
  wrong += unless(strstr(SLScanErrorText(), "mirrored") != NULL);
  head.projector.rotation[0] = 1;
  wrong += unless(SLScannerAlloc(&plan, &head, &settings, &scanner) == SLSCAN_OKAY && scanner != NULL);
  wrong += unless(SLScanCompute(scanner, 0, pictures, 20, 32, height, &cloud, &findings) == SLSCAN_BAD_PICTURES);
  wrong += unless(strstr(SLScanErrorText(), "pictures of 32 x 48 pixels; the camera has 64 x 48") != NULL);
  cloud.pixels = pixels - 1;
  wrong += unless(SLScanCompute(scanner, 0, pictures, 20, width, height, &cloud, NULL) == SLSCAN_BAD_PARAMETER);
  cloud.pixels = pixels;
  wrong += unless(SLScanCompute(scanner, 0, pictures, 20, width, height, &cloud, &findings) == SLSCAN_BAD_PICTURES);
  wrong += unless(findings.counts[SLSCAN_NOISE] == pixels && strstr(SLScanErrorText(), "no pixel gives a point") != NULL);
  wrong += unless(SLScanCompute(scanner, 1, pictures, 20, width, height, &cloud, NULL) == SLSCAN_BAD_PARAMETER);
  wrong += unless(SLScanAddPicture(scanner, 0, picture, width, height) == SLSCAN_OKAY);
  wrong +=
      unless(SLScanFinish(scanner, 0, &cloud, NULL) == SLSCAN_BAD_PICTURES && strstr(SLScanErrorText(), "picture 1 is missing") != NULL);
  wrong += unless(SLScanNextExposure(scanner, 0) == SLSCAN_BAD_PICTURES);
  wrong += unless(SLScanUseWindow(scanner, 0, 60, 0, 5, 5) == SLSCAN_BAD_PARAMETER);
  wrong += unless(strcmp(SLScanErrorText(), "a window of 5 x 5 pixels at 60, 0 does not lie within the camera's 64 x 48") == 0);
  wrong += unless(SLScanUseWindow(scanner, 0, 60, 0, 4, 5) == SLSCAN_OKAY);
  wrong += unless(SLScanAddPicture(scanner, 0, picture, 4, 5) == SLSCAN_OKAY);
  wrong += unless(SLScanForget(scanner, 0) == SLSCAN_OKAY);
  wrong += unless(SLScanGather(&cloud, 1, &cloud, &count) == SLSCAN_OKAY && count == 0);
  wrong += unless(SLScannerFree(scanner) == SLSCAN_OKAY && SLScannerFree(NULL) == SLSCAN_OKAY);
  wrong += unless(SLScanForget(NULL, 0) == SLSCAN_BAD_PARAMETER && strcmp(SLScanErrorText(), "a pointer is null") == 0);
  return wrong;
}
