#include "diagnosis/examination.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "diagnosis/datagrams.h"
#include "protocol/encoding.h"

namespace fringix::tool::diagnosis {
namespace {

using Clock = BoundedConnection::Clock;
using Outcome = BoundedConnection::Outcome;
using protocol::Bytes;
using namespace std::chrono_literals;

constexpr std::int32_t clientVersion = 3300;
constexpr std::size_t mostRoundTrips = 100;
constexpr auto roundTripsLimit = 5s;
constexpr std::size_t fewestPictures = 2;  // the first one may take its time
constexpr std::size_t mostPictures = 5;
constexpr auto longestPicture = 60s;               // of all that comes
constexpr auto picturesLimit = 2s;                 // no further one is begun then
constexpr std::size_t largestPicture = 256 << 20;  // bytes; no head has a larger one
constexpr std::size_t partSize = 1 << 16;

// The conversation cannot go on.
struct Broken : std::runtime_error {
  using std::runtime_error::runtime_error;
};

double millisecondsSince(Clock::time_point begin) { return std::chrono::duration<double, std::milli>(Clock::now() - begin).count(); }

class Examination {
 public:
  explicit Examination(Head& head) : head_(head) {}

  void run() {
    if (!connect()) return;
    try {
      begin();
      countRoundTrips();
    } catch (const Broken& broken) {
      head_.brokenAt = step_;
      head_.reason = broken.what();
    }
    if (head_.brokenAt.empty()) fetchPictures();
    head_.traffic = connection_.traffic();
    const Bytes farewell = protocol::encodeText("ByeBye=");
    connection_.send(farewell.data(), farewell.size(), until());
  }

 private:
  bool connect() {
    const auto asked = Clock::now();
    Clock::time_point connected;
    head_.reach = greet(connection_, head_.address, head_.limit, &connected);
    if (head_.reach.reach != Reach::head) return false;
    head_.steps.push_back({"connecting", std::chrono::duration<double, std::milli>(connected - asked).count()});
    head_.steps.push_back({"greeting", millisecondsSince(connected)});
    return true;
  }

  void begin() {
    send(protocol::encodeInteger(clientVersion));
    const std::vector<std::int32_t> camera = timed("camera size", "40MSG_SLGetMaxImageSize", 3);
    timed("projector size", "45MSG_SLGetProjDimension", 3);
    head_.protocolVersion = timed("protocol version", "20MSG_SLGetProtocolVersion", 1).front();
    head_.serial = timed("serial number", "21MSG_SLGetSerial", 1).front();
    const auto size = static_cast<std::int64_t>(std::max(camera[0], 0)) * std::max(camera[1], 0);
    if (size <= static_cast<std::int64_t>(largestPicture)) head_.pictures.bytes = static_cast<std::size_t>(size);
  }

  void countRoundTrips() {
    step_ = "hundred small questions";
    for (const auto begun = Clock::now(); head_.roundTrips.size() < mostRoundTrips && Clock::now() < begun + roundTripsLimit;) {
      const auto asked = Clock::now();
      ask("21MSG_SLGetSerial", 1);
      head_.roundTrips.push_back(millisecondsSince(asked));
    }
  }

  void fetchPictures() {
    try {
      const auto begun = Clock::now();
      const auto mayGoOn = [&] { return head_.pictures.count < fewestPictures || Clock::now() < begun + picturesLimit; };
      while (head_.pictures.bytes > 2 && head_.pictures.count < mostPictures && mayGoOn() && fetchPicture()) {
      }
    } catch (const Broken& broken) {
      head_.pictures.broken = broken.what();
    }
  }

  // False: the head has none.
  bool fetchPicture() {
    Pictures& pictures = head_.pictures;
    const std::uint64_t gaps = gapsSoFar();
    const auto asked = Clock::now();
    send(protocol::encodeText("41MSG_SLGetLiveImage"));
    Bytes part(std::min(partSize, pictures.bytes), '\0');
    std::size_t done = receiveSome(part, part.size());
    const bool none = done >= 2 && part[0] == '\0' && part[1] == '\xFF';
    const std::size_t firstPart = done;
    const auto firstCame = Clock::now();
    while (done < pictures.bytes) {
      done += receiveSome(part, std::min(part.size(), pictures.bytes - done));
      if (Clock::now() > asked + longestPicture) throw Broken(fmt::format("{} of {} bytes came in a minute", done, pictures.bytes));
    }
    const double rest = millisecondsSince(firstCame);
    if (rest > 0 && done > firstPart) pictures.megabits.push_back(static_cast<double>(done - firstPart) * 8 / 1000 / rest);
    const double whole = millisecondsSince(asked);
    pictures.milliseconds = pictures.count == 0 ? whole : std::min(pictures.milliseconds, whole);
    ++pictures.count;
    if (gapsSoFar() > gaps) ++pictures.disturbed;
    pictures.none = none;
    return !none;
  }

  std::uint64_t gapsSoFar() const {
    const std::optional<Traffic> traffic = connection_.traffic();
    return traffic ? traffic->overtaken : 0;
  }

  std::vector<std::int32_t> timed(const char* name, const char* command, std::size_t integers) {
    step_ = name;
    const auto asked = Clock::now();
    std::vector<std::int32_t> answer = ask(command, integers);
    head_.steps.push_back({name, millisecondsSince(asked)});
    return answer;
  }

  std::vector<std::int32_t> ask(const char* command, std::size_t integers) {
    send(protocol::encodeText(command));
    Bytes bytes(4 * integers, '\0');
    for (std::size_t done = 0; done < bytes.size();) {
      Bytes part(bytes.size() - done, '\0');
      const std::size_t size = receiveSome(part, part.size());
      bytes.replace(done, size, part, 0, size);
      done += size;
    }
    std::vector<std::int32_t> numbers;
    for (std::size_t i = 0; i < integers; ++i) numbers.push_back(protocol::decodeInteger(bytes.substr(4 * i, 4)));
    return numbers;
  }

  Clock::time_point until() const { return Clock::now() + head_.limit; }

  void send(const Bytes& bytes) {
    if (connection_.send(bytes.data(), bytes.size(), until()) != Outcome::done) throw Broken(connection_.reason());
  }

  std::size_t receiveSome(Bytes& buffer, std::size_t most) {
    std::size_t size = most;
    const Outcome outcome = connection_.receive(buffer.data(), size, until());
    if (outcome == Outcome::timedOut)
      throw Broken(fmt::format("nothing comes within {:g} s", std::chrono::duration<double>(head_.limit).count()));
    if (outcome != Outcome::done) throw Broken(connection_.reason());
    if (size == 0) throw Broken("the head has ended the connection");
    return size;
  }

  Head& head_;
  BoundedConnection connection_;
  const char* step_ = "";
};

}  // namespace

Head examineHead(const std::string& address, std::chrono::milliseconds limit) {
  Head head;
  head.address = address;
  head.limit = limit;
  head.source = sourceTowards(parseIpv4(address));
  Examination(head).run();
  return head;
}

}  // namespace fringix::tool::diagnosis
