/*
 * A program as it was built with version 4.0.0.2: it has the declarations of that time with it and no header of ours. Whatever it asks of
 * a library that is the same to programs has to come as it did then, and within the records of that time.
 */
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef _WIN32
#define IMPORTED __declspec(dllimport)
#else
#define IMPORTED extern
#endif

typedef struct Key {
  int32_t serial;
  int32_t info1;
  const char* ip_address;
} Key;

typedef struct Found {
  int32_t reserved;
  int32_t serial;
  int32_t info1;
  const char* ip_address;
  const char* model_name;
  int32_t info[6];
} Found;

typedef struct Plan {
  int32_t method, projector_width, period, steps;
} Plan;

typedef struct Optics {
  int32_t width, height;
  double fx, fy, cx, cy, distortion[5], rotation[9], translation[3];
} Optics;

typedef struct Calibration {
  int32_t serial;
  char date[12];
  int32_t camera_count, reserved;
  Optics cameras[4], projector;
} Calibration;

typedef struct Settings {
  int32_t threads, saturation;
  double noise, noise_per_level, period_share, gray_margin, residual, unsteadiness, sigma, nearest, farthest;
  int32_t clean, least_patch;
  double edge_angle, outlier;
} Settings;

typedef struct Cloud {
  uint64_t pixels;
  float *points, *normals, *sigma;
  uint8_t *intensity, *reason;
  float *column, *modulation, *offset;
} Cloud;

typedef struct Findings {
  uint64_t counts[11];
  double expected_sigma, measured_noise, flicker;
  int32_t flickers, moves;
} Findings;

IMPORTED int32_t SLDevAlloc(const char* address, int32_t* handle);
IMPORTED int32_t SLDevFree(int32_t handle);
IMPORTED int32_t SLGetDevKey(int32_t handle, Key* key);
IMPORTED int32_t SLGetDeviceKeyListSize(int32_t* count);
IMPORTED int32_t SLGetDeviceKeyListEntryEx(int32_t index, Found* found);
IMPORTED int32_t SLGetCameraSize(int32_t handle, uint32_t* width, uint32_t* height);
IMPORTED int32_t SLGetLiveImage(int32_t handle, uint8_t* buffer, uint32_t width, uint32_t height);
IMPORTED int32_t SLLoadData(int32_t handle, uint8_t** data, int32_t* size, const char* name);
IMPORTED int32_t SLFreeData(uint8_t* data);
IMPORTED const char* SLErrorcodeToChar(int32_t code);
IMPORTED int32_t QORFringixVersion(void);
IMPORTED int32_t SLScanPlanDefaults(int32_t method, int32_t projector_width, Plan* plan);
IMPORTED int32_t SLScanPlanPictureCount(const Plan* plan, int32_t* count);
IMPORTED int32_t SLScanCalibrationRead(const char* text, uint32_t length, Calibration* calibration);
IMPORTED int32_t SLScanSettingsDefaults(Settings* settings);
IMPORTED int32_t SLScannerAlloc(const Plan* plan, const Calibration* calibration, const Settings* settings, void** scanner);
IMPORTED int32_t SLScannerFree(void* scanner);
IMPORTED int32_t SLScanCompute(void* scanner, int32_t camera, const uint8_t* const* pictures, int32_t count, int32_t width, int32_t height,
                               const Cloud* cloud, Findings* findings);

static int failures = 0;

static void expect(int condition, const char* what) {
  if (condition) return;
  printf("an older program does not get %s\n", what);
  ++failures;
}

/* What is written behind a record changes these. */
enum { guard = 0x5A, guarded = 256, no_patterns = -51 };

#define GUARDED(type)              \
  struct {                         \
    type record;                   \
    unsigned char behind[guarded]; \
  }

static int untouched(const unsigned char* behind) {
  int i = 0;
  while (i < guarded && behind[i] == guard) ++i;
  return i == guarded;
}

static void ask_head(int32_t head, const char* address) {
  GUARDED(Key) key;
  uint32_t width = 0, height = 0;
  uint8_t* picture = NULL;
  memset(&key, guard, sizeof key);
  expect(SLGetDevKey(head, &key.record) == 0 && strcmp(key.record.ip_address, address) == 0 && key.record.serial > 0, "a head's key");
  expect(untouched(key.behind), "a key of its size");
  expect(SLGetCameraSize(head, &width, &height) == 0 && width > 0 && height > 0, "the camera's size");
  picture = calloc((size_t)width * height, 1);
  expect(SLGetLiveImage(head, picture, width, height) == 0 && picture[width * (height / 2) + width / 2] != 0, "a picture");
  free(picture);
}

static void search(const char* address) {
  GUARDED(Found) found;
  int32_t count = 0, i = 0;
  expect(SLGetDeviceKeyListSize(&count) == 0 && count > 0, "the heads of a search");
  for (; i < count; ++i) {
    memset(&found, guard, sizeof found);
    expect(SLGetDeviceKeyListEntryEx(i, &found.record) == 0 && untouched(found.behind), "an entry of its size");
    if (strcmp(found.record.ip_address, address) == 0 && strcmp(found.record.model_name, "QOR_T3D") == 0) return;
  }
  expect(0, "the head that it looks for");
}

static void read_calibration(int32_t head, Calibration* calibration) {
  uint8_t* text = NULL;
  int32_t size = 0;
  GUARDED(Calibration)* read = malloc(sizeof *read);
  memset(read, guard, sizeof *read);
  expect(SLLoadData(head, &text, &size, "calibration.json") == 0, "the calibration's text");
  expect(SLScanCalibrationRead((const char*)text, (uint32_t)size, &read->record) == 0, "a calibration");
  expect(untouched(read->behind) && read->record.camera_count > 0 && read->record.projector.fx > 0, "a calibration of its layout");
  *calibration = read->record;
  SLFreeData(text);
  free(read);
}

/* Pictures in which nothing is to be seen give no points, and a reason for each pixel. */
static void compute(void* scanner, const Calibration* calibration, int32_t count) {
  const int32_t width = calibration->cameras[0].width, height = calibration->cameras[0].height;
  const uint64_t pixels = (uint64_t)width * (uint64_t)height;
  uint8_t* black = calloc(pixels, 1);
  const uint8_t* pictures[256];
  GUARDED(Findings) findings;
  Cloud cloud = {0};
  int32_t i;
  for (i = 0; i < count; ++i) pictures[i] = black;
  memset(&findings, guard, sizeof findings);
  cloud.pixels = pixels;
  cloud.points = malloc(pixels * 3 * sizeof(float));
  cloud.reason = calloc(pixels, 1);
  expect(SLScanCompute(scanner, 0, pictures, count, width, height, &cloud, &findings.record) == no_patterns,
         "the status of a scan of nothing");
  expect(untouched(findings.behind) && findings.record.counts[0] == 0 && findings.record.counts[2] == pixels, "findings of their layout");
  expect(cloud.reason[pixels / 2] == 2 && cloud.points[0] != cloud.points[0], "a cloud of its layout");
  free(black);
  free(cloud.points);
  free(cloud.reason);
}

static void scan(int32_t head) {
  static Calibration calibration;
  GUARDED(Plan) plan;
  GUARDED(Settings) settings;
  void* scanner = NULL;
  int32_t count = 0;
  read_calibration(head, &calibration);
  memset(&plan, guard, sizeof plan);
  memset(&settings, guard, sizeof settings);
  expect(SLScanPlanDefaults(0, calibration.projector.width, &plan.record) == 0 && untouched(plan.behind), "a plan of its size");
  expect(plan.record.projector_width == calibration.projector.width && plan.record.steps == 10, "a plan of its layout");
  expect(SLScanSettingsDefaults(&settings.record) == 0 && untouched(settings.behind), "settings of their size");
  expect(settings.record.threads >= 1 && settings.record.farthest > settings.record.nearest && settings.record.edge_angle > 0,
         "settings of their layout");
  expect(SLScannerAlloc(&plan.record, &calibration, &settings.record, &scanner) == 0, "a scanner");
  expect(SLScanPlanPictureCount(&plan.record, &count) == 0 && count >= 4 && count <= 256, "the count of pictures");
  if (failures == 0) compute(scanner, &calibration, count);
  SLScannerFree(scanner);
}

int main(int argc, char** argv) {
  const char* const address = argc > 1 ? argv[1] : "127.0.0.2";
  int32_t head = -1;
  expect(SLDevAlloc(address, &head) == 0, "a session");
  expect(strcmp(SLErrorcodeToChar(-3), "SLBAD_PARAMETER") == 0, "the name of a status");
  expect(QORFringixVersion() >= 4002, "a version that is not before its own");
  if (failures == 0) {
    ask_head(head, address);
    search(address);
    scan(head);
  }
  SLDevFree(head);
  if (failures == 0) printf("older: all as it was\n");
  return failures == 0 ? 0 : 1;
}
