#include "scanning/exposures.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <span>

#include "console/explain.h"

namespace fringix::tool {
namespace {

constexpr const char* section = "Camera";
constexpr const char* key = "Exposure";
constexpr double factors[longestSeries] = {1, 0.25, 4, 0.5, 2};

}  // namespace

std::vector<std::int32_t> exposureSeries(std::int32_t present, std::size_t count) {
  std::vector<std::int32_t> series;
  for (const double factor : std::span(factors).first(count))
    series.push_back(std::max(1, static_cast<std::int32_t>(std::lround(present * factor))));
  return series;
}

std::int32_t presentExposure(const Device& head) {
  try {
    return head.readIni(section, key);
  } catch (const Error& error) {
    if (error.code() == SLCONNECTION_ERROR) throw;
    throw Failure({fmt::format("the head does not tell its exposure {}", inBrackets(error)),
                   "It has no configuration value Exposure in the section Camera: leave --exposure and --hdr out."});
  }
}

ChangedExposure::~ChangedExposure() {
  try {
    head_.writeIni(section, key, before_);
  } catch (const Error&) {  // the connection is lost, and with it the wish
  }
}

void ChangedExposure::set(std::int32_t exposure) const {
  try {
    head_.writeIni(section, key, exposure);
  } catch (const Error& error) {
    if (error.code() == SLCONNECTION_ERROR) throw;
    throw Failure({fmt::format("the head refuses an exposure of {} us {}", exposure, inBrackets(error)),
                   fmt::format("Give others with --exposure: which ones it takes is the head's business. It has {} us now.", before_)});
  }
}

}  // namespace fringix::tool
