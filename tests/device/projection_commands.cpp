// Display and measurement, for a head with a projector of 6 x 5 pixels.
#include "device/command_table.h"

namespace fringix::test {

namespace {

const Bytes image = noise(18 * 5, 7);

}  // namespace

std::vector<CommandCase> projectionCommands() {
  constexpr auto follows = StatusWord::follows;
  return {
      {.name = "ShowImage",
       .call = [](OpenSession& s, std::uint8_t*) { return SLShowImage(s.handle(), asPixels(image), 6, 5, 18); },
       .sent = text("00MSG_SLShowImage24") + integers(6, 5, 18) + image,
       .statusWord = follows},
      {.name = "ShowImageOfSmallerSize",
       .call = [](OpenSession& s, std::uint8_t*) { return SLShowImage(s.handle(), asPixels(image), 2, 3, 7); },
       .sent = text("00MSG_SLShowImage24") + integers(2, 3, 7) + image.substr(0, 21),
       .statusWord = follows},
      {.name = "ShowImage8",
       .call = [](OpenSession& s, std::uint8_t*) { return s.device().ShowImage8(asPixels(image), 6, 5, 6); },
       .sent = text("01MSG_SLShowImage8") + integers(6, 5, 6) + image.substr(0, 30),
       .statusWord = follows},
      {.name = "ShowImage8OfRowsAsLongAsThoseOf24Bits",
       .call = [](OpenSession& s, std::uint8_t*) { return s.device().ShowImage8(asPixels(image), 6, 5, 18); },
       .sent = text("01MSG_SLShowImage8") + integers(6, 5, 18) + image,
       .statusWord = follows},
      {.name = "ShowImage8OfRowsShorterThanItsPixels",
       .call = [](OpenSession& s, std::uint8_t*) { return s.device().ShowImage8(asPixels(image), 2, 3, 5); },
       .sent = text("01MSG_SLShowImage8") + integers(2, 3, 5) + image.substr(0, 15),
       .statusWord = follows},
      {.name = "ShowImage8OfNothing",
       .call = [](OpenSession& s, std::uint8_t*) { return s.device().ShowImage8(nullptr, 6, 0, 6); },
       .sent = text("01MSG_SLShowImage8") + integers(6, 0, 6),
       .statusWord = follows},
      {.name = "ShowImageFromSeq",
       .call = [](OpenSession& s, std::uint8_t*) { return SLShowImageFromSeq(s.handle(), 7, 300); },
       .sent = text("02MSG_SLShowFromSeq") + integers(7, 300),
       .statusWord = follows},
      {.name = "StartMeasurement",
       .call = [](OpenSession& s, std::uint8_t*) { return SLStartMeasurement(s.handle(), 7); },
       .before = {text("60MSG_SLStartMeasurement") + integers(7), integer(0)},
       .sent = text("21MSG_SLGetSerial"),
       .reply = integer(70123)},
      {.name = "StartFromTo",
       .call = [](OpenSession& s, std::uint8_t*) { return SLStartFromTo(s.handle(), 7, 2, 300); },
       .sent = text("61MSG_SLStartFromTo") + integers(7, 2, 300),
       .reply = integer(0)},
  };
}

}  // namespace fringix::test
