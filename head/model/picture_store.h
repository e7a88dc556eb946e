// The pictures that a head keeps, by camera channel and index.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>

#include "head/optics/picture.h"

namespace fringix::head {

struct PictureName {
  std::uint32_t channel = 0;
  std::uint32_t index = 0;
  auto operator<=>(const PictureName&) const = default;
};

class PictureStore {
 public:
  explicit PictureStore(std::size_t capacity) : capacity_(capacity) {}  // in bytes of all pictures together

  bool put(PictureName name, Picture picture);  // false: no room for it
  const Picture* find(PictureName name) const;  // null where there is none

 private:
  std::size_t capacity_;
  std::size_t used_ = 0;
  std::map<PictureName, Picture> pictures_;
};

}  // namespace fringix::head
