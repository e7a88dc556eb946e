// Prints the triggers of a head as they come, until Enter is pressed.
//   watch_triggers 192.168.0.10
#include <fringix/fringix.h>
#include <stdio.h>

// Runs on a thread of the session and should return soon: a real program hands the work on.
static void onEvent(int32_t event, void* context, int64_t serial) {
  (void)context;
  if (event == SLEVENT_TRIGGER) printf("trigger of head %d\n", (int)serial);
  fflush(stdout);
}

int main(int argc, char** argv) {
  int32_t head;
  int32_t status = SLDevAlloc(argc > 1 ? argv[1] : "127.0.0.2", &head);
  if (status == SLALL_OKAY) status = SLRegisterEventhandler(head, onEvent, NULL);
  printf("%s, end with Enter\n", SLErrorcodeToChar(status));
  fflush(stdout);
  if (status == SLALL_OKAY) getchar();
  SLDevFree(head);
  return status == SLALL_OKAY ? 0 : 1;
}
