#include "diagnosis/search.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <thread>

#include "diagnosis/datagrams.h"

namespace fringix::tool::diagnosis {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr std::uint16_t announcePort = 44332;
constexpr const char* question = "01UDP_SLANNOUNCE";
constexpr std::uint32_t everybody = 0xFFFFFFFF;
constexpr auto again = 150ms;  // for the case that a datagram gets lost
constexpr auto limit = 500ms;
constexpr auto interval = 5ms;
constexpr std::size_t mostAnswers = 1000;  // of an interface, and datagrams that are read at a time

struct Question {
  Interface* place;
  std::uint32_t receiver;
  DatagramSocket socket;

  void ask() { socket.send(question, receiver, announcePort); }
  void collect() {
    std::string text;
    std::uint32_t sender = 0;
    for (std::size_t i = 0; i < mostAnswers && place->answers.size() < mostAnswers && socket.receive(text, sender); ++i)
      note({formatIpv4(sender), serialOf(text), receiver != everybody});
  }

 private:
  void note(Answer answer) const {
    for (Answer& known : place->answers) {
      if (known.address != answer.address || known.serial != answer.serial) continue;
      known.toSearch = known.toSearch || answer.toSearch;
      return;
    }
    place->answers.push_back(std::move(answer));
  }
};

std::vector<Question> questionsAt(std::vector<Interface>& interfaces) {
  std::vector<Question> questions;
  for (Interface& place : interfaces) {
    if (place.network.mask == 0) continue;
    questions.push_back({&place, place.network.broadcast(), DatagramSocket(place.network.address)});
    if (!place.loopback) questions.push_back({&place, everybody, DatagramSocket(place.network.address)});
  }
  return questions;
}

}  // namespace

void searchAll(std::vector<Interface>& interfaces) {
  std::vector<Question> questions = questionsAt(interfaces);
  const auto begin = Clock::now();
  for (Question& each : questions) each.ask();
  for (bool askedAgain = false; Clock::now() < begin + limit;) {
    std::this_thread::sleep_for(interval);
    for (Question& each : questions) each.collect();
    if (askedAgain || Clock::now() < begin + again) continue;
    for (Question& each : questions) each.ask();
    askedAgain = true;
  }
}

std::int32_t serialOf(const std::string& answer) {
  std::int32_t serial = -1;
  const std::size_t blank = answer.find_first_of(" \t\r\n");
  const std::size_t digits = answer.find_first_not_of(" \t\r\n", blank);
  if (blank != std::string::npos && digits != std::string::npos)
    std::from_chars(answer.data() + digits, answer.data() + answer.size(), serial);
  return serial;
}

}  // namespace fringix::tool::diagnosis
