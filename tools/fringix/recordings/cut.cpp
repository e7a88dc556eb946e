#include "recordings/cut.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <vector>

#include "arguments/duration.h"
#include "arguments/number.h"
#include "recording/conversation_reader.h"
#include "recordings/changed_copy.h"
#include "recordings/told_end.h"

namespace fringix::tool {
namespace {

using protocol::Sender;
using recording::Kind;
using recording::Record;
using recording::RecordedCommand;

constexpr std::uint64_t forEver = std::numeric_limits<std::uint64_t>::max();

struct Range {
  std::uint64_t begin;
  std::uint64_t end;
};

// A command without what was said.
struct Outline {
  std::uint32_t connection;
  std::uint64_t begin;
  std::uint64_t end;
  std::array<Range, 2> said;
  bool isNeededAnyway;  // because what follows cannot be understood without, or because clients ask it wherever they need it
};

Outline outlineOf(const RecordedCommand& command) {
  Outline outline{command.connection, command.begin(), command.end(), {}, false};
  for (const Sender sender : {Sender::client, Sender::head}) {
    const recording::Said& said = command.by(sender);
    outline.said[static_cast<std::size_t>(sender)] = {said.offset, said.offset + said.bytes.size()};
  }
  outline.isNeededAnyway = command.command == &recording::greeting() || recording::hasConstantReply(command.name);
  return outline;
}

// In the order of their numbers. Of a damaged file those before the damage, of which the copying tells.
std::vector<Outline> outlinesOf(const std::string& file) {
  std::vector<Outline> outlines;
  try {
    recording::ConversationReader reader(file);
    while (const auto happening = reader.next()) {
      if (happening->command) outlines.push_back(outlineOf(*happening->command));
    }
  } catch (const recording::BadRecording&) {
    if (outlines.empty()) throw;
  }
  std::stable_sort(outlines.begin(), outlines.end(), [](const Outline& one, const Outline& other) { return one.begin < other.begin; });
  return outlines;
}

class Part {
 public:
  Part(const std::vector<Outline>& outlines, const CutPlace& from, const CutPlace& to) {
    for (std::size_t i = 0; i < outlines.size(); ++i) {
      const bool inside = i + 1 >= from.command.value_or(0) && i + 1 <= to.command.value_or(outlines.size()) &&
                          outlines[i].begin >= from.time.value_or(0) && outlines[i].begin <= to.time.value_or(forEver);
      if (inside) choose(outlines[i]);
    }
    const bool toTheEnd = !to.command && !to.time;
    if (toTheEnd) until_ = forEver;
    for (const Outline& outline : outlines) {
      if (kept_.contains(outline.connection) && outline.isNeededAnyway && outline.begin < since_) keep(outline);
      last_[outline.connection] = std::max(last_[outline.connection], outline.begin);
    }
    for (auto& [stream, ranges] : ranges_)
      std::sort(ranges.begin(), ranges.end(), [](const Range& one, const Range& other) { return one.begin < other.begin; });
  }

  bool empty() const { return kept_.empty(); }

  std::string bytes(Stream stream, std::uint64_t offset, const std::string& bytes) const {
    const auto ranges = ranges_.find(stream);
    std::string kept;
    if (ranges == ranges_.end()) return kept;
    const std::uint64_t end = offset + bytes.size();
    const auto isBefore = [](const Range& range, std::uint64_t place) { return range.end <= place; };
    auto range = std::lower_bound(ranges->second.begin(), ranges->second.end(), offset, isBefore);
    for (; range != ranges->second.end() && range->begin < end; ++range) {
      const std::uint64_t first = std::max(range->begin, offset);
      kept.append(bytes, static_cast<std::size_t>(first - offset), static_cast<std::size_t>(std::min(range->end, end) - first));
    }
    return kept;
  }

  // A connection that goes on behind the part does not end in it.
  bool keeps(const Record& record) const {
    const auto kept = kept_.find(record.connection);
    if (record.kind == Kind::opened) return kept != kept_.end();
    if (record.kind == Kind::closedByClient || record.kind == Kind::closedByHead)
      return kept != kept_.end() && kept->second == last_.at(record.connection);
    return record.kind == Kind::announcement || (record.time >= since_ && record.time <= until_);
  }

 private:
  void choose(const Outline& outline) {
    keep(outline);
    since_ = std::min(since_, outline.begin);
    until_ = std::max(until_, outline.end);
    std::uint64_t& last = kept_[outline.connection];
    last = std::max(last, outline.begin);
  }

  void keep(const Outline& outline) {
    for (const Sender sender : {Sender::client, Sender::head})
      ranges_[{outline.connection, sender}].push_back(outline.said[static_cast<std::size_t>(sender)]);
  }

  std::map<Stream, std::vector<Range>> ranges_;
  std::map<std::uint32_t, std::uint64_t> kept_;  // when the last command of a connection begins that is kept, and of all
  std::map<std::uint32_t, std::uint64_t> last_;
  std::uint64_t since_ = forEver;
  std::uint64_t until_ = 0;
};

}  // namespace

CutPlace toCutPlace(const std::string& text) {
  const bool isNumber = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
  if (isNumber) return {arguments::toNumber<std::uint64_t>(text, {1, 1e15}), {}};
  const std::chrono::nanoseconds time = arguments::toDuration(text);
  return {{}, static_cast<std::uint64_t>(time.count())};
}

void cutRecording(const std::string& file, const CutPlace& from, const CutPlace& to, const std::string& output) {
  std::vector<Outline> outlines;
  try {
    outlines = outlinesOf(file);
  } catch (const recording::BadRecording& error) {
    throw asFailure(error);
  }
  const Part part(outlines, from, to);
  if (part.empty())
    throw Failure({fmt::format("there is no command in this part of the recording, which has {}", outlines.size()),
                   "\"fringix recording show FILE\" shows their numbers and times.", "nothing"});
  copyChanged(file, output,
              {[](recording::Header&) {},
               [&](Stream stream, std::uint64_t offset, const std::string& bytes) { return part.bytes(stream, offset, bytes); },
               [&](Record record) { return part.keeps(record) ? std::optional<Record>(std::move(record)) : std::nullopt; }});
}

}  // namespace fringix::tool
