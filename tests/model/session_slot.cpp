#include "model/session_slot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "fringix/fringix.h"

namespace fringix::test {

namespace {

using fuzz::network;

constexpr std::size_t statusAt = 12;  // in the greeting
constexpr int greetingSize = 28;

Bytes wholeGreeting() { return integers(1, 8, 4, 0, 6, 5, 0); }

// Examples that end with a refusal need the head to refuse: what is sent otherwise the call does not have.
bool endsRefused(const EncodedConversation& conversation) {
  return std::any_of(conversation.exchanges.begin(), conversation.exchanges.end(), [](const EncodedExchange& exchange) {
    return exchange.fields.size() < exchange.command->fields.size() && exchange.fields.back().field->type == protocol::Type::answer;
  });
}

const std::vector<EncodedConversation>& conversationsToPlay() {
  static const std::vector<EncodedConversation> all = [] {
    std::vector<EncodedConversation> encoded;
    for (const protocol::Command& command : protocol::CommandTable::ofTheProtocol().commands()) {
      if (findCall(command.name) == nullptr) continue;
      for (const protocol::Example& example : command.examples) {
        EncodedConversation conversation = encode(example, headOfTheExamples());
        if (!endsRefused(conversation)) encoded.push_back(std::move(conversation));
      }
    }
    return encoded;
  }();
  return all;
}

// These are no exports: they are called on a session that has been found.
bool needsItsSession(const EncodedExchange& exchange) {
  static constexpr std::array names{"100MSG_SLNOOP",        "21MSG_SLGetSerial",  "22MSG_SLGetPixelDepth",     "70MSG_SLEnableCamLogging",
                                    "90MSG_SLCalcGrayCode", "01MSG_SLShowImage8", "58MSG_SLSetOutputSettings", "59MSG_SLExecOutput"};
  return std::find(names.begin(), names.end(), exchange.command->name) != names.end();
}

struct WrongCall {
  const char* name;
  int (*run)(std::int32_t handle);
  int connected;
  int failed;
};

constexpr int bad = SLBAD_PARAMETER;
constexpr std::uint8_t pixelsToSend[90] = {};

const std::vector<WrongCall>& wrongCalls() {
  using H = std::int32_t;
  using U8 = std::uint8_t;
  static U8 room[64];
  static const std::vector<WrongCall> all{
      {"SLGetDevKey", [](H h) { return SLGetDevKey(h, nullptr); }, bad, bad},
      {"SLSeqAlloc", [](H h) { return SLSeqAlloc(h, 1, nullptr); }, bad, SLSYSTEM_ERROR},
      {"SLSeqPut", [](H h) { return SLSeqPut(h, 7, pixelsToSend, 6, 5, 19, 0); }, bad, SLSYSTEM_ERROR},
      {"SLSeqMakeGrayCode", [](H h) { return SLSeqMakeGrayCode(h, 7, 1, 24, 0, 0); }, bad, SLSYSTEM_ERROR},
      {"SLShowImage", [](H h) { return SLShowImage(h, nullptr, 6, 5, 18); }, bad, SLSYSTEM_ERROR},
      {"SLGetLiveImageROI", [](H h) { return SLGetLiveImageROI(h, room, 6, 0, 3, 1); }, bad, SLSYSTEM_ERROR},
      {"SLGetLiveImageROI of nothing", [](H h) { return SLGetLiveImageROI(h, room, 8, 0, 0, 4); }, SLALL_OKAY, SLSYSTEM_ERROR},
      {"SLGetImageIndexROI", [](H h) { return SLGetImageIndexROI(h, 0, room, 0, 0xFFFFFFFF, 1, 2); }, bad, SLSYSTEM_ERROR},
      {"SLCheckSystem", [](H h) { return SLCheckSystem(h, nullptr); }, bad, bad},
      {"SLGetTemperature", [](H h) { return SLGetTemperature(h, nullptr); }, bad, bad},
      {"SLGetLEDPower", [](H h) { return SLGetLEDPower(h, nullptr); }, SLALL_OKAY, SLALL_OKAY},
      {"SLSaveData", [](H h) { return SLSaveData(h, nullptr, 4, "a"); }, SLSYSTEM_ERROR, SLSYSTEM_ERROR},
      {"SLLoadData", [](H h) { return SLLoadData(h, nullptr, nullptr, "a"); }, bad, bad},
      {"SLReadIniInt", [](H h) { return SLReadIniInt(h, nullptr, nullptr, "k"); }, bad, SLSYSTEM_ERROR},
      {"SLWriteIniInt", [](H h) { return SLWriteIniInt(h, 1, "s", nullptr); }, bad, SLSYSTEM_ERROR},
  };
  return all;
}

void countEvent(std::int32_t event, void* context, std::int64_t serial) {
  *static_cast<std::int64_t*>(context) += event == SLEVENT_MEASUREMENT ? 1 + serial : 0;
}

// Handles are never given twice.
void expectRising(std::int32_t handle) {
  static std::int32_t last = -1;
  EXPECT_GT(handle, last);
  last = handle;
}

// Four bytes, counted from the end, are another small number.
Bytes withAnotherNumber(Bytes answers, std::size_t place) {
  constexpr int others[] = {-2 /* a failed measurement */, 1, -1, 7};
  const std::size_t count = answers.size() / 4;
  if (count == 0) return answers;
  return answers.replace(answers.size() - 4 * (1 + place / 4 % count), 4, integer(others[place % 4]));
}

// What needs no session.
void expectTrace(std::int32_t flag) {
  EXPECT_EQ(SLSetDebugFlag(flag), SLALL_OKAY);
  const std::size_t before = network().traceLines;
  EXPECT_EQ(SLGetCameraSize(-1, nullptr, nullptr), SLUNKNOWN_DEVICE_ID);
  EXPECT_EQ(network().traceLines > before, flag != 0);
  EXPECT_EQ(QORFringixVersion(), 4002);
  EXPECT_STREQ(SLErrorcodeToChar(SLCONNECTION_ERROR), "SLCONNECTION_ERROR");
  EXPECT_EQ(SLFreeData(nullptr), SLALL_OKAY);
}

}  // namespace

// Of 24 steps 12 are without damage. Another status breaks nothing, so that there is more to come: 5 of them.
Damage damageOf(const Step& step) {
  constexpr int last = static_cast<int>(Damage::status);
  return step.damage < last ? static_cast<Damage>(step.damage) : step.damage < last + 5 ? Damage::status : Damage::none;
}

void SessionSlot::expectResult(int result, int expected, const char* what) {
  EXPECT_EQ(result, expected) << what;
  ++given_[result];
}

// Where damage strikes the greeting it ends too early, or its status is bad; sizes stay, because buffers are made for them.
int SessionSlot::expectedOpening(const Step& step) const {
  const int heard = step.place % greetingSize;
  switch (damageOf(step)) {
    case Damage::close:
    case Damage::reset:
      return SLCONNECTION_ERROR;
    case Damage::silence:
      return heard == 0 ? SLHANDSHAKE_TIMEOUT : SLCONNECTION_ERROR;
    case Damage::flip:
      return SLSYSTEM_ERROR;
    case Damage::deaf:
    case Damage::more:  // at the address is nobody
      return SLCONNECTION_ERROR;
    default:
      return SLALL_OKAY;
  }
}

Bytes SessionSlot::damaged(Bytes answers, const Step& step) {
  const auto place = static_cast<std::size_t>(step.place);
  switch (damageOf(step)) {
    case Damage::close:
    case Damage::reset:
    case Damage::silence:
      headHasEnded_ = true;
      connection().end = damageOf(step) == Damage::close   ? fuzz::End::closed
                         : damageOf(step) == Damage::reset ? fuzz::End::reset
                                                           : fuzz::End::silence;
      return answers.substr(0, place % (answers.size() + 1));
    case Damage::flip:
      if (!answers.empty()) answers[place % answers.size()] = static_cast<char>(answers[place % answers.size()] ^ (1 + step.which % 255));
      return answers;
    case Damage::status:
      return withAnotherNumber(std::move(answers), place);
    case Damage::more:
      return answers + Bytes(1 + place % 16, '\x40');
    case Damage::pieces:
      connection().atOnce = 1 + place % 9;
      return answers;
    default:
      return answers;
  }
}

int SessionSlot::allocate(const Step& step) {
  if (step.which % 2 == 0) return SLDevAlloc(address().c_str(), &handle_);
  network().datagrams = {{fuzz::firstOther + static_cast<std::uint32_t>(place_), "SERIAL " + std::to_string(serial()) + " MODEL 1"}};
  return SLDevAllocBySerial(serial(), &handle_);
}

void SessionSlot::open(const Step& step) {
  if (isOpen()) return;
  connection() = {};
  connection().end = fuzz::End::silence;
  Bytes greeting = wholeGreeting();
  const Damage damage = damageOf(step);
  if (damage == Damage::flip) greeting[statusAt] = 7;
  if (damage == Damage::deaf) connection().room = 0;
  if (damage == Damage::more) connection().refused = true;
  headHasEnded_ = false;
  if (damage == Damage::close || damage == Damage::reset || damage == Damage::silence) {
    greeting = damaged(greeting, {0, 0, 0, step.damage, step.place % greetingSize});
    greeting.resize(static_cast<std::size_t>(step.place % greetingSize));
  }
  connection().arriving = greeting;
  const std::int32_t before = handle_;
  const int expected = expectedOpening(step);
  expectResult(allocate(step), expected, "opening");
  EXPECT_EQ(handle_ >= 0, expected == SLALL_OKAY);
  if (expected != SLALL_OKAY) {
    handle_ = before;
    return;
  }
  expectRising(handle_);
  reading_ = std::make_unique<SecondReading>(Bytes());
  handlerIsThere_ = false;
}

void SessionSlot::say(const Bytes& answers) {
  if (!isOpen() || headHasEnded_) return;
  connection().arriving += answers;
  reading_->hear(answers);
}

// The head answers all of an example at once, but for what it will not be asked.
void SessionSlot::call(const Step& step) {
  const EncodedConversation& conversation = conversationsToPlay()[static_cast<std::size_t>(step.which) % conversationsToPlay().size()];
  if (isOpen() && damageOf(step) == Damage::deaf) {
    connection().room = 0;
    reading_->stopRequests();
  }
  Bytes answers;
  for (const EncodedExchange& exchange : conversation.exchanges) {
    if (isOpen() && reading_->needsNot(exchange.command->name)) continue;
    for (const EncodedField& field : exchange.fields) answers += field.field->sender == protocol::Sender::head ? field.bytes : Bytes();
  }
  if (isOpen() && !headHasEnded_) say(damaged(answers, step));
  for (const EncodedExchange& exchange : conversation.exchanges) {
    if (exchange.called) expectCall(exchange);
  }
}

void SessionSlot::expectCall(const EncodedExchange& exchange) {
  if (!isOpen() && needsItsSession(exchange)) return;
  SCOPED_TRACE(exchange.command->name);
  const bool wasConnected = connected();
  const Outcome expected =
      isOpen() ? reading_->call(exchange) : Outcome{SLUNKNOWN_DEVICE_ID, false, false, exchange.numbers, exchange.others};
  Call call(handle_, expected.numbers, expected.others);
  const int result = findCall(exchange.command->name)->run(call);
  const bool hides = expected.mayHide && result == SLVERSION_TOO_OLD;
  expectResult(result, hides ? SLVERSION_TOO_OLD : expected.result, "the call");
  if (expected.isTold) call.expectOutputs();
  expectEvent(exchange, wasConnected);
}

// Each measurement that the head has answered, however, is told.
void SessionSlot::expectEvent(const EncodedExchange& exchange, bool wasConnected) {
  if (wasConnected && connected() && handlerIsThere_ && exchange.command->name == "60MSG_SLStartMeasurement")
    expected_ += 1 + *reading_->serial();
  EXPECT_EQ(events_, expected_) << "events";
}

void SessionSlot::callAlone(const Step& step) {
  const int known = isOpen() ? SLALL_OKAY : SLUNKNOWN_DEVICE_ID;
  std::uint32_t width = 1, height = 1;
  switch (step.which % 6) {
    case 0:
      EXPECT_EQ(SLGetCameraSize(handle_, &width, &height), known);
      EXPECT_EQ(width, !isOpen() ? 1U : connected() ? 8U : 0xFFFFFFFFU);
      return;
    case 1:
      EXPECT_EQ(SLGetProjectorSize(handle_, &width, &height), known);
      EXPECT_EQ(height, !isOpen() ? 1U : connected() ? 5U : 0xFFFFFFFFU);
      return;
    case 2:
      EXPECT_EQ(SLRegisterEventhandler(handle_, countEvent, &events_), known);
      handlerIsThere_ = isOpen();
      return;
    case 3:
      EXPECT_EQ(SLUnregisterEventhandler(handle_, countEvent, &events_), known);
      handlerIsThere_ = false;
      return;
    case 4:
      return expectTrace(step.place % 2);
    default:
      EXPECT_EQ(SLRegisterGPIOCallback(handle_, nullptr), known);
      EXPECT_EQ(SLRegisterGPIOHandle(handle_, nullptr, 1), known);
  }
}

void SessionSlot::callWrongly(const Step& step) {
  const WrongCall& call = wrongCalls()[static_cast<std::size_t>(step.which) % wrongCalls().size()];
  const int expected = !isOpen() ? SLUNKNOWN_DEVICE_ID : connected() ? call.connected : call.failed;
  expectResult(call.run(handle_), expected, call.name);
}

void SessionSlot::free() {
  const bool saysGoodbye = !connected() || reading_->takesRequests();
  expectResult(SLDevFree(handle_), !isOpen() ? SLUNKNOWN_DEVICE_ID : saysGoodbye ? SLALL_OKAY : SLCONNECTION_ERROR, "freeing");
  reading_.reset();
  handlerIsThere_ = false;
}

}  // namespace fringix::test
