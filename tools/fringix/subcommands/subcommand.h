// What a subcommand is: its options are defined on a CLI::App, and its work is that app's callback. One source file for each.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <fringix/fringix.hpp>
#include <string>

namespace fringix::tool {

// What all subcommands share; filled by the time a callback runs.
struct Context {
  std::string address;  // what stands for it while it is not known yet: "serial number 1001"
  bool bySerial = false;
  std::int32_t serial = 0;
};

// Opens the session with the head named on the command line, and then knows its address. On a terminal a line says so while it blocks.
Device openHead(Context& context);

// Adds the ADDRESS argument of a subcommand that talks to a head, or --serial in its place, and to its help what there is to know about
// connecting.
void addAddress(CLI::App& app, Context& context);

// What an argument needs that takes the addresses of heads.
void defineAddress(CLI::App& app, CLI::Option* option);
void defineSerialNumber(CLI::App& app, CLI::Option* option);  // the same for serial numbers

// Whether the library still has a connection to the head. Asks the library only.
bool isConnected(const Device& head);

void defineData(CLI::App& app, Context& context);
void defineGet(CLI::App& app, Context& context);
void defineGpio(CLI::App& app, Context& context);
void defineInfo(CLI::App& app, Context& context);
void defineIni(CLI::App& app, Context& context);
void defineList(CLI::App& app, Context& context);
void defineLive(CLI::App& app, Context& context);
void defineMask(CLI::App& app, Context& context);
void defineMeasure(CLI::App& app, Context& context);
void definePattern(CLI::App& app, Context& context);
void definePicture(CLI::App& app, Context& context);
void defineProjector(CLI::App& app, Context& context);
void defineSelect(CLI::App& app, Context& context);
void defineSerial(CLI::App& app, Context& context);
void defineSet(CLI::App& app, Context& context);
void defineSheet(CLI::App& app, Context& context);
void defineShow(CLI::App& app, Context& context);
void defineStatus(CLI::App& app, Context& context);
void defineWatch(CLI::App& app, Context& context);

}  // namespace fringix::tool
