#include "head/serving/session.h"

#include <chrono>
#include <exception>
#include <utility>
#include <vector>

#include "head/commands/commands.h"
#include "head/serving/damage_by_fault.h"

namespace fringix::head {

namespace {

constexpr std::size_t longestName = 64;
constexpr std::chrono::milliseconds awayInterval{20};

}  // namespace

std::string nameOf(platform::Ipv4Endpoint client) { return platform::formatIpv4(client.address) + ":" + std::to_string(client.port); }

Session::Session(platform::Socket socket, platform::Ipv4Endpoint client, HeadModel& model, FaultPlan& faults, TriggerOutput& triggers,
                 const Observer& observer)
    : socket_(std::move(socket)),
      client_(nameOf(client)),
      model_(model),
      faults_(faults),
      triggers_(triggers),
      link_{socket_.localEndpoint().address, client.address},
      observer_(observer) {}

Session::~Session() {
  requestStop();
  if (thread_.joinable()) thread_.join();
  if (reset_) socket_.setResetOnClose();
}

void Session::start() {
  thread_ = std::thread([this] { run(); });
}

void Session::requestStop() noexcept {
  stopping_ = true;
  if (!reset_) socket_.shutdown();
}

void Session::requestReset() noexcept {
  reset_ = true;
  stopping_ = true;
}

void Session::run() noexcept {
  try {
    tell(Happening::connected, "");
    serve();
  } catch (const Disconnected&) {
  } catch (const ConnectionReset&) {
    reset_ = true;
  } catch (const std::exception& error) {
    tell(Happening::trouble, error.what());
  }
  tell(Happening::disconnected, "");
  if (!reset_) socket_.shutdown();
  finished_ = true;
}

void Session::serve() {
  const TriggerOutput::Client toldOfTriggers(triggers_, link_);  // before the greeting: from then on a client may count on it
  Wire wire(socket_, stopping_);
  Call call{model_, wire};
  wire.setPatience(model_.settings().greetingLimit);
  meetFaults(wire, Occasion::greeting, greetingName);
  wire.writeInt(model_.settings().protocolVersion);
  wire.endReply();
  wire.readInt();  // the client's protocol version: every head serves every client
  wire.setPatience(model_.settings().idleLimit);
  while (true) {
    wire.beginCommand();
    const std::string name = wire.readText(longestName);
    const Command* command = findCommand(name, model_.settings().protocolVersion);
    if (command == nullptr) throw ProtocolError("unknown command \"" + name + "\"");
    tell(Happening::command, name);
    meetFaults(wire, isPicture(*command) ? Occasion::picture : Occasion::command, name);
    command->run(call);
    wire.endReply();
  }
}

void Session::meetFaults(Wire& wire, Occasion occasion, std::string_view command) {
  const std::vector<Fault> faults = faults_.strike(occasion, command);
  for (const Fault& fault : faults) tell(Happening::fault, fault.text);
  while (faults_.away()) wire.pause(awayInterval);
  if (faults.empty()) return;
  Damage damage = damageBy(faults, model_.settings().idleLimit);
  damage.lasts = [this, edition = faults_.edition()] { return faults_.edition() == edition; };
  wire.damageReply(std::move(damage));
}

void Session::tell(Happening happening, const std::string& text) const {
  if (observer_) observer_(happening, client_, text);
}

}  // namespace fringix::head
