// What only display and measurement do.
#include <gtest/gtest.h>

#include <vector>

#include "device/open_session.h"
#include "fringix/fringix.h"

namespace fringix::test {

namespace {

using Events = std::vector<std::pair<std::int32_t, std::int64_t>>;

void note(std::int32_t event, void* context, std::int64_t parameter) { static_cast<Events*>(context)->emplace_back(event, parameter); }

Script measurement(int result) { return {expect(text("60MSG_SLStartMeasurement") + integer(7)), reply(integer(result))}; }
Script serialFetch(int serial) { return {expect(text("21MSG_SLGetSerial")), reply(integer(serial))}; }

struct Result {
  int reply;
  int status;
};
const std::vector<Result> results{{0, SLALL_OKAY},      {-2, SLMEASUREMENT_FAILED}, {1, SLSYSTEM_ERROR},
                                  {-5, SLSYSTEM_ERROR}, {-1, SLSYSTEM_ERROR},       {2, SLSYSTEM_ERROR}};

TEST(MeasurementTest, EveryReplyFiresTheEventAndIsMapped) {
  for (const Result& expected : results) {
    SCOPED_TRACE(expected.reply);
    OpenSession session(measurement(expected.reply) + serialFetch(-70123));
    Events events;
    SLRegisterEventhandler(session.handle(), note, &events);
    EXPECT_EQ(SLStartMeasurement(session.handle(), 7), expected.status);
    EXPECT_EQ(events, (Events{{0, -70123}}));
  }
}

TEST(MeasurementTest, TheSerialIsAskedOnlyWhileItIsUnknown) {
  OpenSession session(measurement(0) + serialFetch(9) + measurement(0));
  EXPECT_EQ(SLStartMeasurement(session.handle(), 7), SLALL_OKAY);
  EXPECT_EQ(SLStartMeasurement(session.handle(), 7), SLALL_OKAY);
  const Bytes request = text("60MSG_SLStartMeasurement") + integer(7);
  EXPECT_EQ(readable(session.sent()), readable(request + text("21MSG_SLGetSerial") + request));
}

TEST(MeasurementTest, AFailedSerialRequestHidesTheResultAndFiresNothing) {
  OpenSession session(measurement(-2) + Script{expect(text("21MSG_SLGetSerial")), cut()});
  Events events;
  SLRegisterEventhandler(session.handle(), note, &events);
  EXPECT_EQ(SLStartMeasurement(session.handle(), 7), SLCONNECTION_ERROR);
  EXPECT_EQ(events, Events{});
}

TEST(MeasurementTest, APartialRunIsMappedAndFiresNothing) {
  for (const Result& expected : results) {
    SCOPED_TRACE(expected.reply);
    OpenSession session({expect(text("61MSG_SLStartFromTo") + integers(7, 2, 5)), reply(integer(expected.reply))});
    Events events;
    SLRegisterEventhandler(session.handle(), note, &events);
    EXPECT_EQ(SLStartFromTo(session.handle(), 7, 2, 5), expected.status);
    EXPECT_EQ(events, Events{});
    EXPECT_EQ(readable(session.sent()), readable(text("61MSG_SLStartFromTo") + integers(7, 2, 5))) << "no serial request";
  }
}

TEST(MeasurementTest, AHandlerRunsOnTheMeasuringThreadAndMayUseTheSession) {
  OpenSession session(measurement(0) + serialFetch(9));
  struct Seen {
    ICameraDevice& device;
    std::int32_t serial = 0;
  } seen{session.device()};
  SLRegisterEventhandler(
      session.handle(),
      [](std::int32_t, void* context, std::int64_t) {
        auto& self = *static_cast<Seen*>(context);
        self.device.Noop();
        self.device.GetSerial(&self.serial);
      },
      &seen);
  EXPECT_EQ(SLStartMeasurement(session.handle(), 7), SLALL_OKAY);
  EXPECT_EQ(seen.serial, 9);
}

}  // namespace

}  // namespace fringix::test
