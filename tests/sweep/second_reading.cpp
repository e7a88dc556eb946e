#include "sweep/second_reading.h"

#include <cstdlib>

#include "fringix/fringix.h"

namespace fringix::test {

namespace {

using protocol::Facts;
using protocol::Field;
using protocol::Type;

constexpr std::int64_t largestBlock = 1 << 20;  // that the network in memory has room for
constexpr std::size_t serialRoom = 63;          // characters of the answer that ConversationCall has room for

bool isCommand(const EncodedExchange& exchange, const char* name) { return exchange.command->name == name; }

int measured(std::int32_t reply) { return reply == 0 ? SLALL_OKAY : reply == -2 ? SLMEASUREMENT_FAILED : SLSYSTEM_ERROR; }

}  // namespace

Facts headOfTheExamples() { return {{"camera.width", 8}, {"camera.height", 4}, {"projector.width", 6}, {"projector.height", 5}}; }

int SecondReading::withoutConnection(const EncodedExchange& exchange) {
  return isCommand(exchange, "200MSG_SLRS232Exec") ? SLVERSION_TOO_OLD : SLSYSTEM_ERROR;
}

Outcome SecondReading::call(const EncodedExchange& exchange) {
  Outcome outcome{SLALL_OKAY, false, false, exchange.numbers, exchange.others};
  if (isCommand(exchange, "81MSG_SLReadDataFromFile")) {
    outcome.numbers.try_emplace("size", 0);
    outcome.others.try_emplace("data");
  }
  outcome.result = connected_ ? read(exchange, outcome) : withoutConnection(exchange);
  return outcome;
}

void SecondReading::hear(const Bytes& more) {
  if (!deaf_) rest_ += more;
}

void SecondReading::stopRequests() {
  deaf_ = true;
  rest_.clear();
}

bool SecondReading::needsNot(const std::string& command) const {
  if (command == "20MSG_SLGetProtocolVersion") return version_ && *version_ >= 0;
  if (command == "21MSG_SLGetSerial") return serial_ && *serial_ >= 0;
  return known_.count(command) > 0;
}

int SecondReading::read(const EncodedExchange& exchange, Outcome& outcome) {
  if (const auto result = readBefore(exchange, outcome)) return *result;
  if (deaf_) {
    connected_ = false;
    return SLCONNECTION_ERROR;
  }
  int result = SLALL_OKAY;
  for (const Field& field : exchange.command->fields) {
    if (field.sender == protocol::Sender::client) continue;
    const auto decided = read(field, outcome, exchange.command->name);
    result = decided.value_or(SLALL_OKAY);
    if (decided) break;
  }
  if (result == SLALL_OKAY) outcome.isTold = true;
  if (connected_) remember(exchange, outcome);
  return result;
}

// The range of the gain unless both are below 0, and the depth of pixels unless it is, whatever status follows.
void SecondReading::remember(const EncodedExchange& exchange, const Outcome& outcome) {
  const auto isTold = [&](const char* field) { return outcome.numbers.at(field) >= 0; };
  const bool isRange = isCommand(exchange, "57MSG_SLGetGainMinMax") && (isTold("minimum") || isTold("maximum"));
  const bool isDepth = isCommand(exchange, "22MSG_SLGetPixelDepth") && isTold("depth");
  if (isRange || isDepth) known_[exchange.command->name] = outcome.numbers;
}

// What the library asks by itself, and what it knows already.
std::optional<int> SecondReading::readBefore(const EncodedExchange& exchange, Outcome& outcome) {
  if (exchange.command->since > 0 && !knows(version_)) {
    outcome.mayHide = true;
    return SLCONNECTION_ERROR;
  }
  if (exchange.command->since > 0 && exchange.command->since > *version_) return SLVERSION_TOO_OLD;
  if (isCommand(exchange, "51MSG_SLSetLEDPower")) {
    const auto least = takeInteger();
    const auto most = takeInteger();
    if (!most) return SLCONNECTION_ERROR;
    const std::int64_t power = exchange.numbers.at("power");
    if (power < *least || power > *most) return SLBAD_PARAMETER;
  }
  if (const auto known = known_.find(exchange.command->name); known != known_.end()) {
    outcome.numbers = known->second;
    outcome.isTold = true;
    return SLALL_OKAY;
  }
  const bool asksVersion = isCommand(exchange, "20MSG_SLGetProtocolVersion");
  if (!asksVersion && !isCommand(exchange, "21MSG_SLGetSerial")) return std::nullopt;
  if (!knows(serial_) || (asksVersion && !knows(version_))) return SLCONNECTION_ERROR;
  outcome.numbers[asksVersion ? "version" : "serial"] = asksVersion ? *version_ : *serial_;
  outcome.isTold = true;
  return SLALL_OKAY;
}

// A number below 0 is not remembered: it is asked for again.
bool SecondReading::knows(std::optional<std::int32_t>& fact) {
  if (!fact || *fact < 0) fact = takeInteger();
  return fact.has_value();
}

std::optional<int> SecondReading::read(const Field& field, Outcome& outcome, const std::string& command) {
  if (!isNumber(field.type)) return readBytes(field, outcome, command);
  const auto value = takeInteger();
  if (!value) return SLCONNECTION_ERROR;
  if (field.type == Type::outcome && command == "60MSG_SLStartMeasurement" && !knows(serial_)) return SLCONNECTION_ERROR;
  const bool isByte = command == "310MSG_EXEC_PROJCMD" && field.type == Type::integer;
  return readNumber(field, isByte ? *value & 0xFF : *value, outcome);
}

std::optional<int> SecondReading::readNumber(const Field& field, std::int32_t value, Outcome& outcome) {
  outcome.numbers[field.name] = value;
  switch (field.type) {
    case Type::status:
      outcome.isTold = true;
      return value == 0 ? std::nullopt : std::optional<int>(SLSYSTEM_ERROR);
    case Type::answer:
      return value == 0 ? std::nullopt : std::optional<int>(value);
    case Type::outcome:
      return measured(value);
    case Type::size:
      outcome.isTold = true;
      if (value == 0) return SLALL_OKAY;
      return value > 0 && value <= largestBlock ? std::nullopt : std::optional<int>(SLSYSTEM_ERROR);
    default:
      return std::nullopt;
  }
}

std::optional<int> SecondReading::readBytes(const Field& field, Outcome& outcome, const std::string& command) {
  outcome.isTold = false;
  Facts facts = headOfTheExamples();
  facts.insert(outcome.numbers.begin(), outcome.numbers.end());
  std::int64_t size = 0;
  if (field.type == Type::text) {
    const auto length = take(6);
    if (!length) return SLCONNECTION_ERROR;
    size = std::atoi(length->c_str());
  } else {
    size = protocol::evaluate(field.size, facts);
  }
  const auto bytes = size > 0 ? take(static_cast<std::size_t>(size)) : std::nullopt;
  if (!bytes) {
    connected_ = false;
    return SLCONNECTION_ERROR;
  }
  outcome.others[field.name] = field.type == Type::text ? bytes->substr(0, serialRoom) : *bytes;
  outcome.isTold = true;
  const bool isMissing = field.type == Type::picture && bytes->starts_with(Bytes("\0\xFF", 2));
  if (!isMissing) return std::nullopt;
  return command == "43MSG_SLGetImageIndex" ? SLBAD_PARAMETER : SLSYSTEM_ERROR;
}

std::optional<std::int32_t> SecondReading::takeInteger() {
  const auto bytes = take(4);
  return bytes ? std::optional(protocol::decodeInteger(*bytes)) : std::nullopt;
}

std::optional<Bytes> SecondReading::take(std::size_t size) {
  if (rest_.size() < size) {
    connected_ = false;
    return std::nullopt;
  }
  const Bytes taken = rest_.substr(0, size);
  rest_.erase(0, size);
  return taken;
}

}  // namespace fringix::test
