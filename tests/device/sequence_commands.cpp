// Pattern sequences, for a head with a projector of 6 x 5 and a camera of 8 x 4 pixels.
#include "device/command_table.h"

namespace fringix::test {

namespace {

const Bytes codes = noise(16 * 4, 4);
const Bytes pattern = noise(18 * 5, 5);
const Bytes line = noise(6, 6);

}  // namespace

std::vector<CommandCase> sequenceCommands() {
  constexpr auto follows = StatusWord::follows;
  return {
      {.name = "SeqAlloc",
       .call = [](OpenSession& s, std::uint8_t* output) { return SLSeqAlloc(s.handle(), 12, asUnsigned(output)); },
       .sent = text("11MSG_SLSeqAlloc") + integers(12),
       .reply = integer(0xFEDCBA98U),
       .written = integer(0xFEDCBA98U),
       .statusWord = follows,
       .leftByBreak = zeroUntil(4, integer(0xFEDCBA98U))},
      {.name = "SeqFree",
       .call = [](OpenSession& s, std::uint8_t*) { return SLSeqFree(s.handle(), 7); },
       .sent = text("10MSG_SLSeqFree") + integers(7),
       .statusWord = follows},
      {.name = "SeqPut",
       .call = [](OpenSession& s, std::uint8_t*) { return SLSeqPut(s.handle(), 7, asPixels(pattern), 6, 5, 18, 200); },
       .sent = text("12MSG_SLSeqPut") + integers(7, 200, 6, 5, 18) + pattern,
       .statusWord = follows},
      {.name = "SeqMakeGrayCode",
       .call = [](OpenSession& s, std::uint8_t*) { return SLSeqMakeGrayCode(s.handle(), 7, 1, 23, 255, 4); },
       .sent = text("14MSG_SLSeqMakeGraycode") + integers(7, 1, 23, 255, 4),
       .statusWord = follows},
      {.name = "SeqMakePhase",
       .call = [](OpenSession& s, std::uint8_t*) { return SLSeqMakePhase(s.handle(), 7, 1, 255, 3, 4); },
       .sent = text("13MSG_SLSeqMakePhase") + integers(7, 1, 255, 3, 4),
       .statusWord = follows},
      {.name = "SeqMakeImage",
       .call = [](OpenSession& s, std::uint8_t*) { return SLSeqMakeImage(s.handle(), 7, 1, 255, 3, 4); },
       .sent = text("15MSG_SLSeqMakeImage") + integers(7, 1, 255, 3, 4),
       .statusWord = follows},
      {.name = "SeqMakeFromLine8",
       .call = [](OpenSession& s, std::uint8_t*) { return SLSeqMakeFromLine8(s.handle(), 7, 201, asPixels(line), 6); },
       .sent = text("16MSG_SLSeqMakeFromLine8") + integers(7, 201, 6) + line,
       .statusWord = follows},
      {.name = "SeqMakeFromLine8OfNoLength",
       .call = [](OpenSession& s, std::uint8_t*) { return SLSeqMakeFromLine8(s.handle(), 7, 201, nullptr, 0); },
       .sent = text("16MSG_SLSeqMakeFromLine8") + integers(7, 201, 0),
       .statusWord = follows},
      {.name = "SeqMakeFromCol8",
       .call = [](OpenSession& s, std::uint8_t*) { return SLSeqMakeFromCol8(s.handle(), 7, 201, asPixels(line), 6); },
       .sent = text("17MSG_SLSeqMakeFromCol8") + integers(7, 201, 6) + line,
       .statusWord = follows},
      {.name = "SeqMakeFromLine24",
       .call = [](OpenSession& s, std::uint8_t*) { return SLSeqMakeFromLine24(s.handle(), 7, 201, asPixels(line), 6); },
       .sent = text("18MSG_SLSeqMakeFromLine24") + integers(7, 201, 6) + line,
       .statusWord = follows},
      {.name = "SeqMakeFromCol24",
       .call = [](OpenSession& s, std::uint8_t*) { return SLSeqMakeFromCol24(s.handle(), 7, 201, asPixels(line), 6); },
       .sent = text("19MSG_SLSeqMakeFromCol24") + integers(7, 201, 6) + line,
       .statusWord = follows},
      {.name = "CalcGrayCode",
       .call = [](OpenSession& s, std::uint8_t* output) { return s.device().CalcGrayCode(output, 16, 4, 1, 2, 255, 4); },
       .sent = text("90MSG_SLCalcGrayCode") + integers(1, 2, 255, 4),
       .reply = codes,
       .written = codes,
       .statusWord = follows,
       .leftByBreak = asItArrives(codes)},
  };
}

}  // namespace fringix::test
