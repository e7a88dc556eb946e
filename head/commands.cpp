#include "head/commands.h"

#include <algorithm>
#include <iterator>

namespace fringix::head {

namespace {

constexpr std::int32_t success = 0;  // the status that follows most replies
constexpr std::int32_t bitsPerPixel = 8;

constexpr Command commands[] = {
    {"20MSG_SLGetProtocolVersion", 0, [](Call& call) { call.wire.writeInt(call.model.settings().protocolVersion); }},
    {"21MSG_SLGetSerial", 0, [](Call& call) { call.wire.writeInt(call.model.settings().serial); }},
    {"22MSG_SLGetPixelDepth", 0,
     [](Call& call) {
       call.wire.writeInt(bitsPerPixel);
       call.wire.writeInt(success);
     }},
    {"40MSG_SLGetMaxImageSize", 0,
     [](Call& call) {
       call.wire.writeInt(call.model.settings().camera.width);
       call.wire.writeInt(call.model.settings().camera.height);
       call.wire.writeInt(success);
     }},
    {"41MSG_SLGetLiveImage", 0,
     [](Call& call) {
       call.model.takeLivePicture(call.picture);
       call.wire.writeBytes(call.picture.pixels.data(), call.picture.pixels.size());
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

const Command* findCommand(std::string_view name, std::int32_t protocolVersion) {
  const auto* found = std::find_if(std::begin(commands), std::end(commands),
                                   [&](const Command& command) { return command.name == name && command.since <= protocolVersion; });
  return found != std::end(commands) ? found : nullptr;
}

}  // namespace fringix::head
