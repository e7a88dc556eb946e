// Lamp, brightness, gain and DMD. Where a range is told, its order differs from command to command.
#include "head/commands/commands.h"

namespace fringix::head {

namespace {

void setDmdState(Call& call) {
  const std::int32_t state = call.wire.readInt();
  if (state != 0 && state != 1) return call.reply(Status::badParameter);
  call.model.switchDmd(state == 1);
  call.reply(Status::ok);
}

constexpr Command commands[] = {
    {"46MSG_SLGetProjPowMinMax", 0,
     [](Call& call) {
       call.wire.writeInt(Controls::ledPowerRange.low);
       call.wire.writeInt(Controls::ledPowerRange.high);
     }},
    {"50MSG_SLGetLEDPower", 0, [](Call& call) { call.wire.writeInt(call.model.controls().ledPower()); }},
    {"51MSG_SLSetLEDPower", 0, [](Call& call) { call.reply(call.model.controls().setLedPower(call.wire.readInt())); }},
    {"320MSG_SET_DIRECT_LEDPOWER", 3300, [](Call& call) { call.reply(call.model.controls().setLedPowerDirectly(call.wire.readInt())); }},
    {"52MSG_SLSetBrightness", 0, [](Call& call) { call.reply(call.model.controls().setBrightnessLevel(call.wire.readInt())); }},
    {"53MSG_SLGetBrightness", 0, [](Call& call) { call.wire.writeInt(call.model.controls().brightnessLevel()); }},
    {"54MSG_SLGetBrightnessMinMax", 0,
     [](Call& call) {
       call.wire.writeInt(Controls::brightnessRange.high);
       call.wire.writeInt(Controls::brightnessRange.low);
     }},
    {"55MSG_SLSetGain", 0, [](Call& call) { call.reply(call.model.controls().setGain(call.wire.readInt())); }},
    {"56MSG_SLGetGain", 0, [](Call& call) { call.wire.writeInt(call.model.controls().gain()); }},
    {"57MSG_SLGetGainMinMax", 0,
     [](Call& call) {
       call.wire.writeInt(Controls::gainRange.high);
       call.wire.writeInt(Controls::gainRange.low);
     }},
    {"250MSG_SLSETDMDSTATE", 2900, setDmdState},
};

}  // namespace

CommandFamily settingsCommands() { return commands; }

}  // namespace fringix::head
