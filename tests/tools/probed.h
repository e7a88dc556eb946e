// What a scripted head is given for a program that tries an address before it opens a session: a connection for each.
#pragma once

#include <utility>
#include <vector>

#include "support/scripted_head.h"

namespace fringix::test {

inline std::vector<Script> probed(Script session) { return {{reply(integer(1))}, std::move(session)}; }

// Up to where a session of a head of version 3300 is open.
inline Script opening() {
  return {reply(integer(1)),
          expect(integer(3300)),
          expect(text("40MSG_SLGetMaxImageSize")),
          reply(integers(2, 1, 0)),
          expect(text("45MSG_SLGetProjDimension")),
          reply(integers(32, 20, 8))};
}

}  // namespace fringix::test
