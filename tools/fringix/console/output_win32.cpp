#include "console/output.h"

namespace fringix::tool {

// Both are so by themselves here.
void prepareStandardStreams() {}

}  // namespace fringix::tool
