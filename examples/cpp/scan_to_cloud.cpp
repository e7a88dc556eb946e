// Scans what stands before a head and writes its points, in millimetres, as cloud.ply.
//   scan_to_cloud 192.168.0.10
#include <cmath>
#include <fringix/fringix.hpp>
#include <fringix/scan.hpp>
#include <fstream>
#include <iostream>

namespace scan = fringix::scan;

// Images in the head's memory, which are freed whatever happens.
class Sequence {
 public:
  Sequence(const fringix::Device& head, int count) : head_(head), id_(head.allocateSequence(static_cast<std::uint32_t>(count))) {}
  ~Sequence() {
    try {
      head_.freeSequence(id_);
    } catch (const fringix::Error&) {  // the connection is lost
    }
  }
  Sequence(const Sequence&) = delete;
  Sequence& operator=(const Sequence&) = delete;
  std::uint32_t id() const { return id_; }

 private:
  const fringix::Device& head_;
  std::uint32_t id_;
};

static SLScanCalibration calibrationOf(const fringix::Device& head) {
  const std::vector<std::uint8_t> text = head.loadData("calibration.json");
  return scan::readCalibration(std::string(text.begin(), text.end()));
}

static void measure(const fringix::Device& head, const SLScanPlan& plan, const scan::Scanner& scanner) {
  const int count = scan::pictureCount(plan);
  const Sequence sequence(head, count);
  for (int i = 0; i < count; ++i) head.makeFromLine8(sequence.id(), static_cast<std::uint8_t>(i), scan::line(plan, i));
  head.measure(sequence.id());
  for (int i = 0; i < count; ++i) {
    const fringix::Image picture = head.storedImage(static_cast<std::uint8_t>(i));
    scanner.add(0, picture.pixels.data(), static_cast<std::int32_t>(picture.width), static_cast<std::int32_t>(picture.height));
  }
}

static void writePly(const char* path, const scan::Cloud& cloud) {
  std::ofstream file(path);
  file << "ply\nformat ascii 1.0\nelement vertex " << cloud.findings.counts[SLSCAN_POINT]
       << "\nproperty float x\nproperty float y\nproperty float z\nend_header\n";
  for (std::size_t i = 0; i < cloud.points.size(); i += 3) {
    if (!std::isnan(cloud.points[i])) file << cloud.points[i] << ' ' << cloud.points[i + 1] << ' ' << cloud.points[i + 2] << '\n';
  }
  if (!file.flush()) throw std::runtime_error(std::string(path) + " cannot be written");
}

int main(int argc, char** argv) {
  try {
    const fringix::Device head(argc > 1 ? argv[1] : "127.0.0.2");
    const SLScanPlan plan = scan::defaultPlan(static_cast<std::int32_t>(head.projectorSize().width));
    const scan::Scanner scanner(plan, calibrationOf(head));
    measure(head, plan, scanner);
    const scan::Cloud cloud = scanner.finish(0);
    writePly("cloud.ply", cloud);
    std::cout << cloud.findings.counts[SLSCAN_POINT] << " points, sigma " << cloud.findings.expectedSigma << " mm, in cloud.ply\n";
    return 0;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
