#include "console/explain.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace fringix::tool {
namespace {

constexpr std::string_view anyOperation;
constexpr std::int32_t anyCode = SLALL_OKAY;

// Rows speak of operations that begin with the same letters; the first one that fits counts. Texts may name {address}, {port} and
// {operation}.
struct Row {
  std::string_view operation;
  std::int32_t code;
  const char* what;
  const char* next;
};

constexpr Row rows[] = {
    {"SLDevAlloc", SLCONNECTION_ERROR, "no head answers at {address}:{port}", "Check the address and that the head is on."},
    {"SLDevAlloc", SLHANDSHAKE_TIMEOUT, "{address}:{port} accepts connections, but does not greet like a head",
     "Check that this is the head's address. If it is, switch the head off and on again."},
    {"SLDevAlloc", SLSYSTEM_ERROR, "the head at {address} reports a failure when asked for its camera",
     "Switch the head off and on again."},
    {"SLShowDeviceDialog", SLCONNECTION_ERROR, "the head that you picked does not answer any more",
     "Check that it is on and connected, then pick it again."},
    {"SLGetLiveImageROI", SLBAD_PARAMETER, "the region does not lie within the picture, or the factor does not divide its sides",
     "\"fringix info {address}\" shows the size of the camera's pictures."},
    {"SLGetLiveImageLowRes", SLBAD_PARAMETER, "the factor does not divide the sides of the camera's pictures",
     "\"fringix info {address}\" shows their size."},
    {"SLGetLiveImage", SLSYSTEM_ERROR, "the head at {address} has no picture to give",
     "Wait a moment and try again. If it stays so, switch the head off and on again."},
    {"SLGetImageIndexROI", SLBAD_PARAMETER, "the region does not lie within the picture",
     "\"fringix info {address}\" shows the size of the camera's pictures."},
    {"SLGetImageIndex", SLBAD_PARAMETER, "the head at {address} has no such picture", "Check its number and the camera channel."},
    {"SLGetImageIndex", SLSYSTEM_ERROR, "the head at {address} has no such picture", "Check its number and the camera channel."},
    {"SLSeqAlloc", SLSYSTEM_ERROR, "the head at {address} does not allocate such a sequence",
     "Ask for fewer images, or free sequences that are no longer needed."},
    {"SLSeqMakeGrayCode", SLBAD_PARAMETER, "the second number of a Gray code is above 23", "Give 0 to 23."},
    {"SLSeq", SLSYSTEM_ERROR, "the head at {address} refuses {operation}",
     "Check that the sequence exists and has such an image, and the numbers: what they mean is the head's business."},
    {"SLShowImageFromSeq", SLSYSTEM_ERROR, "the head at {address} does not show that image", "Check that the sequence exists and has it."},
    {"SLShowImage", SLBAD_PARAMETER, "the image does not fit on the projector", "\"fringix info {address}\" shows the projector's size."},
    {"SLStartMeasurement", SLSYSTEM_ERROR, "the head at {address} does not measure with that sequence", "Check that it exists."},
    {"SLStartFromTo", SLSYSTEM_ERROR, "the head at {address} does not measure with those images",
     "Check that the sequence exists and has them."},
    {"SLStart", SLCONNECTION_ERROR, "the connection to the head at {address} broke during the measurement, or that took over 30 seconds",
     "Measure long sequences in parts, with --from and --to. Otherwise check the cable and that the head is on."},
    {"SLSetMask", SLSYSTEM_ERROR, "the head at {address} refuses the mask",
     "Check its size and the selector: \"fringix info {address}\" shows the size of the projector."},
    {"SLSaveData", SLSYSTEM_ERROR, "the head at {address} could not store the block",
     "Check its name, and whether the head has room: which names it takes is the head's business."},
    {"SLLoadData", SLSYSTEM_ERROR, "the head at {address} could not give the block", "Check its name."},
    {"SLReadIniInt", SLSYSTEM_ERROR, "the head at {address} has no such configuration value", "Check section and key."},
    {"SLWriteIniInt", SLSYSTEM_ERROR, "the head at {address} refuses the configuration value",
     "Check section, key and value: what they may be is the head's business."},
    {"SLGetGPIOStatus", SLSYSTEM_ERROR, "the head at {address} has no such line", "Check the line's number."},
    {"SLSetGPIOValue", SLSYSTEM_ERROR, "the head at {address} refuses to set the line", "Check the line's number and the value."},
    {"SLExecRS232", SLSYSTEM_ERROR, "the device at the serial port of the head at {address} gives no answer",
     "Check the command, and that the device is connected and on."},
    {"SLExecProjCmd", SLSYSTEM_ERROR, "the projector of the head at {address} refuses the command",
     "Check its number and argument: what they mean is the projector's business."},
    {anyOperation, SLCONNECTION_ERROR, "the connection to the head at {address} broke during {operation}",
     "Check the cable and that the head is on, then run the command again."},
    {anyOperation, SLSYSTEM_ERROR, "the head at {address} reports a failure of {operation}",
     "Run the command again with --trace to see the calls before it."},
    {anyOperation, SLVERSION_TOO_OLD, "the head at {address} is too old for {operation}",
     "\"fringix info {address}\" shows its protocol version. Bring the head's software up to date."},
    {"SLSaveData", anyCode, "the head at {address} does not take a block of this size and name",
     "Try a shorter name or a smaller file: what the number means is told by the head's documentation."},
    {"SLLoadData", anyCode, "the head at {address} does not take the block's name",
     "Check the name: what the number means is told by the head's documentation."},
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
  return std::string_view(error.operation()).starts_with(row.operation) && (row.code == anyCode || row.code == error.code());
}

}  // namespace

std::string inBrackets(const Error& error) {
  return error.code() > 0 ? fmt::format("({})", error.code()) : fmt::format("({}, {})", error.name(), error.code());
}

Explanation explain(const Error& error, const std::string& address) {
  const Row& row = *std::find_if(std::begin(rows), std::end(rows), [&](const Row& candidate) { return fits(candidate, error); });
  const auto fill = [&](const char* text) {
    return fmt::format(fmt::runtime(text), fmt::arg("address", address), fmt::arg("port", commandPort),
                       fmt::arg("operation", error.operation()));
  };
  return {fmt::format("{} {}", fill(row.what), inBrackets(error)), fill(row.next), error.code() > 0 ? "head" : error.name(), error.code()};
}

}  // namespace fringix::tool
