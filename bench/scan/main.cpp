// fringix-scan-bench [FOLDER]: how long 20 pictures of 1280 x 1024 pixels take to become points, on one core and on two. The folder gets
// pictures and points, for others to do the same.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "fringix/scan.hpp"
#include "handover.h"
#include "naive.h"
#include "pictures.h"

namespace {

using namespace fringix;

constexpr int rounds = 15;
constexpr std::size_t pixels = std::size_t{1280} * 1024;

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

double wallSeconds() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

struct Times {
  double least;   // processor seconds: what a busy machine disturbs least
  double median;  // processor seconds
  double wall;    // least
};

Times measure(const std::function<void()>& work, int times) {
  std::vector<double> seconds;
  double wall = 1e9;
  for (int round = 0; round < times; ++round) {
    const double wallStart = wallSeconds();
    const double start = processorSeconds();
    work();
    seconds.push_back(processorSeconds() - start);
    wall = std::min(wall, wallSeconds() - wallStart);
  }
  std::sort(seconds.begin(), seconds.end());
  return {seconds.front(), seconds[seconds.size() / 2], wall};
}

Times print(const char* name, const Times& times) {
  std::printf("%-58s %7.1f ms %7.1f ms %7.1f ms\n", name, 1000 * times.least, 1000 * times.median, 1000 * times.wall);
  std::fflush(stdout);
  return times;
}

SLScanSettings settingsWith(std::int32_t threads, bool clean) {
  SLScanSettings settings = scan::defaultSettings();
  settings.threads = threads;
  settings.clean = clean ? 1 : 0;
  return settings;
}

class Bench {
 public:
  explicit Bench(std::int32_t method) : plan_(scan::defaultPlan(1280, method)), pictures_(bench::benchPictures(plan_, head_)) {
    for (const auto& picture : pictures_) pointers_.push_back(picture.data());
  }

  void run() {
    toPoints_ = time("decode and triangulate, with masks and sigma", settingsWith(1, false), false);
    time("all: with normals and cleaning", settingsWith(1, true), true);
    time("all, two threads", settingsWith(2, true), true);
    timeStreamed();
  }

  void runNaive() {
    std::vector<float> points(3 * pixels);
    print("the same points, written plainly", measure([&] { bench::naivePoints(plan_, head_, pointers_, points.data()); }, 3));
  }

  void timeTables() {
    print("tables of a calibration", measure([&] { scan::Scanner(plan_, head_); }, 3));
  }

  void leaveIn(const std::string& folder) const {
    const scan::Cloud cloud = scan::Scanner(plan_, head_, settingsWith(1, false)).compute(0, pointers_, false);
    bench::handOver(folder, {plan_, head_, pictures_, cloud.points, cloud.sigma, toPoints_.least});
  }

 private:
  Times time(const char* name, const SLScanSettings& settings, bool normals) {
    const scan::Scanner scanner(plan_, head_, settings);
    scan::Cloud cloud(pixels, normals);
    const SLScanCloud buffers = cloud.buffers();
    return print(name, measure([&] { compute(scanner, buffers); }, rounds));
  }

  void compute(const scan::Scanner& scanner, const SLScanCloud& buffers) {
    scan::check(
        SLScanCompute(scanner.handle(), 0, pointers_.data(), static_cast<std::int32_t>(pointers_.size()), 1280, 1024, &buffers, nullptr));
  }

  // What is left to do when the last picture has come.
  void timeStreamed() {
    const scan::Scanner scanner(plan_, head_, settingsWith(1, true));
    scan::Cloud cloud(pixels, true);
    const SLScanCloud buffers = cloud.buffers();
    Times finishing{1e9, 1e9, 1e9};
    Times all{1e9, 1e9, 1e9};
    for (int round = 0; round < rounds; ++round) {
      const Times added = measure(
          [&] {
            for (const auto* picture : pointers_) scanner.add(0, picture, 1280, 1024);
          },
          1);
      const Times finished = measure([&] { scan::check(SLScanFinish(scanner.handle(), 0, &buffers, nullptr)); }, 1);
      if (added.least < all.least) all = added;
      if (finished.least < finishing.least) finishing = finished;
    }
    print("one at a time: adding all pictures", all);
    print("one at a time: the rest", finishing);
  }

  SLScanCalibration head_ = bench::benchHead();
  SLScanPlan plan_;
  std::vector<std::vector<std::uint8_t>> pictures_;
  std::vector<const std::uint8_t*> pointers_;
  Times toPoints_ = {};
};

void run(const std::string& folder) {
  std::printf("20 pictures of 1280 x 1024 pixels%37s%11s%11s\n", "cpu least", "median", "wall");
  Bench gray(SLSCAN_GRAY_AND_PHASE);
  gray.run();
  gray.runNaive();
  gray.timeTables();
  if (!folder.empty()) gray.leaveIn(folder);
  std::puts("three frequencies");
  Bench(SLSCAN_THREE_FREQUENCIES).run();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    run(argc > 1 ? argv[1] : "");
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "fringix-scan-bench: %s\n", error.what());
    return 1;
  }
}
