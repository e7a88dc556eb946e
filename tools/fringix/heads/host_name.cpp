#include "heads/host_name.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <future>
#include <memory>
#include <string_view>
#include <utility>

#include "aside/run_aside.h"
#include "console/explain.h"

namespace fringix::tool {
namespace {

constexpr std::size_t longestName = 253;
constexpr const char* digitsAndDots = "0123456789.";
constexpr const char* lettersOfNames = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-_";

struct HostAndPort {
  std::string_view host;
  std::string_view port;  // without the colon
  bool hasPort = false;
};

HostAndPort split(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return {text, {}, false};
  return {text.substr(0, colon), text.substr(colon + 1), true};
}

bool isNumber(std::string_view text) { return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos; }

// Leading zeros mean another base to some systems.
bool isByte(std::string_view text) {
  int value = 0;
  const bool plain = isNumber(text) && text.size() <= 3 && (text.size() == 1 || text.front() != '0');
  return plain && std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc{} && value <= 255;
}

bool isIpv4(std::string_view text) {
  for (int part = 0; part < 3; ++part) {
    const std::size_t dot = text.find('.');
    if (dot == std::string_view::npos || !isByte(text.substr(0, dot))) return false;
    text.remove_prefix(dot + 1);
  }
  return isByte(text);
}

bool looksLikeIpv4(std::string_view text) { return text.find_first_not_of(digitsAndDots) == std::string_view::npos; }

bool isName(std::string_view text) {
  const bool letters = text.find_first_not_of(lettersOfNames) == std::string_view::npos;
  return letters && text.size() <= longestName && text.front() != '.' && text.front() != '-';
}

// The system's look-up cannot be ended, so it goes on by itself when it takes too long.
LookUp within(std::chrono::milliseconds limit, std::function<LookUp(const std::string&)> ask, const std::string& name) {
  const auto answer = std::make_shared<std::promise<LookUp>>();
  std::future<LookUp> answered = answer->get_future();
  runAside([name, ask = std::move(ask), answer] { answer->set_value(ask(name)); });
  if (answered.wait_for(limit) == std::future_status::ready) return answered.get();
  return {{}, fmt::format("no answer within {:g} s", std::chrono::duration<double>(limit).count())};
}

}  // namespace

std::string whatIsWrongWithAddress(const std::string& text) {
  const auto [host, port, hasPort] = split(text);
  if (port.find(':') != std::string_view::npos && !port.starts_with("//"))
    return fmt::format("\"{}\" looks like an IPv6 address, but heads have IPv4 addresses such as 192.168.0.10", text);
  if (host.empty() || (looksLikeIpv4(host) ? !isIpv4(host) : !isName(host)) || (hasPort && !isNumber(port)))
    return fmt::format("\"{}\" is neither an IPv4 address such as 192.168.0.10 nor a host's name", text);
  if (hasPort && port != std::to_string(commandPort))
    return fmt::format("\"{}\" names port {}, but heads are always reached on port {}: leave \":{}\" away", text, port, commandPort, port);
  return {};
}

std::string resolveAddress(const std::string& text, std::chrono::milliseconds limit, std::function<LookUp(const std::string&)> ask) {
  std::string host(split(text).host);
  if (isIpv4(host)) return host;
  LookUp found = within(limit, std::move(ask), host);
  if (!found.address.empty()) return std::move(found.address);
  throw Failure({fmt::format("the name \"{}\" has no IPv4 address: {}", host, found.reason),
                 "Check the name, or give the head's address. \"fringix list\" shows the heads that answer.", "unknown-name"});
}

}  // namespace fringix::tool
