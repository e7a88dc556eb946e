// What a simulated head is: fixed when it is made.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "head/settings/clock.h"
#include "head/settings/serial_script.h"

namespace fringix::head {

struct Pattern;

struct Size {
  std::int32_t width = 0;
  std::int32_t height = 0;

  std::size_t pixels() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
  bool operator==(const Size&) const = default;
};

// What is wrong with a head's answers to searches.
enum class AnnounceFault { none, silent, late, doubled, malformed, oversized };

struct HeadSettings {
  std::string address = "127.0.0.2";  // where it listens: one of this machine's IPv4 addresses, or 0.0.0.0 for all of them
  std::int32_t serial = 1001;
  std::int32_t modelCode = 1;  // 0 to 2 are known to clients
  AnnounceFault announceFault = AnnounceFault::none;
  Size camera{1280, 1024};  // of every channel
  Size projector{1280, 800};
  std::int32_t protocolVersion = 3300;  // commands that came with a later version are unknown to the head

  std::string scene = "default";  // what stands before it, as makeScene takes it

  double noise = 1;             // standard deviation of the sensor's noise in grey levels, at gain 1
  double shotNoise = 0;         // the variance that each grey level of light adds to that, at gain 1
  std::uint64_t noiseSeed = 1;  // of all that is random
  double ambient = 10;          // light of the surroundings, in grey levels
  double gamma = 1;             // of the projector: its light is (level / 255) ^ gamma
  double defocus = 0.3;         // blur of the projector 100 mm behind its focus, a standard deviation in its pixels
  double shine = 0;             // gloss of the shiny patch, in shares of the light; 0: there is none
  double motion = 0;            // way of the ball that passes, in millimetres from picture to picture; 0: there is none

  std::chrono::milliseconds imageTime{10};              // how long a measurement takes for each image
  std::size_t sequenceMemory = std::size_t{512} << 20;  // bytes for all sequences together
  std::size_t pictureMemory = std::size_t{1} << 30;     // bytes for all stored pictures together

  std::string storage{};                            // folder for data blocks; empty: they last as long as the head
  std::size_t dataMemory = std::size_t{256} << 20;  // bytes for all data blocks together, at most 2^31 - 1
  std::optional<std::int32_t> triggerLine{};        // a line that is wired to the head's own trigger input; none: nothing is
  SerialScript serialScript{};                      // what the device at the serial port answers; empty: it repeats every command
  Clock clock = std::chrono::steady_clock::now;     // for uptime and temperatures

  std::size_t mostClients = 64;                        // at once; each has a thread
  std::chrono::milliseconds greetingLimit{10000};      // how long a client may take from the connection to its greeting
  std::chrono::milliseconds idleLimit{120000};         // how long a client may send nothing, or not read what it asked for
  std::size_t transferMemory = std::size_t{64} << 20;  // bytes for what all clients are sending and fetching, see docs/simulated-head.md
  std::chrono::milliseconds roomLimit{10000};          // how long a client waits for its share of them, before it is refused

  // Told of every image that has been put into a sequence, on the thread of the client's session; may be empty.
  std::function<void(std::uint32_t sequence, std::uint32_t image, const Pattern& pattern)> patternStored;
};

}  // namespace fringix::head
