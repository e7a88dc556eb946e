#include "heads/head_arguments.h"

#include "arguments/duration.h"
#include "heads/host_name.h"

namespace fringix::tool {
namespace {

void addTimeout(arguments::Command& command, Context& context) {
  const auto take = [&context](const std::string& text) { context.timeout = arguments::toDuration(text); };
  command.option("--timeout", take, "How long a head may take to answer when it is connected to, 5s unless told otherwise").valueName("5s");
}

enum class Need { optional, required };

void addHead(arguments::Command& command, Context& context, Need need, arguments::Target address, const char* addressHelp,
             arguments::Target serial, const char* serialHelp) {
  if (!context.bySerial) {
    arguments::Argument& argument = command.positional("ADDRESS", std::move(address), addressHelp).check(whatIsWrongWithAddress);
    if (need == Need::required) argument.required();
  }
  command.option("--serial", std::move(serial), serialHelp).valueName("N");
  addTimeout(command, context);
  addJson(command, context);
}

void addOne(arguments::Command& command, Context& context, Need need) {
  addHead(command, context, need, &context.address, "IPv4 address of the head, such as 192.168.0.10, or its host name", &context.serial,
          "Serial number of the head, in place of ADDRESS: it is searched for");
}

}  // namespace

void addAddress(arguments::Command& command, Context& context) { addOne(command, context, Need::required); }

void addOptionalAddress(arguments::Command& command, Context& context) { addOne(command, context, Need::optional); }

void addAddresses(arguments::Command& command, Context& context, std::vector<std::string>& addresses, std::vector<std::int32_t>& serials) {
  addHead(command, context, Need::required, &addresses, "IPv4 addresses of the heads, such as 192.168.0.10, or their host names", &serials,
          "Serial numbers of the heads, in place of the addresses: they are searched for");
}

void addJson(arguments::Command& command, Context& context) {
  command.flag("--json", &context.json, "Print the result, and on standard error what goes wrong, as JSON");
}

}  // namespace fringix::tool
