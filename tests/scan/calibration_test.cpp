// What a calibration may be, and its text.
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "refusal.h"
#include "rendering.h"
#include "scan/calibration_json.h"

namespace fringix::scan::test {
namespace {

std::string refusalOf(const std::function<void(Calibration&)>& spoil) {
  Calibration calibration = smallHead();
  spoil(calibration);
  return refusal(Status::badCalibration, [&] { check(calibration); });
}

bool tells(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

#define EXPECT_TELLS(text, part) EXPECT_PRED2(tells, text, part)

TEST(CalibrationTest, ThatOfAHeadIsGood) {
  EXPECT_NO_THROW(check(smallHead()));
  std::mt19937 chance(1);
  for (int i = 0; i < 100; ++i) EXPECT_NO_THROW(check(randomHead(chance)));
}

TEST(CalibrationTest, ALensDistortsNothingUntilItIsTold) {
  const Distortion lens;
  EXPECT_EQ((std::vector{lens.k1, lens.k2, lens.p1, lens.p2, lens.k3}), std::vector<double>(5));
}

TEST(CalibrationTest, RefusesAMirroredPose) {
  EXPECT_TELLS(refusalOf([](Calibration& c) {
                 for (double& value : c.projector.rotation[1]) value = -value;
               }),
               "the pose of the projector is mirrored");
}

TEST(CalibrationTest, RefusesARotationThatIsNone) {
  EXPECT_TELLS(refusalOf([](Calibration& c) { c.projector.rotation[2][2] += 1e-3; }), "not orthonormal");
}

TEST(CalibrationTest, RefusesWhatIsNoNumber) {
  for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    EXPECT_TELLS(refusalOf([&](Calibration& c) { c.cameras[0].fx = bad; }), "camera 0 has a value that is no finite number");
    EXPECT_TELLS(refusalOf([&](Calibration& c) { c.projector.distortion.k3 = bad; }), "the projector has a value");
    EXPECT_TELLS(refusalOf([&](Calibration& c) { c.projector.rotation[0][1] = bad; }), "the projector has a value");
    EXPECT_TELLS(refusalOf([&](Calibration& c) { c.projector.translation[2] = bad; }), "the projector has a value");
  }
}

TEST(CalibrationTest, RefusesSizesFocalLengthsAndPlacesThatCannotBe) {
  EXPECT_TELLS(refusalOf([](Calibration& c) { c.cameras[0].width = 0; }), "camera 0 has 0 x 240 pixels");
  EXPECT_TELLS(refusalOf([](Calibration& c) { c.projector.height = 40000; }), "1280 x 40000 pixels");
  EXPECT_TELLS(refusalOf([](Calibration& c) { c.cameras[0].fy = -300; }), "focal lengths");
  EXPECT_TELLS(refusalOf([](Calibration& c) { c.cameras[0].fx = 8; }), "focal lengths");
  EXPECT_TELLS(refusalOf([](Calibration& c) { c.cameras[0].cx = 1e5; }), "principal point");
  EXPECT_TELLS(refusalOf([](Calibration& c) { c.projector.translation = {2e5, 0, 0}; }), "Is the unit mm?");
}

TEST(CalibrationTest, RefusesMetres) {
  EXPECT_TELLS(refusalOf([](Calibration& c) {
                 for (double& value : c.projector.translation) value /= 1000;
               }),
               "less than 1 mm apart across the columns. Is the unit mm?");
}

TEST(CalibrationTest, RefusesALensThatFoldsThePicture) {
  EXPECT_TELLS(refusalOf([](Calibration& c) { c.cameras[0].distortion.k1 = -2; }), "the distortion of camera 0 folds its picture");
}

TEST(CalibrationTest, RefusesAReferenceThatIsNone) {
  EXPECT_TELLS(refusalOf([](Calibration& c) { c.cameras[0].translation[0] = 1; }), "camera 0 is the reference");
}

TEST(CalibrationTest, RefusesNoCamerasTooManyAndABadDate) {
  EXPECT_TELLS(refusalOf([](Calibration& c) { c.cameras.clear(); }), "0 cameras");
  EXPECT_TELLS(refusalOf([](Calibration& c) { c.cameras.resize(5, c.cameras[0]); }), "5 cameras");
  for (const char* date : {"", "2024-1-1", "2024-13-01", "2024-00-01", "2024-01-32", "01.02.2024", "2024-01-01T"}) {
    EXPECT_TELLS(refusalOf([&](Calibration& c) { c.date = date; }), "YYYY-MM-DD");
  }
}

TEST(CalibrationTextTest, ComesBackToTheLastBit) {
  std::mt19937 chance(7);
  for (int i = 0; i < 50; ++i) {
    const Calibration head = randomHead(chance);
    const std::string text = textOf(head);
    const Calibration back = calibrationFrom(text);
    EXPECT_EQ(textOf(back), text);
    EXPECT_EQ(back.projector.rotation, head.projector.rotation);
    EXPECT_EQ(back.projector.translation, head.projector.translation);
    EXPECT_EQ(back.cameras[0].distortion.k2, head.cameras[0].distortion.k2);
    EXPECT_EQ(back.serial, 1001);
  }
}

std::string refusalOfText(std::string text, const std::string& part, const std::string& replacement) {
  const auto found = text.find(part);
  EXPECT_NE(found, std::string::npos) << part;
  text.replace(found, part.size(), replacement);
  return refusal(Status::badCalibration, [&] { calibrationFrom(text); });
}

TEST(CalibrationTextTest, TellsWhatIsWrongAndWhere) {
  const std::string text = textOf(smallHead());
  EXPECT_TELLS(refusalOfText(text, "\"mm\"", "\"m\""), "the unit is \"m\"; it has to be \"mm\"");
  EXPECT_TELLS(refusalOfText(text, "\"version\": 1", "\"version\": 2"), "version 2 is not known here");
  EXPECT_TELLS(refusalOfText(text, "fringix-calibration", "other"), "the format is \"other\"");
  EXPECT_TELLS(refusalOfText(text, "\"fx\"", "\"fX\""), "cameras[0].fx is missing");
  EXPECT_TELLS(refusalOfText(text, "\"projector\"", "\"lamp\""), "projector is missing");
  EXPECT_TELLS(refusalOfText(text, "\"width\": 320", "\"width\": \"wide\""), "cameras[0].width is no integer");
  EXPECT_TELLS(refusalOfText(text, "\"width\": 320", "\"width\": 320.5"), "cameras[0].width is no integer");
  EXPECT_TELLS(refusalOfText(text, "\"width\": 320", "\"width\": 99999999999"), "cameras[0].width does not fit into 32 bits");
  EXPECT_TELLS(refusalOfText(text, "-0.12,", ""), "cameras[0].distortion has 4 entries; 5 are needed");
  EXPECT_TELLS(refusalOfText(text, "-0.12", "NaN"), "the text is no JSON");
  EXPECT_TELLS(refusal(Status::badCalibration, [] { calibrationFrom(""); }), "the text is no JSON");
  EXPECT_TELLS(refusal(Status::badCalibration, [] { calibrationFrom("[1, 2]"); }), " is no object");
}

TEST(CalibrationTextTest, TellsWhatKindAMemberHasToBe) {
  const std::string text = textOf(smallHead());
  EXPECT_TELLS(refusalOfText(text, "\"2024-02-29\"", "20240229"), "date is no text");
  EXPECT_TELLS(refusalOfText(text, "\"cameras\": [", "\"cameras\": 1, \"others\": ["), "cameras is no array");
  EXPECT_TELLS(refusalOfText(text, "\"fx\": ", "\"fx\": \"far\", \"other\": "), "cameras[0].fx is no number");
  EXPECT_TELLS(refusalOfText(text, "\"projector\": {", "\"projector\": 1, \"other\": {"), "projector is no object");
}

TEST(CalibrationTextTest, ASerialHas32Bits) {
  const std::string text = textOf(smallHead());
  const auto serial = [&](const std::string& number) {
    std::string changed = text;
    changed.replace(changed.find("1001"), 4, number);
    return calibrationFrom(changed).serial;
  };
  for (const std::int32_t good : {0, -1, 2147483647, -2147483647}) EXPECT_EQ(serial(std::to_string(good)), good);
  for (const char* beyond : {"2147483648", "-2147483648", "18446744073709551615", "-9223372036854775808"})
    EXPECT_TELLS(refusal(Status::badCalibration, [&] { serial(beyond); }), "serial does not fit into 32 bits");
}

TEST(CalibrationTextTest, RefusesAFifthCamera) {
  Calibration head = smallHead();
  head.cameras.resize(4, head.cameras[0]);
  EXPECT_EQ(calibrationFrom(textOf(head)).cameras.size(), 4U);
  head.cameras.resize(5, head.cameras[0]);
  EXPECT_EQ(refusal(Status::badCalibration, [&] { calibrationFrom(textOf(head)); }), "calibration: 5 cameras; 1 to 4 are possible");
}

// Cut anywhere, a text is refused and nothing else happens.
TEST(CalibrationTextTest, RefusesEveryBeginning) {
  const std::string text = textOf(smallHead());
  for (std::size_t length = 0; length + 2 < text.size(); ++length) {
    ASSERT_TRUE(tells(refusal(Status::badCalibration, [&] { calibrationFrom(std::string_view(text).substr(0, length)); }), "no JSON"))
        << length;
  }
}

}  // namespace
}  // namespace fringix::scan::test
