// What a step of the chain throws: a status code of scan.h and a text that says what was wrong.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace fringix::scan {

enum class Status : std::int32_t { badParameter = -3, systemError = -4, badCalibration = -50, badPictures = -51 };

class Failure : public std::runtime_error {
 public:
  Failure(Status status, const std::string& text) : std::runtime_error(text), status_(status) {}
  Status status() const noexcept { return status_; }

 private:
  Status status_;
};

}  // namespace fringix::scan
