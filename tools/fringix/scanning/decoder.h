// Pictures to points, each picture decoded while the next one is fetched.
#pragma once

#include <cstdint>
#include <fringix/fringix.hpp>
#include <fringix/scan.hpp>
#include <future>
#include <optional>
#include <vector>

namespace fringix::tool {

struct Decoded {
  scan::Cloud cloud;
  std::vector<float> modulation;  // of each pixel, in grey levels
};

class Decoder {
 public:
  // Makes its scanner, which takes a while, while the first picture is waited for.
  Decoder(const SLScanPlan& plan, const SLScanCalibration& calibration, const SLScanSettings& settings, std::uint32_t camera);
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  void take(Image picture);  // throws what the picture before it failed with
  Decoded finish();

 private:
  const scan::Scanner& scanner();

  std::int32_t camera_;
  SLScanOptics optics_;
  std::future<scan::Scanner> making_;
  std::optional<scan::Scanner> scanner_;
  std::future<void> adding_;  // last, for it uses the others until it ends
};

}  // namespace fringix::tool
