// What a subcommand is: it states its arguments to a command and what that runs. One source file for each.
#pragma once

#include <fringix/fringix.hpp>
#include <string>

#include "arguments/command.h"
#include "heads/head_arguments.h"
#include "heads/open_head.h"

namespace fringix::tool {

void defineAccept(arguments::Command& command, Context& context);
void defineBench(arguments::Command& command, Context& context);
void defineConform(arguments::Command& command, Context& context);
void defineData(arguments::Command& command, Context& context);
void defineDoctor(arguments::Command& command, Context& context);
void defineExplain(arguments::Command& command, Context& context);
void defineGet(arguments::Command& command, Context& context);
void defineGpio(arguments::Command& command, Context& context);
void defineInfo(arguments::Command& command, Context& context);
void defineIni(arguments::Command& command, Context& context);
void defineList(arguments::Command& command, Context& context);
void defineLive(arguments::Command& command, Context& context);
void defineMask(arguments::Command& command, Context& context);
void defineMeasure(arguments::Command& command, Context& context);
void definePattern(arguments::Command& command, Context& context);
void definePicture(arguments::Command& command, Context& context);
void defineProjector(arguments::Command& command, Context& context);
void defineRecord(arguments::Command& command, Context& context);
void defineRecording(arguments::Command& command, Context& context);
void defineScan(arguments::Command& command, Context& context);
void defineSelect(arguments::Command& command, Context& context);
void defineSerial(arguments::Command& command, Context& context);
void defineSet(arguments::Command& command, Context& context);
void defineSheet(arguments::Command& command, Context& context);
void defineShow(arguments::Command& command, Context& context);
void defineStatus(arguments::Command& command, Context& context);
void defineWatch(arguments::Command& command, Context& context);

}  // namespace fringix::tool
