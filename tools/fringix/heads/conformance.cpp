#include "heads/conformance.h"

#include <fmt/format.h>

#include <optional>
#include <stdexcept>

#include "heads/bounded_connection.h"
#include "heads/probe.h"
#include "protocol/player.h"

namespace fringix::tool {
namespace {

using protocol::Bytes;
using protocol::CommandTable;
using protocol::Example;
using Outcome = BoundedConnection::Outcome;

constexpr std::int32_t clientVersion = 3300;
constexpr const char* serialCommand = "21MSG_SLGetSerial";
constexpr const char* farewell = "ByeBye=";

// The connection cannot go on.
struct Broken : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class Link : public protocol::Connection {
 public:
  explicit Link(const ConformanceTask& task) : limit_(task.limit) {
    if (connection_.connect(task.address, commandPort, until()) != Outcome::done) refuse("connecting failed");
  }

  void send(const Bytes& bytes) override {
    if (connection_.send(bytes.data(), bytes.size(), until()) != Outcome::done) refuse("the head takes nothing");
  }

  Bytes receive(std::size_t count) override {
    Bytes bytes(count, '\0');
    for (std::size_t done = 0; done < count;) {
      std::size_t size = count - done;
      if (connection_.receive(bytes.data() + done, size, until()) != Outcome::done) {
        refuse(fmt::format("{} of the {} bytes that are to come have come", done, count));
      }
      if (size == 0) throw Broken("the head has ended the connection");
      done += size;
    }
    return bytes;
  }

 private:
  BoundedConnection::Clock::time_point until() const { return BoundedConnection::Clock::now() + limit_; }
  [[noreturn]] void refuse(const std::string& what) const { throw Broken(what + ": " + connection_.reason()); }

  std::chrono::milliseconds limit_;
  BoundedConnection connection_;
};

const CommandTable& table() { return CommandTable::ofTheProtocol(); }

const Example& firstExample(const char* command) { return table().find(command).examples.front(); }

// A connection up to where commands begin, and what is known from then on.
class Partner {
 public:
  explicit Partner(const ConformanceTask& task) : link_(task) {
    link_.receive(4);
    link_.send(protocol::encodeInteger(clientVersion));
    // The last one asks for the serial number, too.
    for (const char* command : {"40MSG_SLGetMaxImageSize", "45MSG_SLGetProjDimension", "20MSG_SLGetProtocolVersion"}) {
      play(firstExample(command));
    }
    serial_ = facts_["serial"];
    version_ = facts_["version"];
  }

  protocol::Played play(const Example& example) { return protocol::play(table(), example, link_, facts_, false); }

  // A head that has said more or less than it should tells another number now, or nothing.
  void requireInStep() {
    play(firstExample(serialCommand));
    if (facts_["serial"] == serial_) return;
    throw Broken(fmt::format("the reply has too many bytes or too few: behind it, the serial number is {} and no longer {}",
                             facts_["serial"], serial_));
  }

  std::int64_t version() const { return version_; }

 private:
  Link link_;
  protocol::Facts facts_;
  std::int64_t serial_ = 0;
  std::int64_t version_ = 0;
};

class Conformance {
 public:
  explicit Conformance(const ConformanceTask& task) : task_(task) {}

  ConversationResult check(const protocol::Command& command, const Example& example) {
    ConversationResult result{command.name, example.title, Conformity::asExpected, {}};
    try {
      connect();
      if (const std::string reason = reasonToLeaveOut(command, example); !reason.empty()) {
        result.verdict = Conformity::leftOut;
        result.reasons.push_back(reason);
      } else {
        play(example, result);
      }
      if (command.name == farewell) partner_.reset();
    } catch (const Failure&) {
      throw;
    } catch (const std::runtime_error& error) {
      result.verdict = Conformity::broken;
      result.reasons.emplace_back(error.what());
      partner_.reset();
    }
    return result;
  }

 private:
  void connect() {
    try {
      if (!partner_) partner_.emplace(task_);
    } catch (const Broken& error) {
      throw Failure({fmt::format("the head at {} breaks the connection off before the first command: {}", task_.address, error.what()),
                     "docs/protocol.md says how a session begins.", "handshake"});
    }
  }

  std::string reasonToLeaveOut(const protocol::Command& command, const Example& example) const {
    if (command.since > partner_->version()) {
      return fmt::format("came with protocol version {}, the head has {}", command.since, partner_->version());
    }
    return example.changes.empty() || task_.destructive ? "" : fmt::format("changes {}", example.changes);
  }

  void play(const Example& example, ConversationResult& result) {
    const protocol::Played played = partner_->play(example);
    for (const auto& [command, field, offset, expected, found] : played.differences) {
      result.verdict = Conformity::differs;
      result.reasons.push_back(
          fmt::format("{}: {}, byte {} of the reply, should be {} and is {}", command, field, offset, expected, found));
    }
    if (!played.inStep)
      partner_.reset();
    else if (example.exchanges.back().command != farewell)
      partner_->requireInStep();
  }

  const ConformanceTask& task_;
  std::optional<Partner> partner_;
};

}  // namespace

std::vector<ConversationResult> playConversations(const ConformanceTask& task, const std::function<void(const ConversationResult&)>& tell) {
  const Finding finding = probe(task.address, task.limit);
  if (finding.reach != Reach::head) throw Failure(explain(finding, task.address, task.limit));
  Conformance conformance(task);
  std::vector<ConversationResult> results;
  for (const protocol::Command& command : table().commands()) {
    for (const Example& example : command.examples) {
      results.push_back(conformance.check(command, example));
      tell(results.back());
    }
  }
  return results;
}

}  // namespace fringix::tool
