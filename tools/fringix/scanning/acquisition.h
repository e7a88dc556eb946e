// The pictures of a scan: from a head that projects the plan, or from files.
#pragma once

#include <cstddef>
#include <fringix/fringix.hpp>
#include <functional>
#include <string>

#include "scanning/scan_task.h"
#include "scanning/steps.h"

namespace fringix::tool {

// Who gets the pictures: exposure by exposure, in the plan's order, and of each the pictures of all cameras, which are numbered as in the
// task. They show the region that the task needs.
using PictureSink = std::function<void(std::size_t camera, Image picture)>;

// Parts that the steps of an acquisition have.
std::size_t partsFromHead(const ScanTask& task);
std::size_t partsFromFolder(const ScanTask& task);

// Has the patterns made, measures and fetches. The head's sequence is freed and its exposure set back in any case.
void acquire(const Device& head, const ScanTask& task, Steps& steps, const PictureSink& sink);

// Reads raw-00.png and so on of a folder, in the order in which they were taken. Pictures may show more than is needed.
void readRaw(const std::string& folder, const ScanTask& task, Steps& steps, const PictureSink& sink);

std::string rawPath(const std::string& folder, const ScanTask& task, std::size_t index);

}  // namespace fringix::tool
