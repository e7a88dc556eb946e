#include "explain.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace fringix::tool {
namespace {

constexpr std::string_view anyOperation;
constexpr std::int32_t anyCode = SLALL_OKAY;

// The first row that fits counts. Texts may name {address}, {port} and {operation}.
struct Row {
  std::string_view operation;
  std::int32_t code;
  const char* what;
  const char* next;
};

constexpr Row rows[] = {
    {"SLDevAlloc", SLCONNECTION_ERROR, "no head answers at {address}:{port}",
     "Check the address and that the head is on. Connecting takes until the operating system gives up."},
    {"SLDevAlloc", SLHANDSHAKE_TIMEOUT, "{address}:{port} accepts connections, but does not greet like a head",
     "Check that this is the head's address. If it is, switch the head off and on again."},
    {"SLDevAlloc", SLSYSTEM_ERROR, "the head at {address} reports a failure when asked for its camera",
     "Switch the head off and on again."},
    {"SLGetLiveImage", SLSYSTEM_ERROR, "the head at {address} has no picture to give",
     "Wait a moment and try again. If it stays so, switch the head off and on again."},
    {anyOperation, SLCONNECTION_ERROR, "the connection to the head at {address} broke during {operation}",
     "Check the cable and that the head is on, then run the command again."},
    {anyOperation, SLSYSTEM_ERROR, "the head at {address} reports a failure of {operation}",
     "Run the command again with --trace to see the calls before it."},
    {anyOperation, SLVERSION_TOO_OLD, "the head at {address} is too old for {operation}",
     "\"fringix info {address}\" shows its protocol version. Bring the head's software up to date."},
    {anyOperation, SLBAD_PARAMETER, "{operation} refuses a value as out of range",
     "Check the values given; \"fringix info {address}\" shows the sizes that limit them."},
    {anyOperation, SLUNKNOWN_SEQUENCE_ID, "the head at {address} does not know the sequence", "Check the sequence's number."},
    {anyOperation, SLMEASUREMENT_FAILED, "the measurement failed on the head at {address}",
     "Check the pattern sequence and the camera's settings, then measure again."},
    {anyOperation, SLVERSION_MISMATCH, "the versions of the library and of the head at {address} do not match",
     "\"fringix info {address}\" shows both."},
    {anyOperation, anyCode, "{operation} failed", "Run the command again with --trace to see the calls before it."},
};

bool fits(const Row& row, const Error& error) {
  return (row.operation == anyOperation || row.operation == error.operation()) && (row.code == anyCode || row.code == error.code());
}

}  // namespace

Explanation explain(const Error& error, const std::string& address) {
  const Row& row = *std::find_if(std::begin(rows), std::end(rows), [&](const Row& candidate) { return fits(candidate, error); });
  const auto fill = [&](const char* text) {
    return fmt::format(fmt::runtime(text), fmt::arg("address", address), fmt::arg("port", commandPort),
                       fmt::arg("operation", error.operation()));
  };
  return {fmt::format("{} ({}, {})", fill(row.what), error.name(), error.code()), fill(row.next)};
}

}  // namespace fringix::tool
