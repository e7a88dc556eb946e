// A user who operates the device selector as told, from a thread of his own, while the test's thread shows it.
#pragma once

#include <functional>
#include <string>
#include <thread>

#include "shown_dialog.h"
#include "support/announcing_head.h"

namespace fringix::test {

class User {
 public:
  // A dialog that still waits when `drive` throws is cancelled, so that the test goes on, and fails.
  explicit User(std::function<void(const ShownDialog&)> drive);
  ~User() { thread_.join(); }
  User(const User&) = delete;
  User& operator=(const User&) = delete;

 private:
  std::thread thread_;
};

// The identifiers of the buttons.
inline constexpr int ok = 1;
inline constexpr int cancel = 2;
inline constexpr int rescan = 1005;

// A head for each serial number, with an address of its own where datagrams can be sent from a chosen one.
std::string addressOf(int serial);
Announcement head(int serial);

}  // namespace fringix::test
