// The pictures of a scan: from a head that projects the plan, or from files.
#pragma once

#include <cstdint>
#include <fringix/fringix.hpp>
#include <fringix/scan.hpp>
#include <functional>
#include <string>

#include "scanning/steps.h"

namespace fringix::tool {

// Who gets the pictures, one after the other in the plan's order.
using PictureSink = std::function<void(Image)>;

// Parts that the steps of an acquisition have.
std::size_t partsFromHead(const SLScanPlan& plan);
std::size_t partsFromFolder(const SLScanPlan& plan);

// Uploads the plan, measures and fetches. The head's sequence is freed in any case.
void acquire(const Device& head, const SLScanPlan& plan, std::uint32_t channel, Steps& steps, const PictureSink& sink);

// Reads raw-00.png and so on of a folder.
void readRaw(const std::string& folder, const SLScanPlan& plan, Steps& steps, const PictureSink& sink);

std::string rawPath(const std::string& folder, const SLScanPlan& plan, std::size_t index);

}  // namespace fringix::tool
