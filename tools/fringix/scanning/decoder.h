// Pictures to points, each picture decoded while the next one is fetched.
#pragma once

#include <cstdint>
#include <fringix/fringix.hpp>
#include <fringix/scan.hpp>
#include <future>
#include <vector>

namespace fringix::tool {

struct Decoded {
  scan::Cloud cloud;
  std::vector<float> modulation;  // of each pixel, in grey levels
};

class Decoder {
 public:
  // `scanner` has to outlast it.
  Decoder(const scan::Scanner& scanner, std::int32_t camera, const SLScanOptics& optics)
      : scanner_(scanner), camera_(camera), optics_(optics) {}
  ~Decoder() { wait(); }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  void take(Image picture);  // throws what the picture before it failed with
  Decoded finish();

 private:
  void wait() const noexcept {
    if (adding_.valid()) adding_.wait();
  }

  const scan::Scanner& scanner_;
  std::int32_t camera_;
  SLScanOptics optics_;
  std::future<void> adding_;
};

}  // namespace fringix::tool
