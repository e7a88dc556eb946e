#include "head/serving/announcer.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "head/serving/announcement.h"
#include "platform/datagram.h"
#include "ports/search_port.h"

namespace fringix::head {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds stopInterval{50};
constexpr std::chrono::milliseconds lateness{1000};
constexpr std::size_t mostWaiting = 1000;  // more requests at once are not answered

}  // namespace

Announcer::Announcer(const HeadModel& model, const FaultPlan& faults, Observer observer)
    : model_(model), faults_(faults), address_(platform::parseIpv4(model.settings().address.c_str())), observer_(std::move(observer)) {}

void Announcer::start() {
  if (model_.settings().announceFault == AnnounceFault::silent) return;
  socket_ = ports::listenForSearches();
  stopping_ = false;
  thread_ = std::thread([this] { serve(); });
}

void Announcer::stop() noexcept {
  if (!thread_.joinable()) return;
  stopping_ = true;
  thread_.join();
  socket_.close();
  answers_.clear();
}

void Announcer::serve() noexcept {
  while (!stopping_) {
    auto limit = stopInterval;
    if (!answers_.empty())
      limit = std::clamp(std::chrono::ceil<std::chrono::milliseconds>(answers_.front().due - SteadyClock::now()), {}, limit);
    const platform::Readiness readiness = socket_.waitReadable(limit);
    try {
      if (readiness == platform::Readiness::ready) takeRequest();
      sendDueAnswers();
    } catch (const std::exception&) {  // no memory for this answer just now: the client may ask again
    }
  }
}

void Announcer::takeRequest() {
  const auto client = ports::takeSearch(socket_);
  if (!client || answers_.size() >= mostWaiting || faults_.away() || !ports::shareANetwork(address_, client->address)) return;
  const AnnounceFault fault = model_.settings().announceFault;
  const Time due = SteadyClock::now() + (fault == AnnounceFault::late ? lateness : std::chrono::milliseconds::zero());
  answers_.insert(answers_.end(), fault == AnnounceFault::doubled ? 2 : 1, {due, *client});
}

void Announcer::sendDueAnswers() {
  for (; !answers_.empty() && answers_.front().due <= SteadyClock::now(); answers_.pop_front()) {
    const platform::Ipv4Endpoint client = answers_.front().client;
    const std::string text = announcement(model_);
    if (platform::sendDatagram(address_, client, text.data(), text.size()) && observer_) observer_(platform::formatIpv4(client.address));
  }
}

}  // namespace fringix::head
