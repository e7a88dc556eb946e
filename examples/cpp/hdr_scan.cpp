// Scans with three exposures, for scenes with dark and shiny parts: each pixel is taken from the exposure that tells most of it.
//   hdr_scan 192.168.0.10
#include <fringix/fringix.hpp>
#include <fringix/scan.hpp>
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

// The exposure is a value of the head's configuration, in microseconds. It comes back when this ends.
class KeptExposure {
 public:
  explicit KeptExposure(const fringix::Device& head) : head_(head), before_(head.readIni("Camera", "Exposure")) {}
  ~KeptExposure() {
    try {
      head_.writeIni("Camera", "Exposure", before_);
    } catch (const fringix::Error&) {  // the connection is lost
    }
  }
  KeptExposure(const KeptExposure&) = delete;
  KeptExposure& operator=(const KeptExposure&) = delete;
  void setTimes(double factor) const { head_.writeIni("Camera", "Exposure", static_cast<std::int32_t>(before_ * factor)); }

 private:
  const fringix::Device& head_;
  std::int32_t before_;
};

static SLScanCalibration calibrationOf(const fringix::Device& head) {
  const std::vector<std::uint8_t> text = head.loadData("calibration.json");
  return scan::readCalibration(std::string(text.begin(), text.end()));
}

static void measure(const fringix::Device& head, std::uint32_t sequence, int count, const scan::Scanner& scanner) {
  head.measure(sequence);
  for (int i = 0; i < count; ++i) {
    const fringix::Image picture = head.storedImage(static_cast<std::uint8_t>(i));
    scanner.add(0, picture.pixels.data(), static_cast<std::int32_t>(picture.width), static_cast<std::int32_t>(picture.height));
  }
}

int main(int argc, char** argv) {
  try {
    const fringix::Device head(argc > 1 ? argv[1] : "127.0.0.2");
    const SLScanPlan plan = scan::defaultPlan(static_cast<std::int32_t>(head.projectorSize().width));
    const scan::Scanner scanner(plan, calibrationOf(head));
    const int count = scan::pictureCount(plan);
    const Sequence sequence(head, count);
    for (int i = 0; i < count; ++i) head.makeFromLine8(sequence.id(), static_cast<std::uint8_t>(i), scan::line(plan, i));
    const KeptExposure exposure(head);
    for (const double factor : {1.0, 0.25, 4.0}) {  // the patterns stay on the head
      if (factor != 1) scanner.nextExposure(0);
      exposure.setTimes(factor);
      measure(head, sequence.id(), count, scanner);
    }
    const scan::Cloud cloud = scanner.finish(0);
    std::cout << cloud.findings.counts[SLSCAN_POINT] << " points of 3 exposures, " << cloud.findings.counts[SLSCAN_SATURATION]
              << " pixels too bright\n";
    return 0;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
