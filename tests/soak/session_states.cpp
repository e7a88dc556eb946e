#include "soak/session_states.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace fringix::test {

namespace {

template <std::size_t Count>
bool isOneOf(int result, const int (&all)[Count]) {
  return std::find(std::begin(all), std::end(all), result) != std::end(all);
}

// A head that is out of step may also state a version, a range or an answer that is none.
bool mayGiveWhileOpen(const Call& call, int result) {
  if (isOneOf(result, {SLALL_OKAY, SLSYSTEM_ERROR, SLCONNECTION_ERROR, SLVERSION_TOO_OLD}) || handsOn(call)) return true;
  const std::string_view name = call.name;
  if (name == "SLStartMeasurement" || name == "SLStartFromTo") return result == SLMEASUREMENT_FAILED;
  return result == SLBAD_PARAMETER && (call.withoutPicture == SLBAD_PARAMETER || name == "SLSetLEDPower");
}

}  // namespace

bool handsOn(const Call& call) {
  const std::string_view name = call.name;
  return call.reply == Reply::levelStatus || name == "SLSaveData" || name == "SLLoadData";
}

bool mayGive(const Call& call, int result, Knowledge before, Knowledge after) {
  if (before.freed) return result == SLUNKNOWN_DEVICE_ID;
  if (result == SLUNKNOWN_DEVICE_ID) return after.freeing || (handsOn(call) && !before.failed);
  return before.failed ? result == call.withoutConnection : mayGiveWhileOpen(call, result);
}

bool mayGiveByItself(int result, Knowledge before, Knowledge after) {
  if (before.freed) return result == SLUNKNOWN_DEVICE_ID;
  return result == SLALL_OKAY || (result == SLUNKNOWN_DEVICE_ID && after.freeing);
}

bool mayBeFreedWith(int result, Knowledge before, bool byOthersToo) {
  if (before.freed) return result == SLUNKNOWN_DEVICE_ID;
  if (result == SLUNKNOWN_DEVICE_ID) return byOthersToo;
  return before.failed ? result == SLALL_OKAY : isOneOf(result, {SLALL_OKAY, SLSYSTEM_ERROR, SLCONNECTION_ERROR});
}

bool mayBeOpenedWith(int result) { return isOneOf(result, {SLALL_OKAY, SLCONNECTION_ERROR, SLHANDSHAKE_TIMEOUT, SLSYSTEM_ERROR}); }

}  // namespace fringix::test
