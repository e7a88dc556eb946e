// The angle of a vector, as vector code: no branches, no calls, an error below 3e-7 of a turn.
#pragma once

namespace fringix::scan {

// An odd polynomial for atan(x) / (2 pi) on 0 to 1, of the smallest largest error that degree 11 allows (found by Remez' exchange).
inline float firstEighth(float x) {
  const float square = x * x;
  float sum = -0.00186515832F;
  sum = sum * square + 0.00837908592F;
  sum = sum * square - 0.018529851F;
  sum = sum * square + 0.0308029074F;
  sum = sum * square - 0.0529385656F;
  sum = sum * square + 0.159151316F;
  return sum * x;
}

// In turns, -0.5 to 0.5; 0 for the null vector.
inline float turnOf(float sine, float cosine) {
  constexpr float tiny = 1e-30F;
  const float height = sine < 0 ? -sine : sine;
  const float width = cosine < 0 ? -cosine : cosine;
  const float larger = height > width ? height : width;
  const float smaller = height > width ? width : height;
  const float eighth = firstEighth(smaller / (larger + tiny));
  const float quarter = height > width ? 0.25F - eighth : eighth;
  const float half = cosine < 0 ? 0.5F - quarter : quarter;
  return sine < 0 ? -half : half;
}

// The nearest integer, for values whose fraction a float still holds (up to 2^22).
inline float nearest(float value) {
  constexpr float noFractionLeft = 12582912.0F;
  return (value + noFractionLeft) - noFractionLeft;
}

}  // namespace fringix::scan
