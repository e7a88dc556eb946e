#include "head/replay/survey.h"

#include <algorithm>
#include <utility>

namespace fringix::head {

namespace {

using protocol::Sender;
using recording::Kind;
using recording::Record;
using recording::RecordedCommand;

// Where a command stands among all.
struct Place {
  std::uint64_t time;
  std::uint32_t connection;
};

class Surveyor {
 public:
  explicit Surveyor(const std::string& file) : reader_(file) {}

  Survey survey() {
    while (const auto happening = reader_.next()) {
      if (happening->command)
        take(*happening->command);
      else
        take(happening->record);
    }
    number();
    for (auto& [number, connection] : connections_) {
      if (connection.clientSpoke || connection.endedByHead) survey_.connections.push_back(std::move(connection));
    }
    survey_.commandCount = places_.size();
    survey_.leftOver = reader_.file().leftOver();
    return std::move(survey_);
  }

 private:
  RecordedConnection& connection(std::uint32_t number) {
    RecordedConnection& connection = connections_[number];
    connection.number = number;
    return connection;
  }

  void take(const RecordedCommand& command) {
    RecordedConnection& connection = this->connection(command.connection);
    places_.push_back({command.begin(), command.connection});
    if (!command.by(Sender::client).bytes.empty()) connection.clientSpoke = true;
    if (command.command == &recording::greeting()) connection.greeting = command.by(Sender::head).bytes;
    if (command.complete && command.surplus == 0 && recording::hasConstantReply(command.name))
      connection.constants.try_emplace(command.name, command);
  }

  void take(const Record& record) {
    if (record.kind == Kind::closedByHead) connection(record.connection).endedByHead = true;
    if (record.kind == Kind::announcement) survey_.announcement = record.payload;
  }

  // As "fringix recording show" counts them: by the time at which they begin.
  void number() {
    std::stable_sort(places_.begin(), places_.end(), [](const Place& one, const Place& other) { return one.time < other.time; });
    for (std::size_t i = 0; i < places_.size(); ++i) connection(places_[i].connection).commands.push_back(i + 1);
  }

  recording::ConversationReader reader_;
  Survey survey_;
  std::map<std::uint32_t, RecordedConnection> connections_;
  std::vector<Place> places_;
};

}  // namespace

Survey survey(const std::string& file) { return Surveyor(file).survey(); }

}  // namespace fringix::head
