// Named data blocks. A client states the sizes first and sends the rest only when the head accepts them.
#include <stdexcept>
#include <string>
#include <utility>

#include "head/commands/commands.h"
#include "head/commands/transfers.h"
#include "head/model/data_name.h"

namespace fringix::head {

namespace {

enum class Acceptance : std::int32_t { accepted = 0, noNameIsThatLong = 1, noRoomForThatSize = 2 };

// `nameLength` counts the NUL at the name's end.
Acceptance acceptName(std::uint32_t nameLength) {
  return nameLength >= 2 && nameLength <= longestDataName + 1 ? Acceptance::accepted : Acceptance::noNameIsThatLong;
}

Acceptance acceptLengths(Call& call, std::uint32_t size, std::uint32_t nameLength) {
  return size >= 1 && size <= call.model.data().capacity() ? acceptName(nameLength) : Acceptance::noRoomForThatSize;
}

bool answer(Call& call, Acceptance acceptance) {
  call.wire.writeInt(static_cast<std::int32_t>(acceptance));
  return acceptance == Acceptance::accepted;
}

// Without its NUL, and empty when that is missing: then it is no block's name.
std::string readName(Call& call, std::uint32_t length) {
  const auto bytes = call.wire.readBlock(length);
  return bytes.back() == 0 ? std::string(bytes.begin(), bytes.end() - 1) : std::string();
}

void save(Call& call) {
  const auto [size, nameLength] = call.wire.readInts<2>();
  if (const Acceptance first = acceptLengths(call, size, nameLength); first != Acceptance::accepted) return void(answer(call, first));
  const auto room = takeRoom(call, size);
  if (!answer(call, room ? Acceptance::accepted : Acceptance::noRoomForThatSize)) return;
  const std::string name = readName(call, nameLength);
  call.reply(call.model.saveBlock(name, call.wire.readBlock(size)));
}

void load(Call& call) {
  const auto [nameLength] = call.wire.readInts<1>();
  if (!answer(call, acceptName(nameLength))) return;
  const std::string name = readName(call, nameLength);
  const auto [noRoom, block, room] = borrowBlock(call, name);
  if (noRoom) throw std::runtime_error("no room to send \"" + name + "\" beside what other clients are sending and fetching");
  call.wire.writeInt(block != nullptr ? static_cast<std::int32_t>(block->size()) : 0);
  if (block == nullptr || block->empty()) return;  // after the size 0 the client waits for nothing
  call.wire.writeBytes(block->data(), block->size());
  call.reply(Status::ok);
}

constexpr Command commands[] = {
    {"80MSG_SLSaveDataToFile", 0, save},
    {"81MSG_SLReadDataFromFile", 0, load},
};

}  // namespace

CommandFamily dataCommands() { return commands; }

}  // namespace fringix::head
