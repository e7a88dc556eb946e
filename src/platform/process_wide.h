// What a process has one of: it outlasts all that ends with the process, and has to begin anew in a child that is forked, where the threads
// that held its locks do not exist.
#pragma once

#include <new>

namespace fringix::platform {

// An object that is never destroyed.
template <class Object>
union Lasting {
  Lasting() : object() {}
  ~Lasting() {}
  Lasting(const Lasting&) = delete;
  Lasting& operator=(const Lasting&) = delete;

  Object object;
};

// Has `renew` called in every child that is forked from now on, before anything else runs there. False when there was no memory for it.
bool inForkedChildren(void (*renew)()) noexcept;

// What the parent's threads had in use, and may have left half done, is neither touched nor destroyed.
template <class Object>
void beginAnew(Object& object) noexcept {
  ::new (static_cast<void*>(&object)) Object;
}

}  // namespace fringix::platform
