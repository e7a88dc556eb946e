// How the trigger listeners of a host, in one process or in many, share the one port that triggers arrive on. One listener at a time is
// the receiver; the others follow and are told the sender of every trigger. When the receiver resigns, or its process dies, a follower
// takes its place (on Windows the death of its process makes the followers fail instead).
//
// On Linux a listener follows only a receiver of its own user or of root. Where a stranger has what the listeners share, it does without
// the others as long as it can have the port, and otherwise waits for it.
//
// One object serves one listener thread and is used by it alone.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/event.h"
#include "platform/socket.h"

namespace fringix::platform {

inline constexpr std::uint16_t triggerPort = 44331;

class TriggerExchange {
 public:
  TriggerExchange();
  ~TriggerExchange();  // lets go of everything
  TriggerExchange(const TriggerExchange&) = delete;
  TriggerExchange& operator=(const TriggerExchange&) = delete;

  // The three things that are shared, opened in this order; where the system needs fewer, the others are there at once.
  enum class Block { ready, noView, none };
  Block openBlock() noexcept;                // carries the sender's address
  bool openLock() noexcept;                  // elects the receiver
  bool openNotification() noexcept;          // wakes the followers
  std::uint32_t lastError() const noexcept;  // of openBlock()

  // As a follower: waits without limit. The first that holds in this order counts.
  enum class Turn { receiver, stop, trigger, noPort, failed };  // noPort: a stranger has it; said once, then wait again
  Turn waitForTurn(const ManualResetEvent& stop) noexcept;
  bool hasView() const noexcept;
  bool readSender(std::uint32_t* address) noexcept;  // after Turn::trigger: host byte order; false: the block could not be read

  // As the receiver.
  enum class Port { open, notShared, refused };
  Port openPort(const SocketLibrary& library, Socket* port) noexcept;
  bool openArrival() noexcept;
  enum class Arrival { stop, datagram, alone, noSelection, failed };  // alone: nobody can follow for now; said once, then wait again
  Arrival waitForDatagram(const ManualResetEvent& stop, const Socket& socket) noexcept;  // without limit
  void resetArrival() noexcept;
  bool writeSender(std::uint32_t address) noexcept;  // host byte order; false: the block could not be written
  void announce() noexcept;                          // tells all followers what was written
  void settle() noexcept;                            // the announcement is over
  void resign() noexcept;

 private:
  struct Native;
  std::unique_ptr<Native> native_;
};

}  // namespace fringix::platform
