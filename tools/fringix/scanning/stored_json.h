// What a scan left in its folder, or a head keeps, as JSON: read back.
#pragma once

#include <fringix/scan.hpp>
#include <string_view>

namespace fringix::tool {

struct StoredScan {
  SLScanPlan plan{};
  std::uint32_t channel = 0;
};

// From the text of a scan.json. Throws std::runtime_error with the reason when it is none.
StoredScan readStoredScan(std::string_view text);

}  // namespace fringix::tool
