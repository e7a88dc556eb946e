// What the head tells of its own state. All but the camera's temperature are answered with the number alone.
#include "head/commands/commands.h"

namespace fringix::head {

namespace {

constexpr Command commands[] = {
    {"30MSG_SLCheckSystem", 0, [](Call& call) { call.wire.writeInt(call.model.selfCheck()); }},
    {"47MSG_SLGetTemperature", 2400,
     [](Call& call) {
       call.wire.writeInt(call.model.controls().cameraTemperature());
       call.reply(Status::ok);
     }},
    {"240MSG_SLGETUPTIME", 2800, [](Call& call) { call.wire.writeInt(call.model.controls().uptime()); }},
    {"260MSG_SLGETPROJTEMP", 3000, [](Call& call) { call.wire.writeInt(call.model.controls().projectorTemperature()); }},
    // The name says temperature, but this number asks for the status.
    {"270MSG_SLGETPROJTEMP", 3000, [](Call& call) { call.wire.writeInt(call.model.projectorStatus()); }},
    {"280MSG_SLGETEXPOSURE", 3100, [](Call& call) { call.wire.writeInt(call.model.configuration().exposure()); }},
};

}  // namespace

CommandFamily statusCommands() { return commands; }

}  // namespace fringix::head
