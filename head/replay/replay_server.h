// A head that answers from a recording: connections, searches and triggers.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "head/replay/player.h"
#include "head/replay/survey.h"
#include "platform/socket.h"

namespace fringix::head {

class ReplayServer {
 public:
  // Told in words what happens, with the client's address; called on the server's threads.
  enum class News { connected, difference, trouble, disconnected };
  using Observer = std::function<void(News news, const std::string& client, const std::string& text)>;

  // Reads the recording; throws recording::BadRecording and std::runtime_error.
  ReplayServer(Replay replay, std::string address, Observer observer);
  ~ReplayServer();
  ReplayServer(const ReplayServer&) = delete;
  ReplayServer& operator=(const ReplayServer&) = delete;

  const Survey& survey() const { return survey_; }

  void start();  // throws std::runtime_error when the address cannot be listened on
  void stop() noexcept;

  std::size_t differences() const { return differences_; }

 private:
  class Session;

  void acceptClients() noexcept;
  void acceptClient();
  void answerSearches() noexcept;
  const RecordedConnection* next();
  const RecordedConnection* claim();

  const platform::SocketLibrary library_;
  const Replay replay_;
  const std::string address_;
  const Observer observer_;
  const Survey survey_;
  platform::Socket listener_;
  platform::Socket searches_;
  std::atomic<bool> stopping_ = false;
  std::atomic<std::size_t> differences_ = 0;
  std::mutex mutex_;
  std::size_t used_ = 0;  // of the recording's connections; they are used in their order, and then again
  std::list<std::unique_ptr<Session>> sessions_;
  std::vector<std::thread> threads_;
};

}  // namespace fringix::head
