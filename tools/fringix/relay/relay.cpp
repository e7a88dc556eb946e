#include "relay/relay.h"

#include <exception>
#include <set>
#include <stdexcept>
#include <utility>

#include "platform/clock.h"
#include "platform/datagram.h"
#include "ports/command_port.h"
#include "ports/search_port.h"
#include "ports/trigger_port.h"
#include "relay/announcement.h"

namespace fringix::tool {
namespace {

using platform::Readiness;
using recording::Kind;

constexpr std::chrono::milliseconds stopInterval{50};
constexpr std::size_t mostConnections = 64;

std::span<const std::uint8_t> bytesOf(std::string_view text) { return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}; }

std::vector<std::uint8_t> withEndpoint(platform::Ipv4Endpoint endpoint, std::string_view text) {
  const auto head = recording::encode(recording::Endpoint{endpoint.address, endpoint.port});
  std::vector<std::uint8_t> bytes(head.begin(), head.end());
  bytes.insert(bytes.end(), text.begin(), text.end());
  return bytes;
}

}  // namespace

Relay::Relay(RelaySettings settings, Warning warning)
    : settings_(std::move(settings)),
      warning_(std::move(warning)),
      headAddress_(platform::parseIpv4(settings_.head.c_str())),
      ownAddress_(platform::parseIpv4(settings_.listening.c_str())),
      announcement_(askForAnnouncement(headAddress_)),
      listener_(ports::listenOn(settings_.listening)) {
  try {
    if (announcement_.empty())
      warning_("the head does not answer searches, so clients do not find it here: give them the address");
    else
      searches_ = ports::listenForSearches();
  } catch (const std::runtime_error& error) {
    warning_(std::string(error.what()) + ". Clients do not find the head here: give them the address");
  }
}

recording::Header Relay::header() const { return {0, headAddress_, ownAddress_, false}; }

void Relay::start(recording::Recorder& recorder) {
  recorder_ = &recorder;
  recorder.add(Kind::announcement, 0, bytesOf(announcement_));
  threads_.emplace_back([this] { acceptClients(); });
  if (searches_.valid()) threads_.emplace_back([this] { answerSearches(); });
  const auto deaf = [this] {
    warning_("UDP port 44331 of this machine is another program's: triggers are neither recorded nor handed on");
  };
  triggers_.emplace(
      headAddress_, [this](std::string_view text) { passOnTrigger(text); }, deaf);
}

void Relay::stop() noexcept {
  stopping_ = true;
  triggers_.reset();
  for (std::thread& thread : threads_) thread.join();
  threads_.clear();
  const std::lock_guard lock(connectionsMutex_);
  connections_.clear();
}

void Relay::acceptClients() noexcept {
  while (!stopping_) {
    const Readiness readiness = listener_.waitReadable(stopInterval);
    try {
      forgetFinished();
      if (readiness == Readiness::ready && !stopping_) acceptClient();
    } catch (const std::exception&) {  // no thread or no memory for this client just now
      platform::sleepFor(stopInterval);
    }
  }
}

void Relay::acceptClient() {
  platform::Ipv4Endpoint peer;
  platform::Socket socket = listener_.accept(&peer);
  if (!socket.valid()) return platform::sleepFor(stopInterval);
  const std::lock_guard lock(connectionsMutex_);
  if (connections_.size() >= mostConnections) return;
  connections_.emplace_back(std::move(socket), peer, ++opened_, HeadPlace{headAddress_, settings_.limit}, *recorder_);
}

void Relay::forgetFinished() {
  const std::lock_guard lock(connectionsMutex_);
  ended_ += connections_.remove_if([](const RelayedConnection& connection) { return connection.finished(); });
}

void Relay::answerSearches() noexcept {
  while (!stopping_) {
    if (searches_.waitReadable(stopInterval) != Readiness::ready) continue;
    try {
      const auto client = ports::takeSearch(searches_);
      if (!client || !ports::shareANetwork(ownAddress_, client->address)) continue;
      recorder_->add(Kind::search, 0, withEndpoint(*client, ports::searchRequest));
      platform::sendDatagram(ownAddress_, *client, announcement_.data(), announcement_.size());
    } catch (const std::exception&) {  // no memory for this answer just now: the client may ask again
    }
  }
}

void Relay::passOnTrigger(std::string_view text) {
  recorder_->add(Kind::trigger, 0, withEndpoint({headAddress_, 0}, text));
  std::set<std::uint32_t> hosts;
  {
    const std::lock_guard lock(connectionsMutex_);
    for (const RelayedConnection& connection : connections_) hosts.insert(connection.clientAddress());
  }
  for (const std::uint32_t host : hosts) ports::sendTrigger(ownAddress_, host, text.empty() ? ports::triggerText : text);
}

}  // namespace fringix::tool
