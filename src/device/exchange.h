// One command on its way to the head and back, written as a row: name, checks, what goes out, what comes back, how it ends.
//
//   return command("84MSG_SLGetGPIOStatus").since(2400).finishIf(state == nullptr).send(line).receive(state).status();
//
// The session lock is held for the life of the exchange. Steps take effect in the order written, and the first one that fails, or that
// finishes the command early, decides the result: all later steps do nothing. The name leaves with the first step that sends or
// receives, so the checks before it cost no traffic. Without a connection the result is SLSYSTEM_ERROR. A failed transfer drops the
// session's connection and gives SLCONNECTION_ERROR.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "diagnosis/status.h"
#include "net/command_channel.h"
#include "platform/reentrant_lock.h"

namespace fringix {

class CameraDevice;

// What a command gives when the head's protocol version cannot be fetched: most hide the failure behind SLVERSION_TOO_OLD.
enum class FetchFailure { tooOld, ownCode };

class Exchange {
 public:
  Exchange(CameraDevice& session, const char* name);

  bool undecided();  // connected, and no step has decided the result

  // Checks. requireFirst() and the two that finish the command do not look at the connection: where they stand in the row decides.
  Exchange& requireFirst(bool condition);  // SLBAD_PARAMETER otherwise
  Exchange& require(bool condition);       // SLBAD_PARAMETER otherwise
  Exchange& connectedOr(int result);       // another result than SLSYSTEM_ERROR without a connection
  Exchange& since(std::int32_t minimumVersion, FetchFailure onFetchFailure = FetchFailure::tooOld);
  Exchange& finishIf(bool condition);      // success is the result
  Exchange& finishUnlessZero(int result);  // any other value is the result

  // Sends: integers in one send each, or all of a block in one. send() without a value just lets the name go.
  template <class... Integers>
  Exchange& send(Integers... values);
  template <class... Integers>
  Exchange& block(Integers... values);
  Exchange& text(const char* text);  // zero-terminated; null is fine as long as an earlier step has decided
  Exchange& bytes(const void* data, std::size_t size);

  // Receives; the integer's place may be null: it is read and dropped then.
  Exchange& receive(std::int32_t* out);
  Exchange& receive(std::uint32_t* out);
  Exchange& receiveText(std::string* out);
  Exchange& receiveBytes(void* buffer, std::size_t size);

  // Ends.
  int status();  // the head's status word: 0 gives 0, anything else SLSYSTEM_ERROR
  int result();  // no status word follows
  // Receives a picture, which no status word follows: `noPicture` when it begins with the two bytes that stand for none.
  int picture(std::uint8_t* pixels, std::size_t size, int noPicture = SLSYSTEM_ERROR);
  int finish(int result);   // this one; what the head still sends is not read
  int abandon(int result);  // this one, and the connection is dropped

 private:
  bool requested();  // undecided, and the name is on its way
  void fail();
  CommandChannel& channel();

  template <class Step>
  Exchange& transfer(Step&& step) {
    if (requested() && step(channel()) != 0) fail();
    return *this;
  }

  CameraDevice& session_;
  std::unique_lock<platform::ReentrantLock> lock_;
  const char* name_;
  bool nameSent_ = false;
  std::optional<int> result_;
};

template <class... Integers>
Exchange& Exchange::send(Integers... values) {
  requested();
  (transfer([&](CommandChannel& channel) { return channel.SendInt(static_cast<std::int32_t>(values)); }), ...);
  return *this;
}

template <class... Integers>
Exchange& Exchange::block(Integers... values) {
  return transfer([&](CommandChannel& channel) { return channel.SendBlock(static_cast<std::int32_t>(values)...); });
}

}  // namespace fringix
