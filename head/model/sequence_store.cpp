#include "head/model/sequence_store.h"

#include <utility>

namespace fringix::head {

SequenceStore::SequenceStore(Size projector, std::size_t capacity)
    : imageBytes_(projector.pixels() * sizeof(Colour)), free_(capacity), dark_(std::make_shared<const Pattern>(Size{})) {}

Status SequenceStore::allocate(std::uint32_t imageCount, std::uint32_t& id) {
  id = 0;
  if (imageCount == 0 || imageCount > longestSequence) return Status::badParameter;
  const std::size_t needed = imageCount * imageBytes_;
  if (needed > free_) return Status::outOfMemory;
  free_ -= needed;
  id = ++lastId_;
  sequences_.emplace(id, Images(imageCount, dark_));
  return Status::ok;
}

Status SequenceStore::free(std::uint32_t id) {
  const auto sequence = sequences_.find(id);
  if (sequence == sequences_.end()) return Status::unknownSequence;
  free_ += sequence->second.size() * imageBytes_;
  sequences_.erase(sequence);
  return Status::ok;
}

Status SequenceStore::put(std::uint32_t id, std::uint32_t index, Pattern pattern) {
  const auto sequence = sequences_.find(id);
  if (sequence == sequences_.end()) return Status::unknownSequence;
  if (index >= sequence->second.size()) return Status::badParameter;
  sequence->second[index] = std::make_shared<const Pattern>(std::move(pattern));
  return Status::ok;
}

SequenceImage SequenceStore::image(std::uint32_t id, std::uint32_t index) const {
  const auto sequence = sequences_.find(id);
  if (sequence == sequences_.end()) return {Status::unknownSequence, nullptr};
  if (index >= sequence->second.size()) return {Status::badParameter, nullptr};
  return {Status::ok, sequence->second[index]};
}

std::uint32_t SequenceStore::imageCount(std::uint32_t id) const {
  const auto sequence = sequences_.find(id);
  return sequence != sequences_.end() ? static_cast<std::uint32_t>(sequence->second.size()) : 0;
}

}  // namespace fringix::head
