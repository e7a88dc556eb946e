// Pictures to points, each picture decoded while the next one is fetched.
#pragma once

#include <cstdint>
#include <fringix/fringix.hpp>
#include <fringix/scan.hpp>
#include <future>
#include <optional>
#include <vector>

#include "scanning/scan_task.h"

namespace fringix::tool {

// An entry for each pixel of the wanted region.
struct Decoded {
  scan::Cloud cloud;
  std::vector<float> modulation;  // of each pixel, in grey levels
};

// Of one camera.
class Decoder {
 public:
  // Makes its scanner, which takes a while, while the first picture is waited for.
  Decoder(const ScanTask& task, std::uint32_t camera);
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  void take(Image picture);  // of the needed region, exposure by exposure; throws what the picture before it failed with
  Decoded finish();

 private:
  const scan::Scanner& scanner();

  std::int32_t camera_;
  Region needed_;
  Region wanted_;
  std::size_t picturesOfExposure_;
  std::size_t taken_ = 0;
  std::future<scan::Scanner> making_;
  std::optional<scan::Scanner> scanner_;
  std::future<void> adding_;  // last, for it uses the others until it ends
};

// The part of what was decoded of a region, counted anew; `part` lies within `region`.
Decoded cut(const Decoded& decoded, const Region& region, const Region& part);

// Adds the pixels of another camera behind those of the ones before.
void append(Decoded& all, const Decoded& more);

}  // namespace fringix::tool
