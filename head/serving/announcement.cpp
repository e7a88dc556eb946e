#include "head/serving/announcement.h"

#include <sstream>

namespace fringix::head {

namespace {

constexpr std::size_t tooLong = 299;  // one byte more than clients take

std::string properAnnouncement(const HeadModel& model) {
  const HeadSettings& head = model.settings();
  std::ostringstream text;
  text << "SERIAL " << head.serial << " MODEL " << head.modelCode << " PROTOCOL " << head.protocolVersion << ' ' << channelCount
       << " CAMERA_WIDTH " << head.camera.width << " CAMERA_HEIGHT " << head.camera.height << " PROJECTOR_WIDTH " << head.projector.width
       << " PROJECTOR_HEIGHT " << head.projector.height << " UPTIME " << model.controls().uptime();
  return text.str();
}

}  // namespace

std::string announcement(const HeadModel& model) {
  std::string text = properAnnouncement(model);
  if (model.settings().announceFault == AnnounceFault::malformed) return text.substr(text.find(' ') + 1);  // without the first label
  if (model.settings().announceFault == AnnounceFault::oversized) text.resize(tooLong, ' ');
  return text;
}

}  // namespace fringix::head
