#include "recordings/listing.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "console/json.h"
#include "recording/conversation_reader.h"
#include "recordings/told_end.h"
#include "times/wall_time.h"

namespace fringix::tool {
namespace {

using protocol::Sender;
using protocol::Type;
using recording::FieldValue;
using recording::Kind;
using recording::Record;
using recording::RecordedCommand;

constexpr double nanosecondsASecond = 1e9;
constexpr std::size_t longestShown = 60;

// One line; of the two forms only the one that is asked for.
struct Line {
  std::uint64_t time = 0;
  bool isCommand = false;
  std::string text;
  std::vector<Json::Member> members;
};

std::string printable(std::string_view text) {
  std::string shown;
  for (const char c : text.substr(0, longestShown)) shown += c >= ' ' && c < '\x7F' && c != '"' ? c : '?';
  return "\"" + shown + (text.size() > longestShown ? "\"..." : "\"");
}

std::string_view textOf(const RecordedCommand& command, const FieldValue& value) {
  const std::string_view bytes = command.bytesOf(value);
  return value.field->type == Type::text ? bytes.substr(6) : bytes.substr(0, bytes.find('\0'));
}

bool isText(Type type) { return type == Type::text || type == Type::name; }

std::string inWords(const RecordedCommand& command, const FieldValue& value) {
  const std::string& name = value.field->name;
  if (protocol::isNumber(value.field->type)) return fmt::format("{}={}", name, value.number);
  if (isText(value.field->type)) return fmt::format("{}={}", name, printable(textOf(command, value)));
  return fmt::format("{}[{}]", name, value.size);
}

std::string fieldsInWords(const RecordedCommand& command, Sender sender) {
  std::string text;
  for (const FieldValue& value : command.fields) {
    if (value.field->sender == sender) text += " " + inWords(command, value);
  }
  return text;
}

Json fieldsInJson(const RecordedCommand& command, Sender sender) {
  std::vector<Json::Member> members;
  for (const FieldValue& value : command.fields) {
    if (value.field->sender != sender) continue;
    const Json json = protocol::isNumber(value.field->type) ? Json(value.number)
                      : isText(value.field->type)           ? Json(textOf(command, value))
                                                            : Json::object({{"bytes", value.size}});
    members.emplace_back(value.field->name, json);
  }
  return Json::object(std::move(members));
}

std::optional<std::int64_t> statusOf(const RecordedCommand& command) {
  std::optional<std::int64_t> status;
  for (const FieldValue& value : command.fields) {
    if (const Type type = value.field->type; type == Type::status || type == Type::answer || type == Type::outcome) status = value.number;
  }
  return status;
}

std::string shownName(const RecordedCommand& command) { return command.name.empty() ? "(no command)" : command.name; }

double inMilliseconds(const RecordedCommand& command) { return static_cast<double>(command.end() - command.begin()) / 1e6; }

std::string remarks(const RecordedCommand& command) {
  std::string text;
  if (!command.complete) text += ", not complete";
  if (command.surplus > 0) text += fmt::format(", the last {} of them too many", command.surplus);
  return text;
}

std::string asText(const RecordedCommand& command) {
  const std::string reply = fieldsInWords(command, Sender::head);
  return fmt::format("{:>3}  {}{}{}{}  {:.3f} ms, {} bytes sent, {} received{}", command.connection, shownName(command),
                     fieldsInWords(command, Sender::client), reply.empty() ? "" : " ->", reply, inMilliseconds(command),
                     command.by(Sender::client).bytes.size(), command.by(Sender::head).bytes.size(), remarks(command));
}

std::vector<Json::Member> asMembers(const RecordedCommand& command) {
  const auto status = statusOf(command);
  return {{"seconds", static_cast<double>(command.begin()) / nanosecondsASecond},
          {"connection", command.connection},
          {"name", command.name},
          {"arguments", fieldsInJson(command, Sender::client)},
          {"reply", fieldsInJson(command, Sender::head)},
          {"status", status ? Json(*status) : Json(nullptr)},
          {"milliseconds", inMilliseconds(command)},
          {"sent", command.by(Sender::client).bytes.size()},
          {"received", command.by(Sender::head).bytes.size()},
          {"complete", command.complete},
          {"surplus", command.surplus}};
}

std::string endingOf(const Record& record) {
  const char* const who = record.kind == Kind::closedByClient ? "client" : "head";
  if (record.payload.empty() || record.payload[0] == 0) return fmt::format("ended by the {}", who);
  return record.payload[0] == 1 ? fmt::format("reset by the {}", who) : "not made: the head could not be connected to";
}

std::string_view behindEndpoint(const Record& record) {
  return std::string_view(record.payload).substr(std::min(record.payload.size(), recording::endpointSize));
}

std::string endpointOf(const Record& record) { return recording::inWords(recording::decodeEndpoint(record.payload)); }

std::string describe(const Record& record) {
  switch (record.kind) {
    case Kind::opened:
      return fmt::format("connection {} from {}", record.connection, endpointOf(record));
    case Kind::closedByClient:
    case Kind::closedByHead:
      return fmt::format("connection {} {}", record.connection, endingOf(record));
    case Kind::announcement:
      return record.payload.empty() ? "the head answers no searches" : fmt::format("the head's answer to searches: \"{}\"", record.payload);
    case Kind::search:
      return fmt::format("search from {}, answered", endpointOf(record));
    case Kind::trigger:
      return behindEndpoint(record).empty() ? "trigger, told of by another program" : "trigger " + printable(behindEndpoint(record));
    default:
      return "end";
  }
}

class Listing {
 public:
  Listing(const std::string& file, bool json) : reader_(file), json_(json) {}

  void show() {
    std::optional<recording::BadRecording> damage;
    try {
      while (const auto happening = reader_.next()) take(*happening);
    } catch (const recording::BadRecording& error) {
      damage = error;
    }
    print();
    if (damage) throw asFailure(*damage);
    tellEnd(reader_.file());
  }

 private:
  void take(const recording::Happening& happening) {
    const bool isCommand = happening.command.has_value();
    Line& line = lines_.emplace_back(Line{isCommand ? happening.command->begin() : happening.record.time, isCommand, {}, {}});
    if (isCommand && json_)
      line.members = asMembers(*happening.command);
    else if (isCommand)
      line.text = asText(*happening.command);
    else
      take(happening.record, line);
  }

  void take(const Record& record, Line& line) const {
    line.text = describe(record);
    line.members = {{"seconds", static_cast<double>(record.time) / nanosecondsASecond}, {"event", line.text}};
  }

  void print() {
    printHeader();
    std::stable_sort(lines_.begin(), lines_.end(), [](const Line& one, const Line& other) { return one.time < other.time; });
    std::size_t number = 0;
    for (Line& line : lines_) {
      if (line.isCommand) ++number;
      if (json_)
        printJson(line, number);
      else
        fmt::print("{:>5} {:>12.6f} {}{}\n", line.isCommand ? std::to_string(number) : "",
                   static_cast<double>(line.time) / nanosecondsASecond, line.isCommand ? "" : "     ", line.text);
    }
  }

  static void printJson(Line& line, std::size_t number) {
    if (line.isCommand) line.members.emplace(line.members.begin(), "command", number);
    fmt::print("{}\n", Json::object(std::move(line.members)).line());
  }

  void printHeader() const {
    const recording::Header& header = reader_.file().header();
    const auto seconds = static_cast<std::time_t>(header.startedAt / 1'000'000);
    const std::string known = universalText(seconds, "%Y-%m-%d %H:%M:%S UTC");
    const std::string date = known.empty() ? "at an unknown time" : known;
    const std::string head = recording::addressInWords(header.head);
    const std::string listening = recording::addressInWords(header.listening);
    if (json_)
      fmt::print("{}\n", Json::object({{"recorded", date}, {"head", head}, {"listening", listening}}).line());
    else
      fmt::print("recorded {}: the head at {}, for clients at {}\n", date, head, listening);
  }

  recording::ConversationReader reader_;
  const bool json_;
  std::vector<Line> lines_;
};

}  // namespace

void showRecording(const std::string& file, bool json) {
  try {
    Listing(file, json).show();
  } catch (const recording::BadRecording& error) {
    throw asFailure(error);
  }
}

}  // namespace fringix::tool
