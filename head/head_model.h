// A head without its network side: what it is, what it keeps, what its camera sees. Safe to use from several threads.
#pragma once

#include <cstdint>
#include <mutex>

#include "head/head_settings.h"
#include "head/picture.h"

namespace fringix::head {

class HeadModel {
 public:
  explicit HeadModel(HeadSettings settings);

  const HeadSettings& settings() const { return settings_; }

  // The camera's current picture. No two are equal: each carries the serial number and the number of the picture, counted from 1.
  // No pixel is 0, so none is mistaken for the marker of a missing picture. Reuses the memory of `picture`.
  void takeLivePicture(Picture& picture);

 private:
  const HeadSettings settings_;
  std::mutex mutex_;
  Picture chart_;  // made for the first picture
  std::uint64_t picturesTaken_ = 0;
};

}  // namespace fringix::head
