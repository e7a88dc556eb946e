#include "head/wire/damaged_reply.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace fringix::head {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint8_t missingPicture[] = {0x00, 0xFF};
constexpr std::uint8_t filler = 0xEE;
constexpr std::chrono::milliseconds look{20};  // how often a stall looks whether it is over

}  // namespace

DamagedReply::DamagedReply(Damage damage, Send send, Rest rest)
    : damage_(std::move(damage)), send_(std::move(send)), rest_(std::move(rest)), nextStep_(Clock::now()) {}

void DamagedReply::add(const std::uint8_t* bytes, std::size_t count) {
  const auto missing = static_cast<std::size_t>(std::max<std::int64_t>(-damage_.surplus, 0));
  held_.insert(held_.end(), bytes, bytes + count);
  if (held_.size() > missing) pass(held_.size() - missing);
}

void DamagedReply::end() {
  if (damage_.surplus > 0) {
    held_.insert(held_.end(), static_cast<std::size_t>(damage_.surplus), filler);
    pass(held_.size());
  }
  strike();
}

void DamagedReply::pass(std::size_t count) {
  if (damage_.noPicture) markMissing();
  for (std::size_t done = 0; done < count;) {
    const bool ends = damage_.ending != Ending::none;
    if (ends && passed_ == damage_.endsAt) {
      strike();
      continue;
    }
    const std::size_t step = ends ? std::min<std::uint64_t>(count - done, damage_.endsAt - passed_) : count - done;
    const std::size_t size = nextStep(step);
    send_(held_.data() + done, size);
    done += size;
    passed_ += size;
  }
  held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(count));
}

// What is held begins with byte number `passed_`.
void DamagedReply::markMissing() {
  for (std::uint64_t i = passed_; i < std::size(missingPicture) && i - passed_ < held_.size(); ++i)
    held_[static_cast<std::size_t>(i - passed_)] = missingPicture[i];
}

void DamagedReply::slowRequest(std::size_t count) {
  if (!damage_.slowsRequest) return;
  while (count > 0) count -= nextStep(count);
}

std::size_t DamagedReply::nextStep(std::size_t count) {
  if (damage_.stepSize == 0 || !damage_.lasts()) return count;
  const std::uint64_t size = std::min<std::uint64_t>(count, damage_.stepSize);
  const std::chrono::nanoseconds full = damage_.stepTime;
  const auto time = std::chrono::duration_cast<Clock::duration>(full * (static_cast<double>(size) / static_cast<double>(damage_.stepSize)));
  nextStep_ = std::max(nextStep_, Clock::now() - damage_.stepTime) + time;  // makes up for a rest that was too long, not for more
  rest_(nextStep_);
  return static_cast<std::size_t>(size);
}

void DamagedReply::strike() {
  const Ending ending = std::exchange(damage_.ending, Ending::none);
  if (ending == Ending::cut) throw Disconnected{};
  if (ending == Ending::reset) throw ConnectionReset{};
  if (ending == Ending::none) return;
  const auto end = Clock::now() + damage_.endingTime;
  while (damage_.lasts() && Clock::now() < end) rest_(std::min(end, Clock::now() + look));
  if (ending == Ending::silence && damage_.lasts()) throw Disconnected{};
}

}  // namespace fringix::head
