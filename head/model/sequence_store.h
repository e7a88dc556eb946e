// The pattern sequences that a head keeps: numbered lists of projector images, dark until they are filled.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "head/optics/pattern.h"
#include "head/settings/status.h"

namespace fringix::head {

struct SequenceImage {
  Status status = Status::ok;
  std::shared_ptr<const Pattern> pattern;  // null unless the status is ok
};

class SequenceStore {
 public:
  static constexpr std::uint32_t longestSequence = 256;  // clients number images with 8 bits

  // Sequences take their full size of the capacity from the start, like the memory of a real head.
  SequenceStore(Size projector, std::size_t capacity);

  Status allocate(std::uint32_t imageCount, std::uint32_t& id);  // `id` is 0 unless the status is ok; ids are never used again
  Status free(std::uint32_t id);
  Status put(std::uint32_t id, std::uint32_t index, Pattern pattern);
  SequenceImage image(std::uint32_t id, std::uint32_t index) const;
  std::uint32_t imageCount(std::uint32_t id) const;  // 0 for an unknown sequence

 private:
  using Images = std::vector<std::shared_ptr<const Pattern>>;

  std::size_t imageBytes_;
  std::size_t free_;
  std::uint32_t lastId_ = 0;
  std::shared_ptr<const Pattern> dark_;
  std::map<std::uint32_t, Images> sequences_;
};

}  // namespace fringix::head
