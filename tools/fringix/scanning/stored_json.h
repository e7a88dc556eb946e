// What a scan left in its folder, or a head keeps, as JSON: read back.
#pragma once

#include <cstdint>
#include <fringix/fringix.hpp>
#include <fringix/scan.hpp>
#include <optional>
#include <string_view>
#include <vector>

namespace fringix::tool {

struct StoredScan {
  SLScanPlan plan{};
  bool generated = false;
  std::vector<std::uint32_t> channels{};
  std::vector<std::int32_t> exposures{};
  std::optional<Region> roi{};
};

// From the text of a scan.json. Throws std::runtime_error with the reason when it is none.
StoredScan readStoredScan(std::string_view text);

}  // namespace fringix::tool
