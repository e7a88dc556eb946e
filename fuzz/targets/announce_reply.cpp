// What a search makes of whatever arrives.
//
// The first byte is the number of networks; then come datagrams, each behind its length in two bytes.
#include "discovery/announce_reply.h"

#include <cstring>
#include <sstream>

#include "fringix/fringix.h"
#include "fuzz/input.h"
#include "fuzz/platform/network.h"
#include "fuzz/target.h"

namespace fringix::fuzz::announce_reply_target {

namespace {

constexpr std::int32_t longestAccess = 256;

void receive(Input& in) {
  for (std::size_t i = in.byte() % 3; i > 0; --i) network().addresses.push_back({0x0A000000U + in.byte(), 0xFFFFFF00, in.flag()});
  while (!in.empty()) {
    const std::size_t size = in.byte() + (in.byte() % 2) * 256U;
    network().datagrams.push_back({in.byte(), in.text(size)});
  }
}

void checkEntries(std::int32_t count) {
  std::int32_t last = INT32_MIN;
  for (std::int32_t i = -1; i <= count; ++i) {
    DeviceKeyEntryEx entry{};
    const bool there = SLGetDeviceKeyListEntryEx(i, &entry) == SLALL_OKAY;
    require(there == (i >= 0 && i < count && i < longestAccess), "entries are those that were counted, up to the 256th");
    if (!there) continue;
    require(entry.serial >= last, "entries are sorted");
    require(std::strlen(entry.ipAddress) >= 7, "entries have an address");
    last = entry.serial;
  }
}

// As a formatted input stream reads it; -1 from the first number on that is none.
AnnounceReply readByStream(std::string_view text) {
  AnnounceReply reply;
  std::istringstream in(std::string(text.substr(0, text.find('\0'))));
  std::int32_t* const numbers[] = {&reply.serial, &reply.modelCode, &reply.info1, &reply.info2, &reply.info3,
                                   &reply.info4,  &reply.info5,     &reply.info6, &reply.info7};
  for (std::int32_t* const number : numbers) {
    std::string label;
    std::int32_t value = 0;
    if (number != &reply.info2 && !(in >> label)) break;
    if (!(in >> value)) break;
    *number = value;
  }
  return reply;
}

void run(Bytes input) {
  const FreshNetwork fresh;
  const std::string_view text = textOf(input);
  require(parseAnnounceReply(text) == readByStream(text), "a reply is what a stream reads, up to its first zero");
  Input in(input);
  receive(in);
  const std::size_t waiting = network().datagrams.size();
  std::int32_t count = -1;
  require(SLGetDeviceKeyListSize(&count) == SLALL_OKAY && count >= 0, "a search succeeds");
  require(static_cast<std::size_t>(count) <= waiting, "each datagram gives one entry at most");
  checkEntries(count);
  std::int32_t handle = -1;
  require(SLDevAllocBySerial(7, &handle) != SLALL_OKAY && handle == -1, "no head, no session");
  require(network().open == 0, "no socket is left");
}

const Registered target("announce_reply", run);

}  // namespace

}  // namespace fringix::fuzz::announce_reply_target
