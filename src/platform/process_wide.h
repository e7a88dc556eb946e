// What a process has one of: it outlasts all that ends with the process, and has to begin anew in a child that is forked, where the threads
// that held its locks do not exist.
#pragma once

#include <cstddef>
#include <new>

namespace fringix::platform {

// An object that is never destroyed.
template <class Object>
class Lasting {
 public:
  Lasting() : object_(*::new (place_) Object) {}
  Lasting(const Lasting&) = delete;
  Lasting& operator=(const Lasting&) = delete;

  Object& operator*() const noexcept { return object_; }
  Object* operator->() const noexcept { return &object_; }

 private:
  alignas(Object) std::byte place_[sizeof(Object)];
  Object& object_;
};

// Has `renew` called in every child that is forked from now on, before anything else runs there. False when there was no memory for it.
bool inForkedChildren(void (*renew)()) noexcept;

// What the parent's threads had in use, and may have left half done, is neither touched nor destroyed.
template <class Object>
void beginAnew(Object& object) noexcept {
  ::new (static_cast<void*>(&object)) Object;
}

}  // namespace fringix::platform
