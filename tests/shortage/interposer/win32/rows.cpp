#include <winsock2.h>

#include "interposer/plan.h"

namespace fringix::shortage {

// By the names that they have on Linux: a test means both.
const Row rows[functionCount] = {
    {"malloc", {ERROR_NOT_ENOUGH_MEMORY, nothing}},
    {"mmap", {ERROR_NOT_ENOUGH_MEMORY, nothing}},
    {"socket", {WSAEMFILE, WSAENOBUFS, nothing}},
    {"connect", {WSAECONNREFUSED, WSAETIMEDOUT, nothing}},
    {"bind", {WSAEADDRINUSE, WSAEACCES, nothing}},
    {"accept", {nothing}},
    {"setsockopt", {WSAENOPROTOOPT, nothing}},
    {"send", {shortCount, WSAEWOULDBLOCK, WSAECONNRESET, WSAENOBUFS, nothing}},
    {"recv", {shortCount, WSAECONNRESET, endOfFile, nothing}},
    {"poll", {WSAENOBUFS, nothing}},
    {"pthread_create", {ERROR_NOT_ENOUGH_MEMORY, nothing}},
    {"eventfd", {ERROR_NOT_ENOUGH_MEMORY, nothing}},
    {"pipe", {nothing}},
    {"open", {nothing}},
    {"read", {nothing}},
    {"write", {nothing}},
    {"rename", {nothing}},
};

bool passes(int failure) noexcept { return failure == WSAEWOULDBLOCK; }
bool isHarmless(int failure) noexcept { return passes(failure); }

const char* nameOf(int failure) noexcept {
  switch (failure) {
    case ERROR_NOT_ENOUGH_MEMORY:
      return "ERROR_NOT_ENOUGH_MEMORY";
    case WSAEMFILE:
      return "WSAEMFILE";
    case WSAENOBUFS:
      return "WSAENOBUFS";
    case WSAECONNREFUSED:
      return "WSAECONNREFUSED";
    case WSAETIMEDOUT:
      return "WSAETIMEDOUT";
    case WSAEADDRINUSE:
      return "WSAEADDRINUSE";
    case WSAEACCES:
      return "WSAEACCES";
    case WSAENOPROTOOPT:
      return "WSAENOPROTOOPT";
    case WSAEWOULDBLOCK:
      return "WSAEWOULDBLOCK";
    case WSAECONNRESET:
      return "WSAECONNRESET";
    default:
      return "another failure";
  }
}

}  // namespace fringix::shortage
