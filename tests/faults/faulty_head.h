// A simulated head with everything that the calls ask for, and a way to make it do wrong.
#pragma once

#include <string>

#include "calls.h"
#include "head/commands/commands.h"
#include "head/faults/parse_fault.h"
#include "head/serving/head_server.h"

namespace fringix::test {

struct FaultyHead {
  explicit FaultyHead(std::string at) : address(std::move(at)), server(settings(address)), sequence(prepare(server.model())) {
    server.start();
  }

  void set(const std::string& fault) { server.faults().add(head::parseFault(fault, head::commandNames())); }
  void clear() { server.faults().clear(); }

  static head::HeadSettings settings(const std::string& address) {
    head::HeadSettings settings = headForCalls();
    settings.address = address;
    return settings;
  }

  const std::string address;
  head::HeadServer server;
  const std::uint32_t sequence;
};

}  // namespace fringix::test
