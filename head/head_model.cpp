#include "head/head_model.h"

#include <string>
#include <utility>

#include "head/digits.h"

namespace fringix::head {

HeadModel::HeadModel(HeadSettings settings)
    : settings_(std::move(settings)),
      projector_(settings_.projector),
      cameras_{Camera(settings_, 0), Camera(settings_, 1)},
      sequences_(settings_.projector, settings_.sequenceMemory),
      pictures_(settings_.pictureMemory) {}

void HeadModel::show(std::shared_ptr<const Pattern> pattern) {
  const std::lock_guard lock(mutex_);
  showLocked(std::move(pattern));
}

void HeadModel::showLocked(std::shared_ptr<const Pattern> pattern) {
  projector_.show(std::move(pattern));
  ++lightingVersion_;
}

Status HeadModel::showFromSequence(std::uint32_t id, std::uint32_t index) {
  const std::lock_guard lock(mutex_);
  SequenceImage image = sequences_.image(id, index);
  if (image.status == Status::ok) showLocked(std::move(image.pattern));
  return image.status;
}

void HeadModel::setBrightness(double brightness) {
  const std::lock_guard lock(mutex_);
  brightness_ = brightness;
  ++lightingVersion_;
}

void HeadModel::setGain(double gain) {
  const std::lock_guard lock(mutex_);
  gain_ = gain;
  ++lightingVersion_;
}

bool HeadModel::takePicture(std::uint32_t channel, Picture& picture) {
  if (channel >= channelCount) return false;
  const std::lock_guard lock(mutex_);
  takeLocked(channel, picture);
  return true;
}

void HeadModel::takeLocked(std::uint32_t channel, Picture& picture) {
  cameras_[channel].take({projector_.light(), brightness_, gain_, lightingVersion_}, ++picturesTaken_, picture);
  drawLabel(picture, std::to_string(settings_.serial) + " " + std::to_string(picturesTaken_));
}

bool HeadModel::storePicture(PictureName name, Picture picture) {
  const std::lock_guard lock(mutex_);
  return pictures_.put(name, std::move(picture));
}

bool HeadModel::loadPicture(PictureName name, Picture& picture) const {
  const std::lock_guard lock(mutex_);
  const Picture* found = pictures_.find(name);
  if (found != nullptr) picture = *found;
  return found != nullptr;
}

Status HeadModel::allocateSequence(std::uint32_t imageCount, std::uint32_t& id) {
  const std::lock_guard lock(mutex_);
  return sequences_.allocate(imageCount, id);
}

Status HeadModel::freeSequence(std::uint32_t id) {
  const std::lock_guard lock(mutex_);
  return sequences_.free(id);
}

Status HeadModel::putImage(std::uint32_t id, std::uint32_t index, Pattern pattern) {
  const std::lock_guard lock(mutex_);
  return sequences_.put(id, index, std::move(pattern));
}

SequenceImage HeadModel::sequenceImage(std::uint32_t id, std::uint32_t index) const {
  const std::lock_guard lock(mutex_);
  return sequences_.image(id, index);
}

std::uint32_t HeadModel::imageCount(std::uint32_t id) const {
  const std::lock_guard lock(mutex_);
  return sequences_.imageCount(id);
}

Status HeadModel::measureImage(std::uint32_t id, std::uint32_t index) {
  const std::lock_guard lock(mutex_);
  SequenceImage image = sequences_.image(id, index);
  if (image.status != Status::ok) return image.status;
  showLocked(std::move(image.pattern));
  for (std::uint32_t channel = 0; channel < channelCount; ++channel) {
    Picture picture;
    takeLocked(channel, picture);
    if (!pictures_.put({channel, index}, std::move(picture))) return Status::outOfMemory;
  }
  return Status::ok;
}

void HeadModel::setMeasurementFault(std::int32_t reply) {
  const std::lock_guard lock(mutex_);
  measurementFault_ = reply;
}

std::int32_t HeadModel::measurementFault() const {
  const std::lock_guard lock(mutex_);
  return measurementFault_;
}

}  // namespace fringix::head
