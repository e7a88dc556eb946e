// Scans with three exposures, for scenes with dark and shiny parts: each pixel is taken from the exposure that tells most of it.
//   hdr_scan 192.168.0.10
#include <fringix/fringix.h>
#include <fringix/scan.h>
#include <stdio.h>
#include <stdlib.h>

static int okay(const char* operation, int32_t status) {
  if (status != SLALL_OKAY) fprintf(stderr, "%s: %s (%d)\n", operation, SLErrorcodeToChar(status), (int)status);
  return status == SLALL_OKAY;
}

static int scanOkay(int32_t status) {
  if (status != SLSCAN_OKAY) fprintf(stderr, "%s\n", SLScanErrorText());
  return status == SLSCAN_OKAY;
}

static int readCalibration(int32_t head, SLScanCalibration* calibration) {
  uint8_t* text = NULL;
  int32_t size = 0;
  const int done = okay("SLLoadData", SLLoadData(head, &text, &size, "calibration.json")) &&
                   scanOkay(SLScanCalibrationRead((const char*)text, (uint32_t)size, calibration));
  SLFreeData(text);
  return done;
}

static int upload(int32_t head, uint32_t sequence, const SLScanPlan* plan, int32_t count) {
  uint8_t line[16384];
  const uint32_t width = (uint32_t)plan->projectorWidth;
  for (int32_t i = 0; i < count; ++i) {
    if (!scanOkay(SLScanPlanLine(plan, i, line, width)) ||
        !okay("SLSeqMakeFromLine8", SLSeqMakeFromLine8(head, sequence, (uint8_t)i, line, width)))
      return 0;
  }
  return 1;
}

static int fetch(int32_t head, SLScanner* scanner, int32_t count, const SLScanOptics* camera) {
  uint8_t* picture = malloc((size_t)camera->width * (size_t)camera->height);
  int done = picture != NULL;
  for (int32_t i = 0; done && i < count; ++i) {
    done = okay("SLGetImageIndex", SLGetImageIndex(head, (uint8_t)i, picture)) &&
           scanOkay(SLScanAddPicture(scanner, 0, picture, camera->width, camera->height));
  }
  free(picture);
  return done;
}

// The patterns stay on the head; only the exposure, a value of its configuration in microseconds, changes.
static int measureSeries(int32_t head, uint32_t sequence, int32_t count, SLScanner* scanner, const SLScanOptics* camera) {
  static const double factors[3] = {1, 0.25, 4};
  int32_t exposure = 0;
  int done = okay("SLReadIniInt", SLReadIniInt(head, &exposure, "Camera", "Exposure"));
  for (int i = 0; done && i < 3; ++i) {
    done = okay("SLWriteIniInt", SLWriteIniInt(head, (int32_t)(exposure * factors[i]), "Camera", "Exposure")) &&
           (i == 0 || scanOkay(SLScanNextExposure(scanner, 0))) && okay("SLStartMeasurement", SLStartMeasurement(head, sequence)) &&
           fetch(head, scanner, count, camera);
  }
  if (exposure > 0) SLWriteIniInt(head, exposure, "Camera", "Exposure");  // as it was
  return done;
}

static int measure(int32_t head, const SLScanPlan* plan, SLScanner* scanner, const SLScanOptics* camera) {
  int32_t count = 0;
  uint32_t sequence = 0;
  if (!scanOkay(SLScanPlanPictureCount(plan, &count)) || !okay("SLSeqAlloc", SLSeqAlloc(head, (uint32_t)count, &sequence))) return 0;
  const int done = upload(head, sequence, plan, count) && measureSeries(head, sequence, count, scanner, camera);
  SLSeqFree(head, sequence);
  return done;
}

// The buffers of the cloud are to be used here: see scan_to_cloud.c for how to write them to a file.
static int makeCloud(SLScanner* scanner, const SLScanOptics* camera) {
  SLScanFindings findings;
  SLScanCloud cloud = {0};
  cloud.pixels = (uint64_t)camera->width * (uint64_t)camera->height;
  cloud.points = malloc((size_t)cloud.pixels * 3 * sizeof(float));
  const int done = cloud.points != NULL && scanOkay(SLScanFinish(scanner, 0, &cloud, &findings));
  if (done)
    printf("%lu points of 3 exposures, %lu pixels too bright\n", (unsigned long)findings.counts[SLSCAN_POINT],
           (unsigned long)findings.counts[SLSCAN_SATURATION]);
  free(cloud.points);
  return done;
}

static int scan(int32_t head) {
  static SLScanCalibration calibration;
  uint32_t columns = 0;
  SLScanPlan plan;
  SLScanSettings settings;
  SLScanner* scanner = NULL;
  SLGetProjectorSize(head, &columns, NULL);
  const int done = readCalibration(head, &calibration) && scanOkay(SLScanPlanDefaults(SLSCAN_GRAY_AND_PHASE, (int32_t)columns, &plan)) &&
                   scanOkay(SLScanSettingsDefaults(&settings)) && scanOkay(SLScannerAlloc(&plan, &calibration, &settings, &scanner)) &&
                   measure(head, &plan, scanner, &calibration.cameras[0]) && makeCloud(scanner, &calibration.cameras[0]);
  SLScannerFree(scanner);
  return done;
}

int main(int argc, char** argv) {
  int32_t head;
  if (!okay("SLDevAlloc", SLDevAlloc(argc > 1 ? argv[1] : "127.0.0.2", &head))) return 1;
  const int done = scan(head);
  SLDevFree(head);
  return done ? 0 : 1;
}
