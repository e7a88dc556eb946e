// What concerns the library as a whole.
#include "api/export_call.h"

using namespace fringix;

int32_t SLSetDebugFlag(int32_t flag) {
  setDebugFlag(flag);
  trace("Debug Enabled.");
  const ExportCall call("SLSetDebugFlag");
  return SLALL_OKAY;
}

const char* SLErrorcodeToChar(int32_t code) {
  const ExportCall call("SLErrorcodeToChar", "%s, Parameter: %i, %i", code, 0);  // the format has a place too many; kept on purpose
  return statusName(code);
}

int32_t QORFringixVersion(void) {
  const ExportCall call("QORFringixVersion", "%s");
  return 4002;
}
