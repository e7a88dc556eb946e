#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <list>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "console/event_line.h"
#include "console/explain.h"
#include "console/interruption.h"
#include "console/json.h"
#include "console/output.h"
#include "heads/trigger_port.h"
#include "heads/watched_head.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds interruptionInterval{50};
constexpr std::chrono::seconds listenersStart{2};
constexpr std::chrono::seconds partingTime{5};

struct WatchOptions {
  std::vector<std::string> addresses;
  std::vector<std::int32_t> serials;  // in place of the addresses
  bool reconnect = false;
  std::size_t count = 0;  // of events, then it ends; 0: with Ctrl-C only
};

using Heads = std::list<WatchedHead>;

struct OpenedHead {
  std::string address;
  std::shared_ptr<HeadSession> session;  // none: it is waited for
};

void print(const HeadNews& news, const Context& context) { tell(context.json ? formatNewsAsJson(news) : formatNews(news)); }

// A head that is not there is a failure, unless it is to be waited for.
OpenedHead openOne(const WatchOptions& options, Context& context, const std::shared_ptr<WatchQueue>& queue) {
  findAddress(context);
  try {
    return {context.address, std::make_shared<HeadSession>(context.address, context.timeout, queue)};
  } catch (const std::runtime_error& error) {
    if (!options.reconnect) throw;
    print({std::chrono::system_clock::now(), context.address, HeadNews::Kind::missing, error.what()}, context);
    return {context.address, nullptr};
  }
}

std::vector<OpenedHead> openAll(const WatchOptions& options, Context& context, const std::shared_ptr<WatchQueue>& queue) {
  std::vector<OpenedHead> heads;
  for (const std::string& address : options.addresses) {
    context.address = address;
    heads.push_back(openOne(options, context, queue));
  }
  for (const std::int32_t serial : options.serials) {
    context.serial = serial;
    heads.push_back(openOne(options, context, queue));
  }
  return heads;
}

// Prints what has come and counts the events; gives whether those were all that are wanted. A reader at the end of a pipe wants each when
// it comes.
bool print(const WatchQueue::Content& content, const WatchOptions& options, const Context& context, std::size_t& printed) {
  for (const HeadNews& news : content.news) print(news, context);
  for (const HeadEvent& event : content.events) {
    fmt::print("{}\n", context.json ? formatEventAsJson(event) : formatEvent(event));
    flushOutput();
    if (++printed == options.count) return true;
  }
  return false;
}

void printAll(const Heads& heads, const WatchOptions& options, const Context& context, WatchQueue& queue,
              const Interruption& interruption) {
  const std::string counted = heads.size() == 1 ? "1 head" : fmt::format("{} heads", heads.size());
  tell(context.json ? Json::object({{"state", "watching"}, {"heads", heads.size()}}).line()
                    : fmt::format("watching {}, end with Ctrl-C", counted));
  std::size_t printed = 0;
  bool over = false;
  while (!over && !interruption.waitFor({})) {
    over = std::all_of(heads.begin(), heads.end(), [](const WatchedHead& head) { return head.isGivenUp(); });  // and told of
    over = print(queue.take(interruptionInterval), options, context, printed) || over;
  }
}

void requireAllAnswering(const Heads& heads) {
  std::vector<std::string> missing;
  for (const WatchedHead& head : heads) {
    if (!head.answers()) missing.push_back(head.address());
  }
  if (missing.empty()) return;
  const std::string what = missing.size() == 1 ? fmt::format("the connection to the head at {} is lost", missing.front())
                                               : fmt::format("the connections to {} of {} heads are lost", missing.size(), heads.size());
  throw Failure({what, "Check the cable and that the head is on, then watch again. --reconnect waits for heads that are gone.", "lost"});
}

// A session whose head does not answer is left behind: the end of the program is its end.
void stopAll(Heads& heads) {
  for (WatchedHead& head : heads) head.stop();
  const auto until = Clock::now() + partingTime;
  for (const WatchedHead& head : heads) {
    if (head.answers() || head.isGivenUp()) head.waitUntilEnded(until);
  }
}

void watch(const WatchOptions& options, Context& context) {
  const Interruption interruption;
  const auto queue = std::make_shared<WatchQueue>();
  std::vector<OpenedHead> opened = openAll(options, context, queue);
  const bool listening = std::any_of(opened.begin(), opened.end(), [](const OpenedHead& head) { return head.session != nullptr; });
  requireTriggers(listening, listenersStart);
  Heads heads;
  for (OpenedHead& head : opened)
    heads.emplace_back(std::move(head.address), std::move(head.session), WatchSettings{context.timeout, options.reconnect}, queue);
  printAll(heads, options, context, *queue, interruption);
  stopAll(heads);
  requireAllAnswering(heads);
}

}  // namespace

void defineWatch(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<WatchOptions>();
  addAddresses(command, context, options->addresses, options->serials);
  command.flag("--reconnect", &options->reconnect, "Wait for heads that are gone, and try again with growing pauses of up to a minute");
  command.option("-n,--count", &options->count, "End after this many events").valueName("N").atLeast(1);
  command.note(
      "Every 2 s it asks each head something. A head that does not answer any more is told of within\n"
      "10 s on standard error, and the others are watched on. It ends with exit code 1 when all heads\n"
      "are lost, when one is missing at its end, and at once when another program has UDP port 44331,\n"
      "on which triggers arrive.");
  command.run([options, &context] { watch(*options, context); });
}

}  // namespace fringix::tool
