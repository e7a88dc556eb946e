#include "head/model/picture_store.h"

#include <utility>

namespace fringix::head {

bool PictureStore::put(PictureName name, Picture picture) {
  const Picture* old = find(name);
  const std::size_t others = used_ - (old != nullptr ? old->pixels.size() : 0);
  if (picture.pixels.size() > capacity_ - others) return false;
  used_ = others + picture.pixels.size();
  pictures_[name] = std::move(picture);
  return true;
}

const Picture* PictureStore::find(PictureName name) const {
  const auto found = pictures_.find(name);
  return found != pictures_.end() ? &found->second : nullptr;
}

}  // namespace fringix::head
