// The wrapper in a file whose author has macros named max and min, as a well-known system header makes them.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#define max(a, b) (((a) > (b)) ? (a) : (b))
#define min(a, b) (((a) < (b)) ? (a) : (b))

#include "fringix/fringix.hpp"

namespace fringix {
namespace {

TEST(WrapperMacrosTest, TheWrapperCompilesBesideThem) {
  const Range range{1, 5};
  EXPECT_EQ(max(range.min, range.max), 5);
  EXPECT_EQ(min(range.min, range.max), 1);
}

}  // namespace
}  // namespace fringix
