// A station that runs for months: each line of its input is a part to be looked at. When the head or its cable fails, the station says
// so, opens the head anew until that succeeds, and looks at the same part again.
//   station 192.168.0.10
#include <fringix/fringix.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

static int32_t inspect(int32_t head, const char* part) {
  uint32_t width = 0;
  uint32_t height = 0;
  SLGetCameraSize(head, &width, &height);
  uint8_t* picture = malloc((size_t)width * height);
  if (picture == NULL) return SLSYSTEM_ERROR;
  const int32_t status = SLGetLiveImage(head, picture, width, height);
  if (status == SLALL_OKAY) printf("%s: level %d in the middle\n", part, picture[(size_t)(height / 2) * width + width / 2]);
  fflush(stdout);
  free(picture);
  return status;
}

// Nothing reconnects by itself: after a failure the session is over.
static void openAnew(const char* address, int32_t* head) {
  SLDevFree(*head);
  while (SLDevAlloc(address, head) != SLALL_OKAY) sleep(1);
  fprintf(stderr, "%s: connected\n", address);
}

int main(int argc, char** argv) {
  const char* address = argc > 1 ? argv[1] : "127.0.0.2";
  char line[64];
  int32_t head = -1;
  openAnew(address, &head);
  while (fgets(line, sizeof line, stdin) != NULL) {
    char part[64];
    if (sscanf(line, "%63s", part) != 1) continue;
    for (int32_t status = inspect(head, part); status != SLALL_OKAY; status = inspect(head, part)) {
      fprintf(stderr, "%s: %s (%d), connecting again\n", address, SLErrorcodeToChar(status), (int)status);
      sleep(1);  // a head that is there and fails is not asked without a pause
      openAnew(address, &head);
    }
  }
  SLDevFree(head);
  return 0;
}
