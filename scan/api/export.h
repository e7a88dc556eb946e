// The frame around every export: nothing that is thrown gets past it, and what was wrong is kept for the calling thread.
#pragma once

#include <cstdint>
#include <exception>
#include <initializer_list>
#include <new>

#include "fringix/scan.h"
#include "scan/failure.h"

namespace fringix::scan {

void keepErrorText(const char* text) noexcept;

inline void requireNotNull(std::initializer_list<const void*> pointers) {
  for (const void* const pointer : pointers) {
    if (pointer == nullptr) throw Failure(Status::badParameter, "a pointer is null");
  }
}

template <class Body>
std::int32_t guarded(Body&& body) noexcept {
  try {
    body();
    return SLSCAN_OKAY;
  } catch (const Failure& failure) {
    keepErrorText(failure.what());
    return static_cast<std::int32_t>(failure.status());
  } catch (const std::bad_alloc&) {
    keepErrorText("there is not enough memory");
  } catch (const std::exception& error) {
    keepErrorText(error.what());
  } catch (...) {
    keepErrorText("an internal failure");
  }
  return SLSCAN_SYSTEM_ERROR;
}

}  // namespace fringix::scan
