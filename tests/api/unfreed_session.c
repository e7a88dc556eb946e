/* Opens a session with the head at the address of its argument and ends without freeing it. */
#include <stdio.h>
#include <stdlib.h>

#include "fringix/fringix.h"

int main(int count, char** arguments) {
  int32_t handle = -1;
  if (count != 2 || SLDevAlloc(arguments[1], &handle) != SLALL_OKAY) return EXIT_FAILURE;
  puts("open");
  fflush(stdout);
  exit(EXIT_SUCCESS);
}
