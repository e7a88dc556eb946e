// Scans what stands before a head and writes its points, in millimetres, as cloud.ply.
//   scan_to_cloud 192.168.0.10
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

// Each pattern is one line of pixels, which all rows of the projector show.
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

static int measure(int32_t head, const SLScanPlan* plan, SLScanner* scanner, const SLScanOptics* camera) {
  int32_t count = 0;
  uint32_t sequence = 0;
  if (!scanOkay(SLScanPlanPictureCount(plan, &count)) || !okay("SLSeqAlloc", SLSeqAlloc(head, (uint32_t)count, &sequence))) return 0;
  const int done = upload(head, sequence, plan, count) && okay("SLStartMeasurement", SLStartMeasurement(head, sequence)) &&
                   fetch(head, scanner, count, camera);
  SLSeqFree(head, sequence);
  return done;
}

static int writePly(const char* path, const float* points, uint64_t pixels, uint64_t count) {
  FILE* file = fopen(path, "w");
  if (file == NULL) {
    perror(path);
    return 0;
  }
  fprintf(file, "ply\nformat ascii 1.0\nelement vertex %lu\n", (unsigned long)count);
  fprintf(file, "property float x\nproperty float y\nproperty float z\nend_header\n");
  for (uint64_t i = 0; i < pixels; ++i) {
    const float* point = points + 3 * i;
    if (point[0] == point[0]) fprintf(file, "%.4f %.4f %.4f\n", point[0], point[1], point[2]);  // else it is not a number
  }
  const int written = !ferror(file);
  if (fclose(file) == 0 && written) return 1;
  perror(path);
  return 0;
}

static int makeCloud(SLScanner* scanner, const SLScanOptics* camera) {
  SLScanFindings findings;
  SLScanCloud cloud = {0};
  cloud.pixels = (uint64_t)camera->width * (uint64_t)camera->height;
  cloud.points = malloc((size_t)cloud.pixels * 3 * sizeof(float));
  const int done = cloud.points != NULL && scanOkay(SLScanFinish(scanner, 0, &cloud, &findings)) &&
                   writePly("cloud.ply", cloud.points, cloud.pixels, findings.counts[SLSCAN_POINT]);
  if (done) printf("%lu points, sigma %.3f mm, in cloud.ply\n", (unsigned long)findings.counts[SLSCAN_POINT], findings.expectedSigma);
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
