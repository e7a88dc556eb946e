// What becomes of a session when its program ends: nothing. The library closes no session by itself; kept on purpose.
#include <gtest/gtest.h>

#include <chrono>

#include "device/open_session.h"
#include "support/child_process.h"

namespace fringix::test {

namespace {

TEST(UnfreedSessionTest, EndsWithItsProgramWithoutAFarewell) {
  ScriptedHead head(handshake());
  ChildProcess program(UNFREED_SESSION, {"127.0.0.1"});
  ASSERT_EQ(program.nextLine(), "open");
  EXPECT_EQ(program.wait(std::chrono::seconds(5)), 0) << "it waits for something";
  EXPECT_EQ(readable(head.received()), readable(handshakeBytes()));
}

}  // namespace

}  // namespace fringix::test
