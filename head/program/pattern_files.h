// Stored patterns as PNG files, for people to look at.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "head/optics/pattern.h"

namespace fringix::head {

// For HeadSettings::patternStored. Makes the folder at once and throws std::filesystem::filesystem_error when it cannot; a file that
// cannot be written later is reported on standard error, and the head goes on.
std::function<void(std::uint32_t sequence, std::uint32_t image, const Pattern& pattern)> patternWriter(const std::string& folder,
                                                                                                       std::int32_t serial);

}  // namespace fringix::head
