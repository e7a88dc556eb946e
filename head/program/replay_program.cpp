#include "head/program/replay_program.h"

#include <fmt/format.h>

#include <chrono>

#include "head/program/printable.h"
#include "head/replay/replay_server.h"
#include "platform/clock.h"
#include "ports/command_port.h"

namespace fringix::head {

namespace {

using News = ReplayServer::News;

std::string describe(News news, const std::string& text) {
  switch (news) {
    case News::connected:
      return "connected";
    case News::disconnected:
      return "disconnected";
    case News::trouble:
      return "connection closed: " + text;
    case News::difference:
      break;
  }
  return "differs: " + text;
}

std::string counted(std::size_t count, const char* what) { return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s"); }

}  // namespace

bool replay(const Options& options, const std::atomic<bool>& stopRequested, const std::function<void(const std::string&)>& printLine) {
  const bool verbose = options.verbose;
  ReplayServer server({options.replay, options.atOnce}, options.first.address, [&](News news, const std::string& client, const auto& text) {
    if (verbose || news == News::difference || news == News::trouble) printLine(client + "  " + printable(describe(news, text)));
  });
  server.start();
  const Survey& survey = server.survey();
  printLine(fmt::format("{} replays {}: {}, {}, {}", options.first.address, options.replay,
                        counted(survey.connections.size(), "connection"), counted(survey.commandCount, "command"),
                        options.atOnce ? "at once" : "in recorded time"));
  if (survey.leftOver > 0)
    printLine(fmt::format("{} bytes at the end are a record that was not written whole; they are ignored", survey.leftOver));
  if (survey.announcement.empty()) printLine("searches are not answered: there is no answer in the recording");
  printLine(fmt::format("ready: 1 head listening on port {}, end with Ctrl-C", ports::commandPort));
  while (!stopRequested) platform::sleepFor(std::chrono::milliseconds(50));
  server.stop();
  return server.differences() == 0;
}

}  // namespace fringix::head
