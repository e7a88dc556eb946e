#include "recordings/anonymise.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <string_view>
#include <vector>

#include "recording/conversation_reader.h"
#include "recordings/changed_copy.h"
#include "recordings/told_end.h"

namespace fringix::tool {
namespace {

using protocol::Sender;
using protocol::Type;
using recording::FieldValue;
using recording::Kind;
using recording::Record;
using recording::RecordedCommand;

constexpr std::size_t fewestDigits = 4;  // of a serial number that is searched for in texts: shorter ones stand there by chance
constexpr std::size_t fewestToScramble = 3;

// Other serial numbers with as many digits, so that what they stand in keeps its length.
class Serials {
 public:
  void add(std::int64_t serial) {
    if (serial > 0) others_.try_emplace(std::to_string(serial));
  }

  void choose() {
    std::map<std::size_t, std::int64_t> next;
    for (auto& [serial, other] : others_) {
      std::int64_t& number = next[serial.size()];
      if (number == 0) number = firstOf(serial.size());
      while (others_.contains(std::to_string(number))) ++number;  // not another head's own
      other = std::to_string(number++);
    }
  }

  std::int64_t instead(std::int64_t serial) const {
    const auto other = others_.find(std::to_string(serial));
    return other == others_.end() ? serial : std::stoll(other->second);
  }

  std::string instead(std::string text) const {
    const auto isDigit = [&](std::size_t at) { return at < text.size() && std::isdigit(static_cast<unsigned char>(text[at])) != 0; };
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (!isDigit(i)) continue;
      std::size_t end = i;
      while (isDigit(end)) ++end;
      const auto other = others_.find(text.substr(i, end - i));
      if (end - i >= fewestDigits && other != others_.end()) text.replace(i, end - i, other->second);
      i = end;
    }
    return text;
  }

 private:
  static std::int64_t firstOf(std::size_t digits) {
    std::int64_t number = 1;
    while (--digits > 0) number *= 10;
    return number;
  }

  std::map<std::string, std::string> others_;
};

// Addresses of the ranges that are set aside for examples.
class Addresses {
 public:
  std::uint32_t instead(std::uint32_t address) {
    constexpr std::uint32_t examples = 0xC0000200;  // 192.0.2.0
    constexpr std::uint32_t more = 0x0A000000;      // 10.0.0.0
    const auto count = static_cast<std::uint32_t>(others_.size()) + 1;
    return others_.try_emplace(address, (count < 255 ? examples : more) + count).first->second;
  }

 private:
  std::map<std::uint32_t, std::uint32_t> others_;
};

// Bytes of a stream that become others: these, or such as come of a seed.
struct Edit {
  std::uint64_t begin;
  std::uint64_t size;
  std::string bytes;
  std::uint64_t seed;
};

std::uint64_t hashOf(std::string_view bytes) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const char c : bytes) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  return hash;
}

// Never one that begins as what is no picture does.
char scrambled(std::uint64_t seed, std::uint64_t at) {
  std::uint64_t value = seed + (at / 8 + 1) * 0x9E3779B97F4A7C15U;
  value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9U;
  value = (value ^ value >> 27) * 0x94D049BB133111EBU;
  return static_cast<char>((value ^ value >> 31) >> 8 * (at % 8) | (at == 0 ? 1U : 0U));
}

bool isPicture(const FieldValue& value) {
  return value.field->type == Type::picture || (value.field->type == Type::bytes && value.field->name != "data");
}

class Anonymiser {
 public:
  Anonymiser(std::string file, const Anonymity& anonymity) : file_(std::move(file)), anonymity_(anonymity) {}

  void write(const std::string& output) {
    forEachCommand([this](const RecordedCommand& command) { collectSerial(command); });
    serials_.choose();
    forEachCommand([this](const RecordedCommand& command) { collectEdits(command); });
    copyChanged(file_, output,
                {[this](recording::Header& header) { change(header); },
                 [this](Stream stream, std::uint64_t offset, std::string bytes) { return change(stream, offset, std::move(bytes)); },
                 [this](Record record) { return change(std::move(record)); }});
  }

 private:
  template <typename Call>
  void forEachCommand(Call call) {
    recording::ConversationReader reader(file_);
    while (const auto happening = reader.next()) {
      if (happening->command)
        call(*happening->command);
      else if (happening->record.kind == Kind::announcement)
        collectSerial(happening->record.payload);
    }
  }

  void collectSerial(const RecordedCommand& command) {
    for (const FieldValue& value : command.fields) {
      if (command.name == "21MSG_SLGetSerial") serials_.add(value.number);
    }
  }

  void collectSerial(const std::string& announcement) {
    const std::size_t at = announcement.find(' ');
    if (at != std::string::npos) serials_.add(std::strtoll(announcement.c_str() + at, nullptr, 10));
  }

  void collectEdits(const RecordedCommand& command) {
    std::size_t known[2] = {0, 0};
    if (command.command != nullptr && command.command != &recording::greeting()) known[0] = protocol::encodeText(command.name).size();
    for (const FieldValue& value : command.fields) {
      collectEdit(command, value);
      known[static_cast<std::size_t>(value.field->sender)] = value.begin + value.size;
    }
    if (!anonymity_.data && !anonymity_.pictures) return;
    for (const Sender sender : {Sender::client, Sender::head}) {  // a block that did not come whole, or what nobody understands
      const std::string& bytes = command.by(sender).bytes;
      const std::size_t begin = known[static_cast<std::size_t>(sender)];
      if (begin < bytes.size()) scramble(command, sender, begin, std::string_view(bytes).substr(begin));
    }
  }

  void collectEdit(const RecordedCommand& command, const FieldValue& value) {
    const std::string_view bytes = command.bytesOf(value);
    const bool isNone = bytes.substr(0, 2) == std::string_view("\0\xFF", 2);
    if (command.name == "21MSG_SLGetSerial") {
      add(command, value, protocol::encodeInteger(serials_.instead(value.number)));
    } else if (protocol::isNumber(value.field->type)) {
      return;
    } else if (isPicture(value)) {
      if (anonymity_.pictures && !isNone) scramble(command, value.field->sender, value.begin, bytes);
    } else if (value.field->type == Type::bytes && anonymity_.data) {
      scramble(command, value.field->sender, value.begin, bytes);
    } else {
      const std::string other = serials_.instead(std::string(bytes));
      if (other != bytes) add(command, value, other);
    }
  }

  void add(const RecordedCommand& command, const FieldValue& value, std::string bytes) {
    const std::uint64_t begin = command.by(value.field->sender).offset + value.begin;
    const std::uint64_t size = bytes.size();
    edits_[{command.connection, value.field->sender}].push_back({begin, size, std::move(bytes), 0});
  }

  // Equal bytes become equal ones.
  void scramble(const RecordedCommand& command, Sender sender, std::size_t at, std::string_view bytes) {
    if (bytes.size() < fewestToScramble) return;
    edits_[{command.connection, sender}].push_back({command.by(sender).offset + at, bytes.size(), {}, hashOf(bytes)});
  }

  void change(recording::Header& header) {
    header.head = addresses_.instead(header.head);
    header.listening = addresses_.instead(header.listening);
  }

  std::string change(Stream stream, std::uint64_t offset, std::string bytes) const {
    const auto edits = edits_.find(stream);
    if (edits == edits_.end()) return bytes;
    const auto isBefore = [](const Edit& edit, std::uint64_t place) { return edit.begin + edit.size <= place; };
    auto edit = std::lower_bound(edits->second.begin(), edits->second.end(), offset, isBefore);
    for (; edit != edits->second.end() && edit->begin < offset + bytes.size(); ++edit) {
      const std::uint64_t end = std::min(edit->begin + edit->size, offset + bytes.size());
      for (std::uint64_t at = std::max(edit->begin, offset); at < end; ++at) {
        const std::uint64_t inside = at - edit->begin;
        bytes[at - offset] = edit->bytes.empty() ? scrambled(edit->seed, inside) : edit->bytes[inside];
      }
    }
    return bytes;
  }

  std::optional<Record> change(Record record) {
    if (record.kind == Kind::announcement) record.payload = serials_.instead(record.payload);
    const bool hasEndpoint = record.kind == Kind::opened || record.kind == Kind::search || record.kind == Kind::trigger;
    if (!hasEndpoint) return record;
    recording::Endpoint endpoint = recording::decodeEndpoint(record.payload);
    endpoint.address = addresses_.instead(endpoint.address);
    const auto bytes = recording::encode(endpoint);
    std::copy(bytes.begin(), bytes.end(), record.payload.begin());
    return record;
  }

  const std::string file_;
  const Anonymity anonymity_;
  Serials serials_;
  Addresses addresses_;
  std::map<Stream, std::vector<Edit>> edits_;
};

}  // namespace

void anonymiseRecording(const std::string& file, const Anonymity& anonymity, const std::string& output) {
  try {
    Anonymiser(file, anonymity).write(output);
  } catch (const recording::BadRecording& error) {
    throw asFailure(error);
  }
}

}  // namespace fringix::tool
