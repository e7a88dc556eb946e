// What reading and writing have in common with the library that does both.
#pragma once

#include <spng.h>

#include <memory>
#include <new>

namespace fringix::png {

struct FreeContext {
  void operator()(spng_ctx* context) const noexcept { spng_ctx_free(context); }
};
using Context = std::unique_ptr<spng_ctx, FreeContext>;

inline Context makeContext(int flags) {
  Context context(spng_ctx_new(flags));
  if (!context) throw std::bad_alloc();
  return context;
}

}  // namespace fringix::png
