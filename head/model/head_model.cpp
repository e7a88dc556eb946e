#include "head/model/head_model.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

#include "head/model/calibration_block.h"
#include "head/model/truth_block.h"
#include "head/optics/digits.h"
#include "head/scene/mesh_file.h"
#include "head/scene/scenes.h"

namespace fringix::head {

namespace {

constexpr std::int32_t hotCamera = 60;  // degrees Celsius
constexpr std::int32_t hotProjector = 80;
constexpr const char* sceneBlockName = "scene.txt";
constexpr std::size_t longestSceneName = 32;  // of those that are no files

// Enough for the largest thing that a client may send or fetch, whatever the settings say.
std::size_t transferMemory(const HeadSettings& settings) {
  return std::max({settings.transferMemory, settings.dataMemory, settings.projector.pixels() * sizeof(Colour),
                   settings.camera.pixels() * sizeof(std::uint16_t)});
}

}  // namespace

HeadModel::HeadModel(HeadSettings settings)
    : settings_(std::move(settings)),
      controls_(settings_.clock),
      configuration_(settings_),
      data_(makeDataStore(settings_)),
      transfers_(transferMemory(settings_)),
      serialDevice_(settings_.serialScript),
      scene_(makeScene(settings_.scene)),
      projector_(settings_.projector, settings_.gamma),
      cameras_{Camera(settings_, 0), Camera(settings_, 1)},
      sequences_(settings_.projector, settings_.sequenceMemory),
      pictures_(settings_.pictureMemory) {
  data_->provide(calibrationBlockName, [this] { return calibrationBlock(settings_); });
  tellOfScene(settings_.scene);
}

void HeadModel::setScene(const std::string& name) {
  const std::shared_ptr<const Scene> scene = makeScene(name);
  const LightMaps maps = mapsOf(scene);
  const std::lock_guard lock(mutex_);
  scene_ = scene;
  useMaps(maps);
  tellOfScene(name);
}

Status HeadModel::saveBlock(const std::string& name, Block block) {
  return name == sceneBlockName ? obeySceneBlock(block) : data_->save(name, std::move(block));
}

Status HeadModel::obeySceneBlock(const Block& block) {
  std::string name(block.begin(), block.end());
  while (!name.empty() && (name.back() == '\n' || name.back() == '\r')) name.pop_back();
  if (name != settings_.scene && (name.size() > longestSceneName || isMeshFile(name))) return Status::badParameter;
  try {
    setScene(name);
    return Status::ok;
  } catch (const std::runtime_error&) {
    return Status::badParameter;
  }
}

void HeadModel::tellOfScene(const std::string& name) {
  data_->provide(truthBlockName, [scene = scene_] { return truthBlock(*scene); });
  data_->provide(sceneBlockName, [name] { return Block(name.begin(), name.end()); });
}

HeadModel::LightMaps HeadModel::mapsOf(const std::shared_ptr<const Scene>& scene) const {
  LightMaps maps;
  for (std::uint32_t channel = 0; channel < channelCount; ++channel) maps[channel] = lightMapFor(settings_, channel, scene);
  return maps;
}

void HeadModel::useMaps(const LightMaps& maps) {
  for (std::uint32_t channel = 0; channel < channelCount; ++channel) cameras_[channel].use(maps[channel]);
}

void HeadModel::show(std::shared_ptr<const Pattern> pattern) {
  const std::lock_guard lock(mutex_);
  projector_.show(std::move(pattern));
}

Status HeadModel::showFromSequence(std::uint32_t id, std::uint32_t index) {
  const std::lock_guard lock(mutex_);
  SequenceImage image = sequences_.image(id, index);
  if (image.status == Status::ok) projector_.show(std::move(image.pattern));
  return image.status;
}

void HeadModel::switchDmd(bool on) {
  const std::lock_guard lock(mutex_);
  projector_.switchOn(on);
}

Status HeadModel::setMask(std::vector<std::uint8_t> mask) {
  if (mask.size() != settings_.projector.pixels()) return Status::badParameter;
  const std::lock_guard lock(mutex_);
  projector_.setMask(std::move(mask));
  return Status::ok;
}

void HeadModel::clearMask() {
  const std::lock_guard lock(mutex_);
  projector_.setMask({});
}

std::int32_t HeadModel::projectorStatus() const {
  const std::lock_guard lock(mutex_);
  return (controls_.ledPower() > 0 ? ledIsOn : 0) | (projector_.isOn() ? dmdIsOn : 0) | (projector_.isMasked() ? maskIsSet : 0) |
         (controls_.projectorTemperature() >= hotProjector ? projectorIsHot : 0);
}

std::int32_t HeadModel::selfCheck() const {
  return (controls_.cameraTemperature() >= hotCamera ? cameraTooWarm : 0) |
         (controls_.projectorTemperature() >= hotProjector ? projectorTooWarm : 0) | (measurementFault() != 0 ? measurementsFail : 0);
}

bool HeadModel::takePicture(std::uint32_t channel, Picture& picture) {
  if (channel >= channelCount) return false;
  const std::lock_guard lock(mutex_);
  ++moment_;
  takeLocked(channel, picture);
  return true;
}

void HeadModel::takeLocked(std::uint32_t channel, Picture& picture) {
  if (!cameras_[channel].sees()) cameras_[channel].use(lightMapFor(settings_, channel, scene_));
  const Light& light = projector_.light();
  const Exposure exposure{projector_.lightVersion(), controls_.lampStrength(), configuration_.exposureFactor(), controls_.gainFactor()};
  cameras_[channel].take(light, exposure, moment_, ++picturesTaken_, picture);
  drawLabel(picture, std::to_string(settings_.serial) + " " + std::to_string(picturesTaken_));
}

bool HeadModel::storePicture(PictureName name, Picture picture) {
  const std::lock_guard lock(mutex_);
  return pictures_.put(name, std::move(picture));
}

SharedPicture HeadModel::storedPicture(PictureName name) const {
  const std::lock_guard lock(mutex_);
  return pictures_.find(name);
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
  SequenceImage stored;
  {
    const std::lock_guard lock(mutex_);
    const Status status = sequences_.put(id, index, std::move(pattern));
    if (status != Status::ok || !settings_.patternStored) return status;
    stored = sequences_.image(id, index);
  }
  settings_.patternStored(id, index, *stored.pattern);
  return Status::ok;
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
  projector_.show(std::move(image.pattern));
  ++moment_;
  for (std::uint32_t channel = 0; channel < channelCount; ++channel) {
    if (!pictures_.hasRoom({channel, index}, settings_.camera.pixels())) return Status::outOfMemory;
    Picture picture;
    takeLocked(channel, picture);
    pictures_.put({channel, index}, std::move(picture));
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
