// What the pictures of one strip amount to, added up as they come: the only thing that is kept of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "plan.h"
#include "strip.h"

namespace fringix::scan {

// Of one frequency: 8 bytes per pixel.
struct FrequencySums {
  Strip<float> cosine;
  Strip<float> sine;
};

// Of the Gray code: 9 bytes per pixel.
struct GraySums {
  Strip<std::uint8_t> black;
  Strip<std::uint16_t> code;         // of the half period, decoded
  Strip<std::uint16_t> flip;         // what to change in it when its weakest bit was misread
  Strip<std::int16_t> margin;        // abs(2 I - white - black) of the weakest bit
  Strip<std::int16_t> secondMargin;  // and of the second weakest
};

// Of the finest frequency's second harmonic: 4 bytes per pixel.
struct HarmonicSums {
  Strip<std::int16_t> cosine;
  Strip<std::int16_t> sine;

  static constexpr int weight = 126;  // of a cosine of 1; an even number, so that the weights of five steps add up to 0
  static constexpr int shift = 3;     // what is added is shifted to the right, so that 24 steps fit
  static constexpr float unit = static_cast<float>(weight) / (1 << shift);  // of a level
};

// Of all pictures: 8 bytes per pixel.
struct LevelSums {
  Strip<std::uint8_t> white;
  Strip<std::uint8_t> brightest;
  Strip<std::uint16_t> total;  // of the phase pictures; exact, like the next
  Strip<float> squares;
};

// The sums of one strip, wherever they are.
struct StripSums {
  LevelSums& levels;
  GraySums* gray;          // null when the plan has no Gray code
  HarmonicSums* harmonic;  // null when the plan's steps do not tell it from noise
  FrequencySums* frequencies;
};

// The sums of some strips.
class SumsOfStrips {
 public:
  SumsOfStrips(const Plan& plan, std::size_t strips);

  StripSums operator[](std::size_t strip) noexcept {
    return {levels_[strip], gray_.empty() ? nullptr : &gray_[strip], harmonic_.empty() ? nullptr : &harmonic_[strip],
            &frequencies_[strip * frequencyCount_]};
  }
  void clear() noexcept;

 private:
  std::size_t frequencyCount_;
  std::vector<LevelSums> levels_;
  std::vector<GraySums> gray_;
  std::vector<HarmonicSums> harmonic_;
  std::vector<FrequencySums> frequencies_;
};

// Adds the next picture of a plan, `stripLength` pixels of it, and gives the total of their levels.
std::uint32_t add(const PictureRole& role, const std::uint8_t* pixels, const StripSums& sums);

}  // namespace fringix::scan
