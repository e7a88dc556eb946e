#include <fringix/fringix.h>
#include <stdio.h>
#include <stdlib.h>

int main(void) {
  int32_t head;
  uint32_t width = 0, height = 0;
  int32_t status = SLDevAlloc("127.0.0.2", &head);
  if (status == SLALL_OKAY) status = SLGetCameraSize(head, &width, &height);
  uint8_t* picture = calloc(height, width);
  if (status == SLALL_OKAY) status = picture == NULL ? SLSYSTEM_ERROR : SLGetLiveImage(head, picture, width, height);
  printf("%s, %u x %u pixels\n", SLErrorcodeToChar(status), (unsigned)width, (unsigned)height);
  free(picture);
  SLDevFree(head);
  return status == SLALL_OKAY ? 0 : 1;
}
