// How code of one's own is tested against a simulated head. The code to be tested finds an exposure in which nothing is too bright.
//   fringix-head --address 127.0.0.9 & own_code_test 127.0.0.9
#include <fringix/fringix.h>
#include <stdio.h>
#include <stdlib.h>

// ---- The code to be tested

static int32_t countTooBright(int32_t head, size_t* tooBright, size_t* pixels) {
  uint32_t width = 0;
  uint32_t height = 0;
  SLGetCameraSize(head, &width, &height);
  *pixels = (size_t)width * height;
  *tooBright = 0;
  uint8_t* picture = malloc(*pixels);
  if (picture == NULL) return SLSYSTEM_ERROR;
  const int32_t status = SLGetLiveImage(head, picture, width, height);
  for (size_t i = 0; i < *pixels; ++i) *tooBright += picture[i] == 255;
  free(picture);
  return status;
}

// Halves the exposure until less than one pixel in a hundred is too bright.
static int32_t findExposure(int32_t head, int32_t* exposure) {
  size_t tooBright = 0;
  size_t pixels = 0;
  int32_t status = SLReadIniInt(head, exposure, "Camera", "Exposure");
  while (status == SLALL_OKAY) {
    status = countTooBright(head, &tooBright, &pixels);
    if (status != SLALL_OKAY || tooBright * 100 < pixels) return status;
    *exposure /= 2;
    status = SLWriteIniInt(head, *exposure, "Camera", "Exposure");
  }
  return status;
}

// ---- The tests: each makes the head see what it is about

static int expect(const char* what, int holds) {
  printf("%s: %s\n", holds ? "passed" : "FAILED", what);
  return holds ? 0 : 1;
}

static int32_t exposureFoundFrom(int32_t head, int32_t start) {
  int32_t exposure = -1;
  const int32_t status = SLWriteIniInt(head, start, "Camera", "Exposure");
  return status == SLALL_OKAY && findExposure(head, &exposure) == SLALL_OKAY ? exposure : -1;
}

int main(int argc, char** argv) {
  int32_t head;
  int32_t exposure = 0;
  uint8_t shown = 0;
  int32_t status = SLDevAlloc(argc > 1 ? argv[1] : "127.0.0.2", &head);
  if (status == SLALL_OKAY) status = SLExecProjCmd(head, 4, 0, &shown, NULL, NULL);  // white light
  if (status != SLALL_OKAY) {
    fprintf(stderr, "%s (%d)\n", SLErrorcodeToChar(status), (int)status);
    return 1;
  }
  int failures = expect("a dark picture keeps its exposure", exposureFoundFrom(head, 2000) == 2000);
  exposure = exposureFoundFrom(head, 100000);
  failures += expect("a bright one gets a shorter exposure", exposure > 0 && exposure < 100000);
  SLDevFree(head);
  failures += expect("a lost head is told", findExposure(head, &exposure) == SLUNKNOWN_DEVICE_ID);
  return failures == 0 ? 0 : 1;
}
