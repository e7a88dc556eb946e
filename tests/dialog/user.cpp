#include "user.h"

#include <gtest/gtest.h>

#include <exception>
#include <utility>

namespace fringix::test {

namespace {

void operate(const std::function<void(const ShownDialog&)>& drive) {
  const ShownDialog dialog;
  try {
    drive(dialog);
  } catch (const std::exception& failure) {
    ADD_FAILURE() << failure.what();
    dialog.press(cancel);
  }
}

}  // namespace

User::User(std::function<void(const ShownDialog&)> drive)
    : thread_([drive = std::move(drive)] {
        try {
          operate(drive);
        } catch (const std::exception& failure) {
          ADD_FAILURE() << failure.what();
        }
      }) {}

std::string addressOf(int serial) {
  static const bool chosen = canAnswerFrom("127.0.0.3");
  return chosen ? "127.0.0." + std::to_string(serial) : "127.0.0.1";
}

Announcement head(int serial) { return {announcement(serial, 1, serial * 10), {}, addressOf(serial)}; }

}  // namespace fringix::test
