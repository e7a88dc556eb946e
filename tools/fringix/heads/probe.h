// Whether a head answers at an address, found out in bounded time and without a session: the library's own connecting blocks until the
// system gives up.
#pragma once

#include <chrono>
#include <string>

#include "console/explain.h"
#include "heads/bounded_connection.h"

namespace fringix::tool {

enum class Reach {
  head,         // it greets as a head does
  refused,      // the machine is there, and nothing listens
  unreachable,  // no way leads there
  timedOut,     // nothing comes back
  silent,       // it accepts the connection and says nothing
  closed,       // it accepts the connection and ends it
  noHead,       // it says something else
  failed,       // this machine does not let it be tried
};

struct Finding {
  Reach reach = Reach::failed;
  std::string reason;  // the system's, where it gave one
};

// Connects to the command port, reads the greeting and closes; all that within `limit`. A head takes it for a client that left.
Finding probe(const std::string& address, std::chrono::milliseconds limit);

// The same on a connection that is kept, for a session to go on with. `connected`, if not null, is told when the greeting was waited for.
Finding greet(BoundedConnection& connection, const std::string& address, std::chrono::milliseconds limit,
              BoundedConnection::Clock::time_point* connected = nullptr);

// What a finding other than Reach::head means to somebody who wanted to connect.
Explanation explain(const Finding& finding, const std::string& address, std::chrono::milliseconds limit);

}  // namespace fringix::tool
