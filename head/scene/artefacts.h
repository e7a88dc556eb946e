// Things with known measures, each at several places of the measuring volume.
#pragma once

#include "head/scene/scene.h"

namespace fringix::head {

inline constexpr int ballBarPlaces = 7;
inline constexpr int spherePlaces = 10;
inline constexpr int platePlaces = 6;
inline constexpr int boardPlaces = 20;

// All take a number from 1 to the number of places.
Scene ballBar(int place);
Scene singleSphere(int place);
Scene plate(int place);
Scene checkerboard(int place);  // the first six are the places of the plate

Scene stairs();
Scene wallWithBallAndStep();  // the usual scene

}  // namespace fringix::head
