#include "console/explain.h"

#include <gtest/gtest.h>

namespace fringix::tool {
namespace {

Explanation explained(const char* operation, std::int32_t code) { return explain(Error(operation, code), "10.1.2.3"); }

class ExplainEveryStatus : public testing::TestWithParam<std::int32_t> {};

TEST_P(ExplainEveryStatus, WithItsNameItsCodeAndWhatToDoNext) {
  const std::string nameAndCode = std::string("(") + statusName(GetParam()) + ", " + std::to_string(GetParam()) + ")";
  for (const char* operation : {"SLDevAlloc", "SLGetLiveImage", "SLSetGain"}) {
    const Explanation explanation = explained(operation, GetParam());
    EXPECT_NE(explanation.what.find(nameAndCode), std::string::npos) << explanation.what;
    EXPECT_FALSE(explanation.next.empty());
    EXPECT_EQ((explanation.what + explanation.next).find('{'), std::string::npos) << explanation.what << explanation.next;
  }
}

INSTANTIATE_TEST_SUITE_P(Documented, ExplainEveryStatus,
                         testing::Values(SLUNKNOWN_DEVICE_ID, SLBAD_PARAMETER, SLSYSTEM_ERROR, SLCONNECTION_ERROR, SLHANDSHAKE_TIMEOUT,
                                         SLUNKNOWN_SEQUENCE_ID, SLMEASUREMENT_FAILED, SLVERSION_MISMATCH, SLVERSION_TOO_OLD));
INSTANTIATE_TEST_SUITE_P(Unheard, ExplainEveryStatus, testing::Values(-77));

TEST(Explain, NobodyAnswers) {
  const Explanation explanation = explained("SLDevAlloc", SLCONNECTION_ERROR);
  EXPECT_EQ(explanation.what, "no head answers at 10.1.2.3:44330 (SLCONNECTION_ERROR, -10)");
  EXPECT_EQ(explanation.next, "Check the address and that the head is on.");
}

TEST(Explain, ConnectionThatBreaksLater) {
  EXPECT_EQ(explained("SLGetLiveImage", SLCONNECTION_ERROR).what,
            "the connection to the head at 10.1.2.3 broke during SLGetLiveImage (SLCONNECTION_ERROR, -10)");
}

TEST(Explain, CodesThatTheLibraryHasNoNameFor) {
  EXPECT_EQ(explained("SLDevAlloc", SLHANDSHAKE_TIMEOUT).what,
            "10.1.2.3:44330 accepts connections, but does not greet like a head (SLHANDSHAKE_TIMEOUT, -11)");
  EXPECT_EQ(explained("SLSetGain", SLVERSION_TOO_OLD).what, "the head at 10.1.2.3 is too old for SLSetGain (SLVERSION_TOO_OLD, -40)");
}

}  // namespace
}  // namespace fringix::tool
