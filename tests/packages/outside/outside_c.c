/* Opens the head at the address given and asks both libraries for something. */
#include <fringix/fringix.h>
#include <fringix/scan.h>
#include <stdio.h>

int main(int argc, char** argv) {
  int32_t head = -1;
  int32_t temperature = 0;
  int32_t pictures = 0;
  SLScanPlan plan;
  const int32_t opened = SLDevAlloc(argc > 1 ? argv[1] : "127.0.0.2", &head);
  const int32_t asked = SLGetTemperature(head, &temperature);
  const int32_t planned = SLScanPlanDefaults(SLSCAN_GRAY_AND_PHASE, 640, &plan);
  const int32_t counted = SLScanPlanPictureCount(&plan, &pictures);
  printf("C: %s, %s, %d pictures\n", SLErrorcodeToChar(opened), SLErrorcodeToChar(asked), (int)pictures);
  SLDevFree(head);
  return opened == SLALL_OKAY && asked == SLALL_OKAY && planned == SLSCAN_OKAY && counted == SLSCAN_OKAY && pictures > 4 ? 0 : 1;
}
