#include "application.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fringix/fringix.hpp>

#include "head/serving/head_server.h"
#include "small_head.h"
#include "support/captured_trace.h"

namespace fringix::tool {
namespace {

TEST(Application, TraceShowsTheCallsOfTheLibrary) {
  head::HeadServer server(test::smallHead());
  server.start();
  test::CapturedTrace trace;
  const char* arguments[] = {"fringix", "info", "127.0.0.1", "--trace"};
  EXPECT_EQ(run(4, arguments), 0);
  setTracing(false);
  observeCalls(nullptr);
  const std::vector<std::string> lines = trace.lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "<QOR> Function SLDevAlloc finished\r\n"), 1);
}

TEST(Application, TracesNothingUnasked) {
  test::CapturedTrace trace;
  const char* arguments[] = {"fringix", "info", "127.0.0.1"};
  EXPECT_EQ(run(3, arguments), 1) << "no head is there";
  const std::vector<std::string> lines = trace.lines();
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(), [](const std::string& line) { return line.find("<QOR>") == 0; }), 0);
}

}  // namespace
}  // namespace fringix::tool
