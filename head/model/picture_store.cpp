#include "head/model/picture_store.h"

#include <utility>

namespace fringix::head {

bool PictureStore::hasRoom(PictureName name, std::size_t bytes) const { return bytes <= capacity_ - usedWithout(name); }

bool PictureStore::put(PictureName name, Picture picture) {
  if (!hasRoom(name, picture.pixels.size())) return false;
  used_ = usedWithout(name) + picture.pixels.size();
  pictures_[name] = std::make_shared<const Picture>(std::move(picture));
  return true;
}

SharedPicture PictureStore::find(PictureName name) const {
  const auto found = pictures_.find(name);
  return found != pictures_.end() ? found->second : nullptr;
}

std::size_t PictureStore::usedWithout(PictureName name) const {
  const SharedPicture old = find(name);
  return used_ - (old != nullptr ? old->pixels.size() : 0);
}

}  // namespace fringix::head
