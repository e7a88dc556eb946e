#include <cerrno>
#include <cstring>

#include "interposer/plan.h"

namespace fringix::shortage {

const Row rows[functionCount] = {
    {"malloc", {ENOMEM, nothing}},
    {"mmap", {ENOMEM, nothing}},
    {"socket", {EMFILE, ENOBUFS, nothing}},
    {"connect", {EINTR, ECONNREFUSED, ETIMEDOUT, nothing}},
    {"bind", {EADDRINUSE, EACCES, nothing}},
    {"accept", {EINTR, EMFILE, ECONNABORTED, nothing}},
    {"setsockopt", {ENOPROTOOPT, nothing}},
    {"send", {shortCount, EINTR, EAGAIN, ECONNRESET, ENOBUFS, nothing}},
    {"recv", {shortCount, EINTR, ECONNRESET, endOfFile, nothing}},
    {"poll", {EINTR, ENOMEM, nothing}},
    {"pthread_create", {EAGAIN, nothing}},
    {"eventfd", {EMFILE, nothing}},
    {"pipe", {EMFILE, nothing}},
    {"open", {EINTR, EMFILE, ENOSPC, nothing}},
    {"read", {shortCount, EINTR, EIO, nothing}},
    {"write", {shortCount, EINTR, ENOSPC, EIO, nothing}},
    {"rename", {ENOSPC, nothing}},
};

bool passes(int failure) noexcept { return failure == EINTR || failure == EAGAIN || failure == ECONNABORTED; }
bool isHarmless(int failure) noexcept { return failure == EINTR || failure == EAGAIN; }
const char* nameOf(int failure) noexcept { return strerrorname_np(failure); }

}  // namespace fringix::shortage
