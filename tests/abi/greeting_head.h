// Heads that shake hands, and then only read.
#pragma once

#include "support/scripted_head.h"

namespace fringix::test {

inline constexpr int gainOfTheHead = 17;

inline Script silentHead() {
  return {reply(integer(1)),
          expect(integer(3300)),
          expect(text("40MSG_SLGetMaxImageSize")),
          reply(integers(8, 4, 0)),
          expect(text("45MSG_SLGetProjDimension")),
          reply(integers(6, 5, 0))};
}

// Is to be asked for its gain next.
inline Script greetingHead() { return silentHead() + Script{expect(text("56MSG_SLGetGain")), reply(integer(gainOfTheHead))}; }

}  // namespace fringix::test
