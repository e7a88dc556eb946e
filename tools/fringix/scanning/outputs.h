// The files that a scan leaves.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "scanning/scan_result.h"
#include "scanning/steps.h"

namespace fringix::tool {

enum class LengthUnit { millimetre, metre };

// Makes the folder and throws unless files can be written there: asked before the head is.
void requireFolder(const std::string& folder);

void writeOutputs(const std::string& folder, const ScanResult& result, LengthUnit unit, std::span<const StepTime> times);

// What a later scan needs to compute again: the pictures in the order in which they were taken, scan.json aside.
void writeRaw(const std::string& folder, const ScanTask& task, std::span<const Image> pictures);

}  // namespace fringix::tool
