#include "metric.h"

namespace fringix::bench {

namespace {

double gigabytes(const Batch& batch) { return static_cast<double>(batch.calls) * static_cast<double>(batch.bytesPerCall) * 1e-9; }

struct Definition {
  std::string_view name;
  bool moreIsBetter;
  double (*value)(const Batch&);
};

const Definition& definitionOf(Metric metric) {
  static constexpr Definition definitions[] = {
      {"latency p50, us", false, [](const Batch& batch) { return batch.medianLatency * 1e6; }},
      {"CPU s/GB", false, [](const Batch& batch) { return batch.processorSeconds / gigabytes(batch); }},
      {"GB/s", true, [](const Batch& batch) { return gigabytes(batch) / batch.seconds; }},
      {"calls/s", true, [](const Batch& batch) { return static_cast<double>(batch.calls) / batch.seconds; }},
      {"server busy, %", false, [](const Batch& batch) { return batch.serverSeconds / batch.seconds * 100; }},
  };
  return definitions[static_cast<std::size_t>(metric)];
}

}  // namespace

std::string_view nameOf(Metric metric) { return definitionOf(metric).name; }
bool moreIsBetter(Metric metric) { return definitionOf(metric).moreIsBetter; }
double valueOf(Metric metric, const Batch& batch) { return definitionOf(metric).value(batch); }

}  // namespace fringix::bench
