// A head that does exactly what a test tells it, byte by byte, and keeps every byte that the client sent.
//
//   ScriptedHead head({reply(integer(1)), expect(integer(3300)), cut()});
//
// It listens on the command port from its construction on and serves one connection per script, one after the other. After the last
// step of a script it goes on reading until the client closes. A head that stands still is let go of by received(), or its end.
#pragma once

#include <string>
#include <thread>
#include <vector>

#include "platform/event.h"
#include "platform/socket.h"
#include "support/wire.h"

namespace fringix::test {

struct Step {
  enum class Kind { expect, reply, dribble, stall, standStill, cut, reset } kind;
  Bytes bytes;
};

inline Step expect(Bytes bytes) { return {Step::Kind::expect, std::move(bytes)}; }    // read as many bytes; others end the script
inline Step reply(Bytes bytes) { return {Step::Kind::reply, std::move(bytes)}; }      // send at once
inline Step dribble(Bytes bytes) { return {Step::Kind::dribble, std::move(bytes)}; }  // send one byte at a time
inline Step stall() { return {Step::Kind::stall, {}}; }                               // say nothing more, read on
inline Step standStill() { return {Step::Kind::standStill, {}}; }                     // not even read, until the test lets go
inline Step cut() { return {Step::Kind::cut, {}}; }                                   // close the connection in order
inline Step reset() { return {Step::Kind::reset, {}}; }                               // reset the connection

using Script = std::vector<Step>;

Script operator+(Script first, const Script& second);

class ScriptedHead {
 public:
  explicit ScriptedHead(Script script, const char* address = "127.0.0.1") : ScriptedHead(std::vector<Script>{std::move(script)}, address) {}
  explicit ScriptedHead(std::vector<Script> scripts, const char* address = "127.0.0.1");
  ~ScriptedHead();

  // Waits until every script has been served to its end; all the bytes that clients sent, in order.
  const Bytes& received();

 private:
  void serveAll(const std::vector<Script>& scripts);
  void serve(platform::Socket& connection, const Script& script);
  bool perform(platform::Socket& connection, const Step& step);
  bool readExpected(platform::Socket& connection, const Bytes& expected);
  void drain(platform::Socket& connection);

  platform::SocketLibrary library_;
  platform::Socket listener_;
  platform::ManualResetEvent letGo_;
  Bytes received_;
  std::thread thread_;
};

}  // namespace fringix::test
