#include "handover.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "fringix/scan.hpp"

namespace fringix::bench {

namespace {

std::ofstream create(const std::string& folder, const char* name) {
  std::ofstream file(std::filesystem::path(folder) / name, std::ios::binary);
  if (!file) throw std::runtime_error("cannot write " + folder + "/" + name + ": is it a folder, and may one write there?");
  return file;
}

template <class Value>
void append(std::ofstream& file, const std::vector<Value>& values) {
  file.write(reinterpret_cast<const char*>(values.data()), static_cast<std::streamsize>(values.size() * sizeof(Value)));
}

void finish(std::ofstream& file) {
  file.close();
  if (!file) throw std::runtime_error("cannot write all files: is the disk full?");
}

template <class Value>
void save(const std::string& folder, const char* name, const std::vector<Value>& values) {
  std::ofstream file = create(folder, name);
  append(file, values);
  finish(file);
}

}  // namespace

void handOver(const std::string& folder, const Handover& handover) {
  std::ofstream pictures = create(folder, "pictures.bin");
  for (const auto& picture : handover.pictures) append(pictures, picture);
  finish(pictures);
  save(folder, "points.bin", handover.points);
  save(folder, "sigma.bin", handover.sigma);
  std::ofstream calibration = create(folder, "calibration.json");
  calibration << scan::write(handover.head);
  finish(calibration);
  std::ofstream facts = create(folder, "scan.json");
  facts << "{\"pictures\": " << handover.pictures.size() << ", \"period\": " << handover.plan.period
        << ", \"steps\": " << handover.plan.steps << ", \"seconds\": " << handover.seconds << "}\n";
  finish(facts);
}

}  // namespace fringix::bench
