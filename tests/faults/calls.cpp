#include "calls.h"

#include <utility>

namespace fringix::test {

namespace {

using U8 = std::uint8_t;

constexpr U8 pixels[6 * 5 * 3] = {};  // as many as the projector has
constexpr const char* block = "a.bin";

std::int32_t* number(Stage& stage, std::size_t place = 0) { return reinterpret_cast<std::int32_t*>(stage.output) + place; }
std::uint32_t* size(Stage& stage) { return reinterpret_cast<std::uint32_t*>(stage.output); }

int loadData(Stage& stage) {
  U8* data = nullptr;
  const int result = SLLoadData(stage.handle, &data, number(stage), block);
  SLFreeData(data);
  return result;
}

int freeSequence(Stage& stage) {
  std::uint32_t id = 0;
  if (stage.model != nullptr)
    stage.model->allocateSequence(1, id);
  else
    SLSeqAlloc(stage.handle, 1, &id);
  return SLSeqFree(stage.handle, id);
}

int allocateSequence(Stage& stage) {
  const int result = SLSeqAlloc(stage.handle, 1, size(stage));
  if (stage.model != nullptr)
    stage.model->freeSequence(*size(stage));
  else
    SLSeqFree(stage.handle, *size(stage));
  return result;
}

int getKey(Stage& stage) {
  DeviceKeyEntry key;
  return SLGetDevKey(stage.handle, &key);
}

}  // namespace

const std::vector<Call>& calls() {
  using S = Stage;
  constexpr auto status = Reply::status;
  constexpr auto value = Reply::value;
  constexpr auto picture = Reply::picture;
  static const std::vector<Call> table{
      {"SLGetDevKey", "SLGetSerial", value, getKey},
      {"SLSeqAlloc", "SLSeqAlloc", status, allocateSequence},
      {"SLSeqFree", "SLSeqFree", status, freeSequence},
      {"SLSeqPut", "SLSeqPut", status, [](S& s) { return SLSeqPut(s.handle, s.sequence, pixels, 6, 5, 18, 0); }},
      {"SLSeqMakeGrayCode", "SLSeqMakeGraycode", status, [](S& s) { return SLSeqMakeGrayCode(s.handle, s.sequence, 0, 1, 0, 0); }},
      {"SLSeqMakePhase", "SLSeqMakePhase", status, [](S& s) { return SLSeqMakePhase(s.handle, s.sequence, 0, 2, 4, 0); }},
      {"SLSeqMakeImage", "SLSeqMakeImage", status, [](S& s) { return SLSeqMakeImage(s.handle, s.sequence, 0, 0, 9, 0); }},
      {"SLSeqMakeFromLine8", "SLSeqMakeFromLine8", status, [](S& s) { return SLSeqMakeFromLine8(s.handle, s.sequence, 0, pixels, 6); }},
      {"SLSeqMakeFromCol8", "SLSeqMakeFromCol8", status, [](S& s) { return SLSeqMakeFromCol8(s.handle, s.sequence, 0, pixels, 5); }},
      {"SLSeqMakeFromLine24", "SLSeqMakeFromLine24", status, [](S& s) { return SLSeqMakeFromLine24(s.handle, s.sequence, 0, pixels, 18); }},
      {"SLSeqMakeFromCol24", "SLSeqMakeFromCol24", status, [](S& s) { return SLSeqMakeFromCol24(s.handle, s.sequence, 0, pixels, 15); }},

      {"SLShowImage", "SLShowImage24", status, [](S& s) { return SLShowImage(s.handle, pixels, 6, 5, 18); }},
      {"SLShowImageFromSeq", "SLShowFromSeq", status, [](S& s) { return SLShowImageFromSeq(s.handle, s.sequence, 1); }},
      {"SLStartMeasurement", "SLStartMeasurement", status, [](S& s) { return SLStartMeasurement(s.handle, s.sequence); }},
      {"SLStartFromTo", "SLStartFromTo", status, [](S& s) { return SLStartFromTo(s.handle, s.sequence, 0, 1); }},

      {"SLGetNumberOfChannels", "SLNumberOfChannels", status, [](S& s) { return SLGetNumberOfChannels(s.handle, size(s)); }},
      {"SLGetLiveImage", "SLGetLiveImage", picture, [](S& s) { return SLGetLiveImage(s.handle, s.output, 8, 4); }},
      {"SLGetLiveImageEx", "SLGetLiveImageEx", picture, [](S& s) { return SLGetLiveImageEx(s.handle, 1, s.output, 8, 4); }},
      {"SLGetLiveImageROI", "SLGetLiveImageROI", picture, [](S& s) { return SLGetLiveImageROI(s.handle, s.output, 1, 1, 3, 2); }},
      {"SLGetLiveImageROIEx", "SLGetLiveImageROIEx", picture, [](S& s) { return SLGetLiveImageROIEx(s.handle, 1, s.output, 1, 1, 3, 2); }},
      {"SLGetLiveImageROILowRes", "SLGetLiveImageROILowRes", picture,
       [](S& s) { return SLGetLiveImageROILowRes(s.handle, 0, s.output, 0, 0, 8, 4, 2); }},
      {"SLGetLiveImageLowRes", "SLGetLiveImageLowRes", picture, [](S& s) { return SLGetLiveImageLowRes(s.handle, 0, s.output, 2); }},
      {"SLGetImageIndex", "SLGetImageIndex", picture, [](S& s) { return SLGetImageIndex(s.handle, 0, s.output); }, SLBAD_PARAMETER},
      {"SLGetImageIndexEx", "SLGetImageIndexEx", picture, [](S& s) { return SLGetImageIndexEx(s.handle, 1, 0, s.output); }},
      {"SLGetImageIndexROI", "SLGetImageIndexROI", picture, [](S& s) { return SLGetImageIndexROI(s.handle, 0, s.output, 1, 1, 3, 2); }},
      {"SLGetImageIndexROIEx", "SLGetImageIndexROIEx", picture,
       [](S& s) { return SLGetImageIndexROIEx(s.handle, 1, 0, s.output, 1, 1, 3, 2); }},

      {"SLCheckSystem", "SLCheckSystem", value, [](S& s) { return SLCheckSystem(s.handle, number(s)); }},
      {"SLGetTemperature", "SLGetTemperature", status, [](S& s) { return SLGetTemperature(s.handle, number(s)); }},
      {"SLGetLEDPower", "SLGetLEDPower", value, [](S& s) { return SLGetLEDPower(s.handle, number(s)); }},
      {"SLSetLEDPower", "SLSetLEDPower", status, [](S& s) { return SLSetLEDPower(s.handle, 50); }},
      {"SLGetLEDPowerMinMax", "SLGetProjPowMinMax", value, [](S& s) { return SLGetLEDPowerMinMax(s.handle, number(s), number(s, 1)); }},
      {"SLGetBrightnessLevel", "SLGetBrightness", value, [](S& s) { return SLGetBrightnessLevel(s.handle, number(s)); }},
      {"SLSetBrightnessLevel", "SLSetBrightness", Reply::levelStatus, [](S& s) { return SLSetBrightnessLevel(s.handle, 5); }},
      {"SLGetBrightnessMinMax", "SLGetBrightnessMinMax", value,
       [](S& s) { return SLGetBrightnessMinMax(s.handle, number(s), number(s, 1)); }},
      {"SLGetGain", "SLGetGain", value, [](S& s) { return SLGetGain(s.handle, number(s)); }},
      {"SLSetGain", "SLSetGain", status, [](S& s) { return SLSetGain(s.handle, 20); }},
      {"SLGetGainMinMax", "SLGetGainMinMax", value, [](S& s) { return SLGetGainMinMax(s.handle, number(s), number(s, 1)); }},
      {"SLGetCurrentExposure", "SLGETEXPOSURE", value, [](S& s) { return SLGetCurrentExposure(s.handle, number(s)); }},
      {"SLGetUptime", "SLGETUPTIME", value, [](S& s) { return SLGetUptime(s.handle, number(s)); }},
      {"SLGetProjectorTemperature", "260MSG_SLGETPROJTEMP", value, [](S& s) { return SLGetProjectorTemperature(s.handle, number(s)); }},
      {"SLGetProjectorStatus", "270MSG_SLGETPROJTEMP", value, [](S& s) { return SLGetProjectorStatus(s.handle, number(s)); }},
      {"SLSetDMDState", "SLSETDMDSTATE", status, [](S& s) { return SLSetDMDState(s.handle, 1); }},
      {"SLSetMask", "SLSetMask", status, [](S& s) { return SLSetMask(s.handle, pixels, 0, 6, 5); }},
      {"SLClearMask", "SLClearMask", Reply::none, [](S& s) { return SLClearMask(s.handle); }},
      {"SLSetLedPowerValue", "SET_DIRECT_LEDPOWER", status, [](S& s) { return SLSetLedPowerValue(s.handle, 50); }},

      {"SLSaveData", "SLSaveDataToFile", status, [](S& s) { return SLSaveData(s.handle, pixels, sizeof pixels, block); }},
      {"SLLoadData", "SLReadDataFromFile", status, loadData},
      {"SLReadIniInt", "SLReadIniInt", status, [](S& s) { return SLReadIniInt(s.handle, number(s), "Camera", "Width"); }},
      {"SLWriteIniInt", "SLWriteIniInt", status, [](S& s) { return SLWriteIniInt(s.handle, 5, "My", "value"); }},
      {"SLExecRS232", "SLRS232Exec", status,
       [](S& s) { return SLExecRS232(s.handle, "go", reinterpret_cast<char*>(s.output), sizeof s.output); }, SLSYSTEM_ERROR,
       SLVERSION_TOO_OLD},
      {"SLExecProjCmd", "EXEC_PROJCMD", status, [](S& s) { return SLExecProjCmd(s.handle, 2, 0, s.output, s.output + 1, s.output + 2); }},
      {"SLGetGPIOStatus", "SLGetGPIOStatus", status, [](S& s) { return SLGetGPIOStatus(s.handle, 1, number(s)); }},
      {"SLSetGPIOValue", "SLSetGPIOValue", status, [](S& s) { return SLSetGPIOValue(s.handle, 1, 1); }},
  };
  return table;
}

head::HeadSettings headForCalls() {
  head::HeadSettings settings;
  settings.camera = {8, 4};
  settings.projector = {6, 5};
  settings.imageTime = std::chrono::milliseconds(0);
  settings.mostClients = 400;
  return settings;
}

std::uint32_t prepare(head::HeadModel& model) {
  std::uint32_t id = 0;
  model.allocateSequence(2, id);
  model.measureImage(id, 0);
  model.data().save(block, head::Block(100, 1));
  return id;
}

}  // namespace fringix::test
