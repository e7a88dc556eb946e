// The descriptors that the library has open. A forked child closes its copies before it does anything else: they would keep connections
// and the trigger port open when its parent has closed them.
#pragma once

namespace fringix::platform {

void own(int descriptor) noexcept;  // passes over -1

// Closes it, unless it was a parent's: its number may belong to another file by now.
void closeOwn(int descriptor) noexcept;

}  // namespace fringix::platform
