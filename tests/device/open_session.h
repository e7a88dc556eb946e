// A session, opened through the exports, with a scripted head that has shaken hands and goes on with the test's own script.
#pragma once

#include "device/ICameraDevice.h"
#include "support/scripted_head.h"

namespace fringix::test {

struct HeadSizes {
  int cameraWidth = 8;
  int cameraHeight = 4;
  int projectorWidth = 6;
  int projectorHeight = 5;
};

// What the head does until a session is open, and what the client sends meanwhile.
Script handshake(const HeadSizes& sizes = {});
Bytes handshakeBytes();

class OpenSession {
 public:
  explicit OpenSession(const Script& script, const HeadSizes& sizes = {}, const char* address = "127.0.0.1");
  ~OpenSession();

  int handle() const { return handle_; }
  ICameraDevice& device() const;

  void awaitEndOfScript() { head_.received(); }

  // Frees the session; the status of SLDevFree.
  int free();

  // Frees the session; the bytes that the client sent between the handshake and the farewell, or the break of the connection.
  Bytes sent();

 private:
  ScriptedHead head_;
  int handle_ = -1;
  bool open_ = true;
};

}  // namespace fringix::test
