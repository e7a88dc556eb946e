// What was measured, as plain values. The checks make findings of it and look at nothing else.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "diagnosis/ipv4.h"
#include "heads/bounded_connection.h"
#include "heads/probe.h"
#include "heads/trigger_port.h"

namespace fringix::tool::diagnosis {

struct Answer {
  std::string address;
  std::int32_t serial = 0;
  // Whether the library's own question reached it, which goes to the broadcast address of the network, or only one to all networks.
  bool toSearch = true;
  bool operator==(const Answer&) const = default;
};

struct Interface {
  std::string name;
  Network network;  // with the address of this machine
  bool loopback = false;
  bool linkUp = true;
  bool hasCable = true;       // false for bridges, tunnels and the like: their speed means nothing
  std::int64_t megabits = 0;  // of the link, each second; 0: the system does not tell
  bool halfDuplex = false;
  std::int64_t mtu = 0;  // 0: the system does not tell
  std::vector<Answer> answers;
};

struct Step {
  std::string name;
  double milliseconds = 0;
};

struct Pictures {
  std::size_t bytes = 0;         // of one
  std::vector<double> megabits;  // that came each second between the first part of a picture and its last; of each that came in parts
  double milliseconds = 0;       // that the quickest one took from the question on
  std::size_t count = 0;
  std::size_t disturbed = 0;  // of these, in which segments came behind a gap
  bool none = false;          // the head says that it has none
  std::string broken;         // why no more came
};

// What the doctor's own library says of the head: the way that programs go.
struct Session {
  std::string operation;  // the function that failed; empty: none
  std::int32_t status = 0;
  double openMilliseconds = 0;
  std::size_t triggers = 0;  // that came while it listened
  std::chrono::milliseconds listened{0};
  std::optional<std::vector<PortHolder>> holders;  // of the trigger port meanwhile, as triggerPortHolders() tells
};

struct Head {
  std::string address;
  std::optional<std::uint32_t> source;  // this machine's address on the way to it; nothing: there is no way
  tool::Finding reach;
  std::chrono::milliseconds limit{5000};  // that it had for each step
  std::vector<Step> steps;                // of the beginning of a session that were completed
  std::string brokenAt;                   // the step that was not; empty: all were
  std::string reason;                     // why
  std::int32_t protocolVersion = 0;
  std::int32_t serial = 0;
  std::vector<double> roundTrips;  // milliseconds
  Pictures pictures;
  std::optional<Traffic> traffic;  // of the doctor's own connection; nothing where the system does not tell
  std::optional<Session> session;
};

enum class FirewallKind { ufw, firewalld, nftables, iptables, windows };

struct Firewall {
  FirewallKind kind = FirewallKind::nftables;
  bool readable = true;  // by this user
  std::string text;      // what its own tool says of its rules; of Windows, what the registry has
  std::string tool{};    // of iptables: the program that changes them
};

enum class System { linux, windows };

struct Facts {
  System system = System::linux;
  std::string asked;                        // the address that the doctor was called to; empty: whoever answers
  std::optional<std::int32_t> askedSerial;  // or the serial number
  std::vector<Interface> interfaces;
  std::vector<Head> heads;
  std::optional<std::vector<PortHolder>> portHolders;  // before any session of the doctor's
  std::string bindError;  // why the trigger port cannot be bound although nobody is known to have it; empty: it can
  bool waited = false;    // for triggers, because it was asked to
  std::vector<Firewall> firewalls;
};

}  // namespace fringix::tool::diagnosis
