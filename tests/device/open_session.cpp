#include "device/open_session.h"

#include <stdexcept>

#include "api/device_registry.h"
#include "fringix/fringix.h"

namespace fringix::test {

Script handshake(const HeadSizes& sizes) {
  return {reply(integer(1)),
          expect(integer(3300)),
          expect(text("40MSG_SLGetMaxImageSize")),
          reply(integers(sizes.cameraWidth, sizes.cameraHeight, 0)),
          expect(text("45MSG_SLGetProjDimension")),
          reply(integers(sizes.projectorWidth, sizes.projectorHeight, 0))};
}

Bytes handshakeBytes() { return integer(3300) + text("40MSG_SLGetMaxImageSize") + text("45MSG_SLGetProjDimension"); }

OpenSession::OpenSession(const Script& script, const HeadSizes& sizes, const char* address) : head_(handshake(sizes) + script, address) {
  if (const int result = SLDevAlloc(address, &handle_); result != SLALL_OKAY) {
    throw std::runtime_error("the session did not open: " + std::to_string(result));
  }
}

OpenSession::~OpenSession() { free(); }

ICameraDevice& OpenSession::device() const { return *DeviceRegistry::instance().find(handle_); }

int OpenSession::free() {
  if (!open_) return SLUNKNOWN_DEVICE_ID;
  open_ = false;
  return SLDevFree(handle_);
}

Bytes OpenSession::sent() {
  free();
  const Bytes farewell = text("ByeBye=");
  Bytes sent = head_.received().substr(handshakeBytes().size());
  if (sent.ends_with(farewell)) sent.resize(sent.size() - farewell.size());
  return sent;
}

}  // namespace fringix::test
