#include "recording/compression.h"

#include <zstd.h>

#include <new>

#include "recording/format.h"

namespace fringix::recording {

namespace {

constexpr int level = 1;  // keeps up with a link of 1 Gbit/s, which the slower levels do not

}  // namespace

struct Compressor::Native {
  ZSTD_CCtx* const context = ZSTD_createCCtx();
  std::vector<std::uint8_t> room;
};

Compressor::Compressor() : native_(std::make_unique<Native>()) {
  if (native_->context == nullptr) throw std::bad_alloc();
}

Compressor::~Compressor() { ZSTD_freeCCtx(native_->context); }

std::span<const std::uint8_t> Compressor::compress(std::span<const std::uint8_t> plain) {
  native_->room.resize(ZSTD_compressBound(plain.size()));
  const std::size_t size =
      ZSTD_compressCCtx(native_->context, native_->room.data(), native_->room.size(), plain.data(), plain.size(), level);
  if (ZSTD_isError(size) != 0 || size >= plain.size()) return {};
  return std::span(native_->room).first(size);
}

std::vector<std::uint8_t> decompress(std::span<const std::uint8_t> compressed) {
  const unsigned long long size = ZSTD_getFrameContentSize(compressed.data(), compressed.size());
  if (size > largestPayload) throw BadRecording("compressed bytes that do not say how many they are, or too many");
  std::vector<std::uint8_t> plain(static_cast<std::size_t>(size));
  const std::size_t found = ZSTD_decompress(plain.data(), plain.size(), compressed.data(), compressed.size());
  if (ZSTD_isError(found) != 0 || found != plain.size()) throw BadRecording("compressed bytes that cannot be read");
  return plain;
}

}  // namespace fringix::recording
