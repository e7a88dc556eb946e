// How code of one's own is tested against a simulated head. The code to be tested finds an exposure in which nothing is too bright.
//   fringix-head --address 127.0.0.9 & own_code_test 127.0.0.9
#include <algorithm>
#include <fringix/fringix.hpp>
#include <iostream>

// ---- The code to be tested

// Halves the exposure until less than one pixel in a hundred is too bright.
static std::int32_t findExposure(const fringix::Device& head) {
  std::int32_t exposure = head.readIni("Camera", "Exposure");
  for (;;) {
    const fringix::Image picture = head.liveImage();
    const auto tooBright = static_cast<std::size_t>(std::count(picture.pixels.begin(), picture.pixels.end(), std::uint8_t{255}));
    if (tooBright * 100 < picture.pixels.size()) return exposure;
    exposure /= 2;
    head.writeIni("Camera", "Exposure", exposure);
  }
}

// ---- The tests: each makes the head see what it is about. Any framework does as well.

static int expect(const char* what, bool holds) {
  std::cout << (holds ? "passed: " : "FAILED: ") << what << '\n';
  return holds ? 0 : 1;
}

static std::int32_t exposureFoundFrom(const fringix::Device& head, std::int32_t start) {
  head.writeIni("Camera", "Exposure", start);
  return findExposure(head);
}

static bool tellsOfALostHead(fringix::Device& head) {
  head.close();
  try {
    findExposure(head);
    return false;
  } catch (const fringix::Error& error) {
    return error.code() == SLUNKNOWN_DEVICE_ID;
  }
}

int main(int argc, char** argv) {
  try {
    fringix::Device head(argc > 1 ? argv[1] : "127.0.0.2");
    head.projector(4, 0);  // white light
    int failures = expect("a dark picture keeps its exposure", exposureFoundFrom(head, 2000) == 2000);
    failures += expect("a bright one gets a shorter exposure", exposureFoundFrom(head, 100000) < 100000);
    failures += expect("a lost head is told", tellsOfALostHead(head));
    return failures == 0 ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
