// Payloads of records made smaller, each by itself: a record can be read without those before it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace fringix::recording {

class Compressor {
 public:
  Compressor();
  ~Compressor();

  // Empty when it would not become smaller.
  std::span<const std::uint8_t> compress(std::span<const std::uint8_t> plain);

 private:
  struct Native;
  std::unique_ptr<Native> native_;
};

// Throws BadRecording for what is not compressed bytes, or for more than a record may hold.
std::vector<std::uint8_t> decompress(std::span<const std::uint8_t> compressed);

}  // namespace fringix::recording
