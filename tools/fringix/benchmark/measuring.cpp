#include "benchmark/measuring.h"

#include <fmt/format.h>

#include <algorithm>
#include <fringix/scan.hpp>
#include <stdexcept>
#include <utility>

#include "benchmark/part.h"
#include "benchmark/trigger_wire.h"
#include "console/explain.h"
#include "heads/open_head.h"
#include "heads/trigger_port.h"
#include "scanning/acquisition.h"
#include "scanning/sequence.h"

namespace fringix::tool {
namespace {

using Clock = Part::Clock;

constexpr std::chrono::milliseconds triggerLimit{1000};
constexpr std::chrono::milliseconds listenersStart{2000};
constexpr const char* scanName = "scan";
constexpr const char* changedByScans = "the projector shows the last pattern of the scan, and the stored pictures are those of the scan";

// What is measured: its name for programs and for people, the bytes of one call, and what a part of the benchmark does.
struct Kind {
  std::string name;
  std::string what;
  std::uint64_t bytes;
  std::function<void(Part&)> work;
};

std::uint64_t pixelsOf(Size size) { return std::uint64_t{size.width} * size.height; }

Kind command(const Device& head) {
  return {"command", "command (SLGetGain)", 0, [&](Part& part) { part.repeat([&] { head.gain(); }); }};
}

Kind wholePicture(const Device& head, Size size) {
  return {"picture", fmt::format("picture {}x{}", size.width, size.height), pixelsOf(size), [&head](Part& part) {
            Image image;
            part.repeat([&] { head.liveImage(image); });
          }};
}

Kind regionOf(const Device& head, Size whole) {
  const Region region{whole.width / 4, whole.height / 4, std::max(whole.width / 2, 1U), std::max(whole.height / 2, 1U)};
  return {"region", fmt::format("region {}x{}", region.width, region.height), pixelsOf({region.width, region.height}),
          [&head, region](Part& part) { part.repeat([&] { head.liveRegion(region); }); }};
}

Kind reducedPicture(const Device& head, Size whole, std::uint32_t factor) {
  const Size size{whole.width / factor, whole.height / factor};
  return {fmt::format("reduced-{}", factor), fmt::format("reduced by {}, {}x{}", factor, size.width, size.height), pixelsOf(size),
          [&head, factor](Part& part) { part.repeat([&] { head.liveLowRes(factor); }); }};
}

// A size comes from the head, and a broken one may state anything.
RgbImage imageOf(Size size) {
  if (pixelsOf(size) > Image::maximumPixels)
    throw std::length_error(fmt::format("an image of {} x {} pixels is too large", size.width, size.height));
  return {size.width, size.height, std::vector<std::uint8_t>(static_cast<std::size_t>(3 * pixelsOf(size)), 0x55)};
}

// The image is freed with its sequence, and never shown.
Kind upload(const Device& head, Size size) {
  return {"upload", fmt::format("pattern upload {}x{}", size.width, size.height), 3 * pixelsOf(size), [&head, size](Part& part) {
            const RgbImage image = imageOf(size);
            const Sequence sequence(head, 1);
            part.repeat([&] { head.putImage(sequence.id(), 0, image); });
          }};
}

ScanTask scanTask(const Device& head) {
  ScanTask task;
  task.plan = scan::defaultPlan(static_cast<std::int32_t>(head.projectorSize().width));
  return task;
}

// All that a head does for a scan. Ctrl-C leaves the scan that it ends out.
Kind wholeScan(const Device& head, std::vector<double>& measurements) {
  const ScanTask task = scanTask(head);
  return {scanName, fmt::format("scan, {} pictures", task.picturesOfExposure()), 0, [&head, &measurements, task](Part& part) {
            while (part.goesOn()) {
              Steps steps(false);
              const Clock::time_point start = Clock::now();
              acquire(head, task, steps, [](std::size_t, const Image&) {});
              part.note(Clock::now() - start);
              steps.end();
              for (const StepTime& step : steps.times())
                if (step.name == "measure") measurements.push_back(1000 * step.time.count());
            }
          }};
}

void pullAgainAndAgain(const Device& head, std::uint32_t line, Part& part) {
  requireTriggers(true, listenersStart);
  TriggerWire wire(head, static_cast<std::int32_t>(line));
  while (part.goesOn()) {
    if (const auto time = wire.pull(triggerLimit)) {
      part.note(*time);
    } else if (part.lose(), part.samples().empty()) {
      throw Failure({fmt::format("no trigger came within 1 s: is line {} wired to the trigger input?", line), ""});
    }
  }
}

Kind trigger(const Device& head, std::uint32_t line) {
  return {"trigger", fmt::format("trigger, by line {}", line), 0, [&head, line](Part& part) { pullAgainAndAgain(head, line, part); }};
}

class Benchmark {
 public:
  Benchmark(const Device& head, const BenchTask& task, Findings& findings) : head_(head), findings_(findings) {
    addPictures();
    kinds_.push_back(upload(head_, findings_.head.projector));
    if (task.scan) kinds_.push_back(wholeScan(head_, measurements_));
    if (task.triggerLine) kinds_.push_back(trigger(head_, *task.triggerLine));
  }

  void run(std::chrono::duration<double> time, const std::function<void(const std::string&)>& tell) {
    Clock::time_point end = Clock::now() + std::chrono::duration_cast<Clock::duration>(time);
    for (std::size_t i = 0; i < kinds_.size() && !interruption_.waitFor({}); ++i) {
      tell(kinds_[i].what);
      const Clock::time_point now = Clock::now();
      end += measure(kinds_[i], now + (std::max(end, now) - now) / static_cast<Clock::rep>(kinds_.size() - i));
    }
    findings_.complete = !interruption_.waitFor({});
  }

 private:
  void addPictures() {
    const Size size = findings_.head.camera;
    kinds_ = {command(head_), wholePicture(head_, size), regionOf(head_, size)};
    for (const std::uint32_t factor : {2U, 4U})
      if (size.width % factor == 0 && size.height % factor == 0) kinds_.push_back(reducedPicture(head_, size, factor));
  }

  // Gives the time that does not count.
  Clock::duration measure(const Kind& kind, Clock::time_point until) {
    Part part(until, interruption_);
    std::optional<Error> broken;
    if (kind.name == scanName) findings_.changed = changedByScans;
    try {
      kind.work(part);
    } catch (const Error& error) {
      if (!isConnected(head_)) broken.emplace(error.operation(), SLCONNECTION_ERROR);
      miss(kind, explain(error, findings_.head.address).what);
    } catch (const Failure& failure) {
      if (!part.isEnded()) miss(kind, failure.what());
    } catch (const std::exception& error) {  // sizes that no memory holds, say
      miss(kind, error.what());
    }
    keep(kind, part);
    if (!broken) return part.uncounted();
    findings_.complete = false;
    throw Error(*broken);
  }

  void miss(const Kind& kind, const std::string& reason) { findings_.notMeasured.push_back({kind.name, kind.what, reason}); }

  void keep(const Kind& kind, Part& part) {
    keep(kind, part.samples(), part.lost());
    if (kind.name == scanName) keep({"scan-measurement", "measurement of the scan", 0, {}}, measurements_, 0);
  }

  void keep(const Kind& kind, std::vector<double>& samples, std::size_t lost) {
    if (samples.empty()) return;
    std::sort(samples.begin(), samples.end());
    const Timing timing = timingOf(samples);
    findings_.measured.push_back({kind.name, kind.what, kind.bytes, lost, timing, std::move(samples)});
  }

  const Device& head_;
  Findings& findings_;
  const Interruption interruption_;
  std::vector<Kind> kinds_;
  std::vector<double> measurements_;  // of the scans, in milliseconds
};

}  // namespace

void measure(const Device& head, const BenchTask& task, Findings& findings, const std::function<void(const std::string&)>& tell) {
  Benchmark(head, task, findings).run(task.time, tell);
}

}  // namespace fringix::tool
