// What a head answers to searches, asked for it in place of a client.
#pragma once

#include <cstdint>
#include <string>

namespace fringix::tool {

// Empty when the head does not answer: it may be behind a router. Takes up to a second.
std::string askForAnnouncement(std::uint32_t head);

}  // namespace fringix::tool
