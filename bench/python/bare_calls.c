/* Live pictures as a C program fetches them: the least that they can cost. */
#include <fringix/fringix.h>
#include <stdint.h>
#include <time.h>

typedef int32_t (*GetLiveImage)(int32_t, uint8_t*, uint32_t, uint32_t);

static int64_t now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * INT64_C(1000000000) + time.tv_nsec;
}

/* Writes the nanoseconds of each of `count` pictures of width x height, all in one buffer, and gives the first bad status. */
int32_t bareCalls(GetLiveImage get, int32_t handle, uint8_t* buffer, uint32_t width, uint32_t height, int64_t* times, int32_t count) {
  for (int32_t i = 0; i < count; ++i) {
    const int64_t begin = now();
    const int32_t status = get(handle, buffer, width, height);
    times[i] = now() - begin;
    if (status != SLALL_OKAY) return status;
  }
  return SLALL_OKAY;
}
