#include "calibration.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <sstream>

#include "failure.h"

namespace fringix::scan {

namespace {

template <class... Parts>
[[noreturn]] void refuse(const Parts&... parts) {
  std::ostringstream text;
  text << "calibration: ";
  (text << ... << parts);
  throw Failure(Status::badCalibration, text.str());
}

class OpticsCheck {
 public:
  OpticsCheck(const Optics& optics, std::string name) : optics_(optics), name_(std::move(name)) {}

  void run() const {
    checkNumbers();
    checkPinhole();
    checkRotation();
    checkTranslation();
    checkDistortion();
  }

 private:
  void checkNumbers() const {
    const Distortion& lens = optics_.distortion;
    bool finite = true;
    for (const double value : {optics_.fx, optics_.fy, optics_.cx, optics_.cy, lens.k1, lens.k2, lens.p1, lens.p2, lens.k3}) {
      finite = finite && std::isfinite(value);
    }
    for (const Vector& row : optics_.rotation) finite = finite && std::isfinite(row[0] + row[1] + row[2]);
    for (const double value : optics_.translation) finite = finite && std::isfinite(value);
    if (!finite) refuse(name_, " has a value that is no finite number");
  }

  void checkPinhole() const {
    constexpr std::int32_t largest = 32768;
    if (optics_.width < 16 || optics_.width > largest || optics_.height < 1 || optics_.height > largest) {
      refuse(name_, " has ", optics_.width, " x ", optics_.height, " pixels; 16 x 1 to 32768 x 32768 are possible");
    }
    const double least = 0.1 * optics_.width;
    const double most = 100.0 * optics_.width;
    if (!(optics_.fx >= least && optics_.fx <= most && optics_.fy >= least && optics_.fy <= most)) {
      refuse(name_, " has focal lengths of ", optics_.fx, " and ", optics_.fy, " pixels; from 0.1 to 100 times its width can be");
    }
    if (std::abs(optics_.cx) > 4.0 * optics_.width || std::abs(optics_.cy) > 4.0 * std::max(optics_.width, optics_.height)) {
      refuse(name_, " has its principal point at ", optics_.cx, ", ", optics_.cy, ", far outside of its picture");
    }
  }

  void checkRotation() const {
    constexpr double tolerance = 1e-6;
    const Matrix product = optics_.rotation * transposed(optics_.rotation);
    for (std::size_t row = 0; row < 3; ++row) {
      for (std::size_t column = 0; column < 3; ++column) {
        if (std::abs(product[row][column] - identity[row][column]) > tolerance) {
          refuse("the rotation of ", name_, " is none: its rows are not orthonormal (rows ", row, " and ", column, " give ",
                 product[row][column], ")");
        }
      }
    }
    if (determinant(optics_.rotation) < 0) refuse("the pose of ", name_, " is mirrored: the determinant of its rotation is -1");
  }

  void checkTranslation() const {
    const double distance = std::sqrt(dot(optics_.translation, optics_.translation));
    if (distance > 1e5) refuse(name_, " stands ", distance, " mm away from camera 0; at most 100 m can be. Is the unit mm?");
  }

  // A lens shows each direction once: along the whole border, and inside, the picture must not fold.
  void checkDistortion() const {
    constexpr int grid = 32;
    for (int row = 0; row <= grid; ++row) {
      for (int column = 0; column <= grid; ++column) checkPlace(column * optics_.width / double{grid}, row * optics_.height / double{grid});
    }
  }

  void checkPlace(double column, double row) const {
    const Place shown = optics_.normalised(column, row);
    const Place place = undistort(optics_.distortion, shown, shown);
    const Place back = distort(optics_.distortion, place);
    const bool found = std::abs(back.x - shown.x) + std::abs(back.y - shown.y) < 1e-8;
    if (!found || !(jacobian(optics_.distortion, place).determinant() > 0)) {
      refuse("the distortion of ", name_, " folds its picture: it cannot be undone at ", column, ", ", row);
    }
  }

  const Optics& optics_;
  std::string name_;
};

void checkDate(const std::string& date) {
  const std::string form = "dddd-dd-dd";
  bool good = date.size() == form.size();
  for (std::size_t i = 0; good && i < form.size(); ++i) {
    good = form[i] == 'd' ? std::isdigit(static_cast<unsigned char>(date[i])) != 0 : date[i] == form[i];
  }
  if (good) good = date.substr(5, 2) >= "01" && date.substr(5, 2) <= "12" && date.substr(8) >= "01" && date.substr(8) <= "31";
  if (!good) refuse("the date \"", date, "\" is not of the form YYYY-MM-DD");
}

void checkReference(const Optics& camera) {
  if (camera.rotation != identity || camera.translation != Vector{}) {
    refuse("camera 0 is the reference: its rotation has to be the identity and its translation 0");
  }
}

// Where the projector looks out of the camera's own pinhole, a column says nothing of the distance.
void checkBaseline(const Optics& camera, const Optics& projector, std::size_t number) {
  const Vector place = transposed(camera.rotation) * (-1.0 * camera.translation);
  const Vector seen = projector.rotation * place + projector.translation;
  if (seen[0] * seen[0] + seen[2] * seen[2] < 1)
    refuse("camera ", number, " and the projector are less than 1 mm apart across the columns. Is the unit mm?");
}

}  // namespace

void check(const Calibration& calibration) {
  checkDate(calibration.date);
  if (calibration.cameras.empty() || calibration.cameras.size() > mostCameras) {
    refuse(calibration.cameras.size(), " cameras; 1 to ", mostCameras, " are possible");
  }
  for (std::size_t i = 0; i < calibration.cameras.size(); ++i) OpticsCheck(calibration.cameras[i], "camera " + std::to_string(i)).run();
  OpticsCheck(calibration.projector, "the projector").run();
  checkReference(calibration.cameras[0]);
  for (std::size_t i = 0; i < calibration.cameras.size(); ++i) checkBaseline(calibration.cameras[i], calibration.projector, i);
}

}  // namespace fringix::scan
