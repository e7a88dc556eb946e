// Takes a picture with each of several heads at the same time, and goes on with the others when one fails.
//   several_heads 192.168.0.10 192.168.0.11
#include <fringix/fringix.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>

typedef struct Station {
  const char* address;
  pthread_t thread;
  int started;
  int32_t status;
  double brightness;
} Station;

static int32_t takePicture(int32_t head, double* brightness) {
  uint32_t width = 0;
  uint32_t height = 0;
  SLGetCameraSize(head, &width, &height);
  const size_t pixels = (size_t)width * height;
  uint8_t* picture = malloc(pixels);
  if (picture == NULL) return SLSYSTEM_ERROR;
  const int32_t status = SLGetLiveImage(head, picture, width, height);
  double sum = 0;
  for (size_t i = 0; i < pixels; ++i) sum += picture[i];
  *brightness = sum / (double)pixels;
  free(picture);
  return status;
}

// Commands to one head run one after the other; different heads need a thread each to run side by side.
static void* run(void* argument) {
  Station* station = argument;
  int32_t head;
  station->status = SLDevAlloc(station->address, &head);
  if (station->status == SLALL_OKAY) station->status = takePicture(head, &station->brightness);
  SLDevFree(head);
  return NULL;
}

static int report(const Station* station) {
  if (!station->started) {
    fprintf(stderr, "%s: no thread could be started\n", station->address);
  } else if (station->status != SLALL_OKAY) {
    fprintf(stderr, "%s: %s (%d)\n", station->address, SLErrorcodeToChar(station->status), (int)station->status);
  } else {
    printf("%s: brightness %.1f\n", station->address, station->brightness);
    return 1;
  }
  return 0;
}

int main(int argc, char** argv) {
  Station stations[16] = {{0}};
  const int count = argc - 1 < 16 ? argc - 1 : 16;
  int failures = 0;
  for (int i = 0; i < count; ++i) {
    stations[i].address = argv[i + 1];
    stations[i].started = pthread_create(&stations[i].thread, NULL, run, &stations[i]) == 0;
  }
  for (int i = 0; i < count; ++i) {
    if (stations[i].started) pthread_join(stations[i].thread, NULL);
    if (!report(&stations[i])) ++failures;
  }
  return failures == 0 ? 0 : 1;
}
