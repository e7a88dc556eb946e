#include <fringix/fringix.h>
#include <stdio.h>

int main(void) {
  static uint8_t picture[1280 * 1024];
  int32_t head;
  int32_t status = SLDevAlloc("127.0.0.2", &head);
  if (status == SLALL_OKAY) status = SLGetLiveImage(head, picture, 1280, 1024);
  printf("%s, the pixel in the middle is %d\n", SLErrorcodeToChar(status), picture[512 * 1280 + 640]);
  SLDevFree(head);
  return status == SLALL_OKAY ? 0 : 1;
}
