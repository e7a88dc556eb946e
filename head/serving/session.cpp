#include "head/serving/session.h"

#include <exception>
#include <utility>

#include "head/commands/commands.h"

namespace fringix::head {

namespace {

constexpr std::size_t longestName = 64;

}  // namespace

std::string nameOf(platform::Ipv4Endpoint client) { return platform::formatIpv4(client.address) + ":" + std::to_string(client.port); }

Session::Session(platform::Socket socket, platform::Ipv4Endpoint client, HeadModel& model, TriggerOutput& triggers,
                 const Observer& observer)
    : socket_(std::move(socket)),
      client_(nameOf(client)),
      model_(model),
      triggers_(triggers),
      link_{socket_.localEndpoint().address, client.address},
      observer_(observer),
      thread_([this] { run(); }) {}

Session::~Session() {
  requestStop();
  thread_.join();
}

void Session::requestStop() noexcept {
  stopping_ = true;
  socket_.shutdown();
}

void Session::run() noexcept {
  try {
    tell(Happening::connected, "");
    serve();
  } catch (const Disconnected&) {
  } catch (const std::exception& error) {
    tell(Happening::trouble, error.what());
  }
  tell(Happening::disconnected, "");
  socket_.shutdown();
  finished_ = true;
}

void Session::serve() {
  const TriggerOutput::Client toldOfTriggers(triggers_, link_);  // before the greeting: from then on a client may count on it
  Wire wire(socket_, stopping_);
  Call call{model_, wire};
  wire.setPatience(model_.settings().greetingLimit);
  wire.writeInt(model_.settings().protocolVersion);
  wire.readInt();  // the client's protocol version: every head serves every client
  wire.setPatience(model_.settings().idleLimit);
  while (true) {
    wire.beginCommand();
    const std::string name = wire.readText(longestName);
    const Command* command = findCommand(name, model_.settings().protocolVersion);
    if (command == nullptr) throw ProtocolError("unknown command \"" + name + "\"");
    tell(Happening::command, name);
    command->run(call);
  }
}

void Session::tell(Happening happening, const std::string& text) const {
  if (observer_) observer_(happening, client_, text);
}

}  // namespace fringix::head
