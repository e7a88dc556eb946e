// Who the head is, and the commands that hold a session together.
#include "head/commands/commands.h"

namespace fringix::head {

namespace {

constexpr std::int32_t bitsPerPixel = 8;

constexpr Command commands[] = {
    {"20MSG_SLGetProtocolVersion", 0, [](Call& call) { call.wire.writeInt(call.model.settings().protocolVersion); }},
    {"21MSG_SLGetSerial", 0, [](Call& call) { call.wire.writeInt(call.model.settings().serial); }},
    {"22MSG_SLGetPixelDepth", 0,
     [](Call& call) {
       call.wire.writeInt(bitsPerPixel);
       call.reply(Status::ok);
     }},
    {"224MSG_SLNumberOfChannels", 2600,
     [](Call& call) {
       call.wire.writeInt(channelCount);
       call.reply(Status::ok);
     }},
    {"40MSG_SLGetMaxImageSize", 0,
     [](Call& call) {
       call.wire.writeInt(call.model.settings().camera.width);
       call.wire.writeInt(call.model.settings().camera.height);
       call.reply(Status::ok);
     }},
    {"45MSG_SLGetProjDimension", 0,
     [](Call& call) {
       call.wire.writeInt(call.model.settings().projector.width);
       call.wire.writeInt(call.model.settings().projector.height);
       call.wire.writeInt(bitsPerPixel);
     }},
    {"70MSG_SLEnableCamLogging", 0, [](Call&) {}},
    {"100MSG_SLNOOP", 0, [](Call&) {}},
    {"ByeBye=", 0, [](Call&) {}},  // the client closes the connection a moment later
};

}  // namespace

CommandFamily identityCommands() { return commands; }

}  // namespace fringix::head
