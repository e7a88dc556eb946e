// Which patterns are projected, in which order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace fringix::scan {

enum class Method : std::int32_t { grayAndPhase, threeFrequencies };

struct PlanSettings {
  Method method = Method::grayAndPhase;
  std::int32_t projectorWidth = 0;  // columns
  std::int32_t period = 0;          // columns of the finest period
  std::int32_t steps = 0;           // pictures of each frequency
};

PlanSettings defaultSettings(Method method, std::int32_t projectorWidth);

enum class PictureKind : std::int32_t { white, black, gray, phase };

// What one picture of the plan shows.
struct PictureRole {
  PictureKind kind;
  std::int32_t frequency = 0;  // of a phase picture: 0 is the finest
  std::int32_t number = 0;     // of a Gray picture: the bit; of a phase picture: the step
  float cosine = 0;            // weights of a phase picture
  float sine = 0;
};

// The cosines of one frequency: at column c the phase is (c + 0.5 + lead) / period, in turns.
struct Frequency {
  std::int32_t period;
  double lead;
};

// White, black, then the Gray code of half periods from the highest bit down, or nothing, then the steps, coarsest frequency first.
class Plan {
 public:
  explicit Plan(const PlanSettings& settings);  // throws Failure

  const PlanSettings& settings() const noexcept { return settings_; }
  const std::vector<PictureRole>& pictures() const noexcept { return pictures_; }
  const std::vector<Frequency>& frequencies() const noexcept { return frequencies_; }  // finest first
  std::int32_t grayBits() const noexcept { return grayBits_; }

  // Whether the steps tell a cosine's second harmonic, which a projector's gamma makes, from noise, by weights that are whole numbers.
  bool tellsHarmonic() const noexcept {
    return grayBits_ > 0 && (settings_.steps == 10 || (settings_.steps % 4 == 0 && settings_.steps >= 8 && settings_.steps <= 24));
  }

  // The picture as a line of pixels, one per projector column; every row of the projector shows it.
  std::vector<std::uint8_t> line(std::size_t picture) const;

 private:
  void addSteps(std::int32_t frequency);
  std::uint8_t level(const PictureRole& role, std::int32_t column) const;

  PlanSettings settings_;
  std::vector<Frequency> frequencies_;
  std::int32_t grayBits_ = 0;
  std::vector<PictureRole> pictures_;
};

}  // namespace fringix::scan
