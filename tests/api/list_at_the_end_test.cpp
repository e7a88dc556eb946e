// The list of a scan and the texts that were handed out of it last as long as the process.
#include <gtest/gtest.h>

#include <chrono>

#include "support/announcing_head.h"
#include "support/child_process.h"

namespace fringix::test {

namespace {

TEST(ListAtTheEndTest, IsReadWhenTheProcessEnds) {
  const AnnouncingHead head({{announcement(4711)}});
  ChildProcess program(LIST_AT_THE_END, {});
  EXPECT_EQ(program.nextLine(), "0 4711 127.0.0.1 127.0.0.1");
  EXPECT_EQ(program.wait(std::chrono::seconds(5)), 0);
}

}  // namespace

}  // namespace fringix::test
