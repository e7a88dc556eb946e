// The abstract local socket by whose name the trigger listeners of a host find each other, and what keeps its users apart. Everybody can
// bind the name or connect to it: the other side is a stranger until the system has told its user.
#pragma once

#include <sys/types.h>

#include "platform/socket.h"

namespace fringix::platform {

inline constexpr uid_t root = 0;

// Who listened, or connected, at the other end of a connection; of a listening socket: whom the others see there.
uid_t userOf(const Socket& local) noexcept;

// Whether a receiver of this user is followed: another user could forge triggers.
bool isBelieved(uid_t user) noexcept;

// A socket that listens under the name; invalid when it is taken.
Socket listenUnderTheName() noexcept;

// A connection to who listens under the name, if he is believed; otherwise invalid, and nothing that he sent has come into the process.
Socket connectToTheName() noexcept;

// A byte that carries a descriptor to the other process.
bool sendDescriptor(const Socket& connection, const Socket& descriptor) noexcept;
Socket receiveDescriptor(const Socket& connection) noexcept;  // invalid when nothing like that has come

// Closes a connection at once, whatever its peer has sent: a descriptor that nobody took is closed with it, and that lasts as long as the
// peer likes (SO_LINGER). Where the system cannot keep descriptors out, a thread of its own waits for that.
void closeUnread(Socket connection) noexcept;
bool manyAreClosing() noexcept;                  // more of them would be too many threads
void closeListening(Socket listening) noexcept;  // and, in the same way, the connections that nobody took

}  // namespace fringix::platform
