#include <fmt/format.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "console/event_line.h"
#include "console/explain.h"
#include "console/interruption.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds interruptionInterval{50};
constexpr std::chrono::seconds connectionInterval{1};

struct WatchOptions {
  std::vector<std::string> addresses;
  std::vector<std::int32_t> serials;  // in place of the addresses
  bool json = false;
  std::size_t count = 0;  // of events, then it ends; 0: with Ctrl-C only
};

// From the heads' threads, which must not wait for a reader of the output, to the one that prints.
class EventQueue {
 public:
  void put(HeadEvent event) {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
    changed_.notify_one();
  }

  // What has come; waits for it up to `limit`.
  std::vector<HeadEvent> take(std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, limit, [this] { return !events_.empty(); });
    return std::exchange(events_, {});
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<HeadEvent> events_;
};

struct WatchedHead {
  std::string address;
  Device head;
  Subscription subscription{};
};

std::vector<WatchedHead> openAll(const WatchOptions& options, Context& context) {
  std::vector<WatchedHead> heads;
  const auto open = [&] {
    Device head = openHead(context);
    heads.push_back({context.address, std::move(head)});
  };
  for (const std::string& address : options.addresses) {
    context.address = address;
    open();
  }
  for (const std::int32_t serial : options.serials) {
    context.serial = serial;
    open();
  }
  return heads;
}

void subscribe(WatchedHead& watched, EventQueue& queue) {
  watched.subscription = Subscription(watched.head, [&queue, address = watched.address](std::int32_t event, std::int64_t serial) {
    queue.put({std::chrono::system_clock::now(), address, event, serial});
  });
}

void requireConnected(const WatchedHead& watched) {
  if (isConnected(watched.head)) return;
  throw Failure({fmt::format("the connection to the head at {} is lost", watched.address),
                 "Check the cable and that the head is on, then watch again."});
}

// Prints events and counts them; gives whether that were all that are wanted. A reader at the end of a pipe wants each when it comes.
bool print(const std::vector<HeadEvent>& events, const WatchOptions& options, std::size_t& printed) {
  for (const HeadEvent& event : events) {
    fmt::print("{}\n", options.json ? formatEventAsJson(event) : formatEvent(event));
    std::fflush(stdout);
    if (++printed == options.count) return true;
  }
  return false;
}

void watch(const WatchOptions& options, Context& context) {
  EventQueue queue;
  std::vector<WatchedHead> heads = openAll(options, context);
  const Interruption interruption;
  for (WatchedHead& watched : heads) subscribe(watched, queue);
  fmt::print(stderr, "watching {}, end with Ctrl-C\n", heads.size() == 1 ? "1 head" : fmt::format("{} heads", heads.size()));
  std::fflush(stderr);  // Windows keeps it back otherwise, in a pipe
  std::size_t printed = 0;
  auto nextLook = Clock::now();
  while (!interruption.waitFor({})) {
    if (print(queue.take(interruptionInterval), options, printed)) return;
    if (Clock::now() < nextLook) continue;
    for (const WatchedHead& watched : heads) requireConnected(watched);
    nextLook = Clock::now() + connectionInterval;
  }
}

}  // namespace

void defineWatch(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<WatchOptions>();
  addAddresses(command, context, options->addresses, options->serials);
  command.flag("--json", &options->json, "Print one line of JSON for each event");
  command.option("-n,--count", &options->count, "End after this many events").valueName("N").atLeast(1);
  command.note(
      "A connection that is lost ends it with exit code 1. On Windows it is not noticed, and\nCtrl-C has to be pressed twice then.");
  command.run([options, &context] { watch(*options, context); });
}

}  // namespace fringix::tool
