// A recording without what tells whose it is.
#pragma once

#include <string>

namespace fringix::tool {

// Serial numbers and addresses become others, the same ones wherever they stand.
struct Anonymity {
  bool data = false;      // data blocks become other bytes, equal ones the same
  bool pictures = false;  // so do pictures, patterns and masks
};

void anonymiseRecording(const std::string& file, const Anonymity& anonymity, const std::string& output);  // throws Failure

}  // namespace fringix::tool
