#include "diagnosis/status.h"

namespace fringix {

// -11 and -40 have no name here; kept on purpose.
const char* statusName(std::int32_t code) noexcept {
  switch (code) {
    case SLALL_OKAY:
      return "SLALL_OKAY";
    case SLUNKNOWN_DEVICE_ID:
      return "SLUNKNOWN_DEVICE_ID";
    case SLBAD_PARAMETER:
      return "SLBAD_PARAMETER";
    case SLSYSTEM_ERROR:
      return "SLSYSTEM_ERROR";
    case SLCONNECTION_ERROR:
      return "SLCONNECTION_ERROR";
    case SLUNKNOWN_SEQUENCE_ID:
      return "SLUNKNOWN_SEQUENCE_ID";
    case SLMEASUREMENT_FAILED:
      return "SLMEASUREMENT_FAILED";
    case SLVERSION_MISMATCH:
      return "SLVERSION_MISMATCH";
    default:
      return "Unknown SL-Error Code";
  }
}

}  // namespace fringix
