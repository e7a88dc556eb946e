// A head without its network side: what it is, what it keeps, what its cameras see. Safe to use from several threads.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "head/geometry/mount.h"
#include "head/model/configuration.h"
#include "head/model/controls.h"
#include "head/model/data_store.h"
#include "head/model/io_lines.h"
#include "head/model/picture_store.h"
#include "head/model/sequence_store.h"
#include "head/model/serial_device.h"
#include "head/optics/camera.h"
#include "head/optics/pattern.h"
#include "head/optics/picture.h"
#include "head/optics/projector.h"
#include "head/scene/scene.h"
#include "head/settings/head_settings.h"
#include "head/settings/status.h"

namespace fringix::head {

// The bits of HeadModel::projectorStatus and HeadModel::selfCheck.
enum ProjectorBits : std::int32_t { ledIsOn = 1, dmdIsOn = 2, maskIsSet = 4, projectorIsHot = 8 };
enum SelfCheckBits : std::int32_t { cameraTooWarm = 1, projectorTooWarm = 2, measurementsFail = 4 };

class HeadModel {
 public:
  explicit HeadModel(HeadSettings settings);
  HeadModel(const HeadModel&) = delete;
  HeadModel& operator=(const HeadModel&) = delete;

  const HeadSettings& settings() const { return settings_; }
  Controls& controls() { return controls_; }
  const Controls& controls() const { return controls_; }
  Configuration& configuration() { return configuration_; }
  DataStore& data() { return *data_; }
  MemoryBudget& transfers() { return transfers_; }  // for what clients are sending and fetching
  IoLines& lines() { return lines_; }
  SerialDevice& serialDevice() { return serialDevice_; }

  // Puts another scene before the head, as makeScene takes it; pictures are of the old one until this returns. The data block
  // "truth.json" tells of the new one. Throws std::runtime_error when there is no such scene.
  void setScene(const std::string& name);

  // What a client saves. A block "scene.txt" is the name of a scene, and saving it puts that one before the head; of files only the one
  // of the settings, for strangers have no say in what is opened here.
  Status saveBlock(const std::string& name, Block block);

  // What shines on the scene; null is white light, as at the start.
  void show(std::shared_ptr<const Pattern> pattern);
  Status showFromSequence(std::uint32_t id, std::uint32_t index);
  void switchDmd(bool on);                         // off: no light leaves the projector
  Status setMask(std::vector<std::uint8_t> mask);  // as Projector::setMask takes it, of the projector's size
  void clearMask();
  std::int32_t projectorStatus() const;
  std::int32_t selfCheck() const;  // 0: all is well

  // The current picture of a camera, false for a channel that the head does not have. Each picture is labelled with the serial
  // number and the number of the picture, counted from 1; no pixel is 0. Reuses the memory of `picture`.
  bool takePicture(std::uint32_t channel, Picture& picture);

  bool storePicture(PictureName name, Picture picture);  // false: no room for it
  SharedPicture storedPicture(PictureName name) const;   // null where there is none

  Status allocateSequence(std::uint32_t imageCount, std::uint32_t& id);
  Status freeSequence(std::uint32_t id);
  Status putImage(std::uint32_t id, std::uint32_t index, Pattern pattern);
  SequenceImage sequenceImage(std::uint32_t id, std::uint32_t index) const;
  std::uint32_t imageCount(std::uint32_t id) const;  // 0 for an unknown sequence

  // Shows an image of a sequence and stores a picture of each camera under the image's index.
  Status measureImage(std::uint32_t id, std::uint32_t index);

  // What measurements answer without measuring, once set: -2 is a failed measurement, 0 lets them work again.
  void setMeasurementFault(std::int32_t reply);
  std::int32_t measurementFault() const;

 private:
  using LightMaps = std::array<std::shared_ptr<const LightMap>, channelCount>;

  Status obeySceneBlock(const Block& block);
  void tellOfScene(const std::string& name);
  LightMaps mapsOf(const std::shared_ptr<const Scene>& scene) const;
  void useMaps(const LightMaps& maps);
  void takeLocked(std::uint32_t channel, Picture& picture);

  const HeadSettings settings_;
  Controls controls_;
  Configuration configuration_;
  const std::unique_ptr<DataStore> data_;
  MemoryBudget transfers_;
  IoLines lines_;
  SerialDevice serialDevice_;

  mutable std::mutex mutex_;
  std::shared_ptr<const Scene> scene_;
  Projector projector_;
  std::array<Camera, channelCount> cameras_;
  SequenceStore sequences_;
  PictureStore pictures_;
  std::uint64_t picturesTaken_ = 0;  // of each camera one by one
  std::uint64_t moment_ = 0;         // those that the cameras took together count once
  std::int32_t measurementFault_ = 0;
};

}  // namespace fringix::head
