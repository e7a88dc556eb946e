#include "head/serving/trigger_output.h"

#include <algorithm>

#include "ports/trigger_port.h"

namespace fringix::head {

namespace {

constexpr std::uint32_t thisMachine = 0x7F000001;

bool isLoopback(std::uint32_t address) { return address >> 24 == 127; }

bool send(Link link) { return ports::sendTrigger(link.head, link.host); }

}  // namespace

TriggerOutput::TriggerOutput(const std::string& headAddress) : headAddress_(platform::parseIpv4(headAddress.c_str())) {}

std::size_t TriggerOutput::raise() const {
  const std::set<Link> links = receivers();
  return static_cast<std::size_t>(std::count_if(links.begin(), links.end(), send));
}

std::set<Link> TriggerOutput::receivers() const {
  const std::lock_guard lock(mutex_);
  if (clients_.empty() && isLoopback(headAddress_)) return {{headAddress_, thisMachine}};
  return {clients_.begin(), clients_.end()};
}

TriggerOutput::Client::Client(TriggerOutput& output, Link link) : output_(output), link_(link) {
  const std::lock_guard lock(output_.mutex_);
  output_.clients_.insert(link_);
}

TriggerOutput::Client::~Client() {
  const std::lock_guard lock(output_.mutex_);
  output_.clients_.extract(link_);
}

}  // namespace fringix::head
