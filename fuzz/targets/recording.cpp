// What a recording is made of, and the bytes of a connection taken apart into commands, in any pieces.
//
// An input is a row of pieces: a byte that tells who speaks, or whether a trigger arrives, and how much, and the bytes.
#include <stdexcept>

#include "fuzz/conversation_turns.h"
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "protocol/encoding.h"
#include "recording/commands.h"
#include "recording/format.h"

namespace fringix::fuzz::recording_target {

namespace {

using protocol::Sender;

void decode(Bytes input) {
  try {
    if (input.size() >= recording::headerSize) recording::encode(recording::decodeHeader(input.first(recording::headerSize)));
    recording::decodeEndpoint(textOf(input));
  } catch (const recording::BadRecording&) {
  }
  if (input.size() < recording::recordHeadSize) return;
  const recording::RecordHead head = recording::decodeRecordHead(input.first(recording::recordHeadSize));
  const recording::RecordHead again = recording::decodeRecordHead(recording::encode(head));
  require(again.size == head.size && again.kind == head.kind && again.time == head.time && again.checksum == head.checksum,
          "a record's head is the same when it is written anew");
}

std::size_t takeOut(recording::Assembler& assembler) {
  std::size_t bytes = 0;
  while (const auto command = assembler.next()) {
    for (const recording::FieldValue& value : command->fields) {
      require(command->bytesOf(value).size() == value.size, "a field lies within what its sender said");
    }
    bytes += command->by(Sender::client).bytes.size() + command->by(Sender::head).bytes.size();
  }
  return bytes;
}

void run(Bytes input) {
  decode(input);
  Input in(input);
  recording::Assembler assembler(1);
  std::size_t said = 0;
  std::size_t taken = 0;
  for (std::uint64_t time = 0; !in.empty(); ++time) {
    const std::uint8_t shape = in.byte();
    if (shape == 255) {
      assembler.addTrigger(time);
      continue;
    }
    const std::string bytes = in.text(shape / 2);
    assembler.say(shape % 2 == 0 ? Sender::client : Sender::head, time, bytes);
    said += bytes.size();
    taken += takeOut(assembler);
  }
  assembler.end();
  taken += takeOut(assembler);
  require(taken == said, "every byte that was said belongs to a command");
}

void add(std::string& seed, bool isHead, const std::string& bytes) {
  for (std::size_t i = 0; i < bytes.size(); i += 127) {
    const std::string piece = bytes.substr(i, 127);
    seed += static_cast<char>(piece.size() * 2 + (isHead ? 1 : 0));
    seed += piece;
  }
}

std::vector<std::string> seeds() {
  std::vector<std::string> all;
  for (const Conversation& conversation : conversations()) {
    std::string& seed = all.emplace_back();
    add(seed, true, protocol::encodeInteger(1));
    add(seed, false, protocol::encodeInteger(3300));
    for (const ConversationTurn& turn : conversation) {
      add(seed, false, protocol::encodeText(turn.command) + turn.sent);
      add(seed, true, turn.answered);
    }
  }
  return all;
}

const Registered target("recording", run, seeds);

}  // namespace

}  // namespace fringix::fuzz::recording_target
