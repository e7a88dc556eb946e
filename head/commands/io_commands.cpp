// Digital lines, outputs and the serial port.
#include <string>

#include "head/commands/commands.h"

namespace fringix::head {

namespace {

constexpr const char* noReply = "?";  // clients cannot receive an empty text

void executeSerial(Call& call) {
  const std::string reply = call.model.serialDevice().answer(call.wire.readText());
  call.wire.writeText(reply.empty() ? noReply : reply);
  call.reply(reply.empty() ? Status::noAnswer : Status::ok);
}

constexpr Command commands[] = {
    {"58MSG_SLSetOutputSettings", 0,
     [](Call& call) {
       const std::int32_t output = call.wire.readInt();
       call.reply(call.model.lines().setOutput(output, call.wire.readInt()));
     }},
    {"59MSG_SLExecOutput", 0, [](Call& call) { call.reply(call.model.lines().executeOutput(call.wire.readInt())); }},
    {"84MSG_SLGetGPIOStatus", 2400,
     [](Call& call) {
       std::int32_t state = 0;
       const Status status = call.model.lines().read(call.wire.readInt(), state);
       call.wire.writeInt(state);
       call.reply(status);
     }},
    {"230MSG_SLSetGPIOValue", 2700,
     [](Call& call) {
       const std::int32_t line = call.wire.readInt();
       call.reply(call.model.lines().set(line, call.wire.readInt()));
     }},
    {"200MSG_SLRS232Exec", 2500, executeSerial},
};

}  // namespace

CommandFamily ioCommands() { return commands; }

}  // namespace fringix::head
