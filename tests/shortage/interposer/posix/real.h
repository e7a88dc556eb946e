// What the functions here have behind them.
#pragma once

#include <dlfcn.h>

#include <cerrno>

#include "interposer/plan.h"

namespace fringix::shortage {

template <class Result>
Result failed(int failure, Result result) noexcept {
  errno = failure;
  return result;
}

// The same function of whoever comes next.
template <class Type>
Type* next(const char* name) noexcept {
  return reinterpret_cast<Type*>(dlsym(RTLD_NEXT, name));
}

}  // namespace fringix::shortage
