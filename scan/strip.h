// Pictures are worked on in strips of pixels: short enough for all sums of a strip to stay in the processor's first cache, and of a
// fixed length, so that the compiler makes vector code of every loop over one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace fringix::scan {

#ifdef FRINGIX_SHORT_STRIPS
inline constexpr std::size_t stripLength = 16;  // a fuzzer's small pictures are to have several
#else
inline constexpr std::size_t stripLength = 256;
#endif

template <class Value>
using Strip = std::array<Value, stripLength>;

constexpr std::size_t stripsOf(std::size_t pixels) { return (pixels + stripLength - 1) / stripLength; }

// Why a pixel gives no point; the first that applies.
enum class Reason : std::uint8_t {
  none,        // it gives one
  saturation,  // too bright in one of the pictures
  noise,       // expected standard deviation too large, as where no light falls
  grayMargin,  // a bit of the Gray code can be read either way, and it matters
  residual,    // period index and phase contradict each other
  column,      // outside of the projector's picture, or within three columns of its border
  unsteady,    // the steps fit no cosine, or not the white picture: something moved or flickered
  geometry,    // ray and column meet nowhere, or not where the projector shines or depths are wanted
  edge,        // depth step to a neighbour
  outlier,     // stands out of its neighbours' surface
  component,   // belongs to a patch of few points
};
inline constexpr std::size_t reasonCount = 11;

}  // namespace fringix::scan
