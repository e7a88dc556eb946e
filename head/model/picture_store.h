// The pictures that a head keeps, by camera channel and index.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

#include "head/optics/picture.h"

namespace fringix::head {

struct PictureName {
  std::uint32_t channel = 0;
  std::uint32_t index = 0;
  auto operator<=>(const PictureName&) const = default;
};

using SharedPicture = std::shared_ptr<const Picture>;  // lives on with those who use it when another one takes its place

class PictureStore {
 public:
  explicit PictureStore(std::size_t capacity) : capacity_(capacity) {}  // in bytes of all pictures together

  bool hasRoom(PictureName name, std::size_t bytes) const;  // for a picture in place of an older one
  bool put(PictureName name, Picture picture);              // false: no room for it
  SharedPicture find(PictureName name) const;               // null where there is none

 private:
  std::size_t usedWithout(PictureName name) const;

  std::size_t capacity_;
  std::size_t used_ = 0;
  std::map<PictureName, SharedPicture> pictures_;
};

}  // namespace fringix::head
