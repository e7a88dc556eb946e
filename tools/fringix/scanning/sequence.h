// A pattern sequence on a head, for as long as the object lives.
#pragma once

#include <cstdint>
#include <fringix/fringix.hpp>

namespace fringix::tool {

class Sequence {
 public:
  Sequence(const Device& head, std::uint32_t images) : head_(head), id_(head.allocateSequence(images)) {}
  ~Sequence() {
    try {
      head_.freeSequence(id_);
    } catch (const Error&) {  // the connection is lost, and with it the wish
    }
  }
  Sequence(const Sequence&) = delete;
  Sequence& operator=(const Sequence&) = delete;

  std::uint32_t id() const { return id_; }

 private:
  const Device& head_;
  std::uint32_t id_;
};

}  // namespace fringix::tool
