#include <fmt/format.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "acceptance/deviation_pictures.h"
#include "acceptance/scene_change.h"
#include "acceptance/verdict.h"
#include "console/output.h"
#include "console/terminal.h"
#include "files/files.h"
#include "scanning/scan.h"
#include "subcommands/subcommand.h"

namespace fringix::tool {
namespace {

constexpr double longest = 1e5;  // mm

struct AcceptOptions {
  ScanWishes wishes;
  bool simulated = false;
  std::string artefact;
  std::uint32_t positions = 0;  // 0: as many as make an acceptance
  std::vector<std::string> folders;
  Certified certified;
  AcceptanceLimits limits;
  std::string output;

  std::uint32_t positionsOf(Artefact one) const { return positions == 0 ? kindOf(one).positions : positions; }
};

void require(bool right, const char* name, const std::string& complaint) {
  if (!right) throw arguments::UsageError(name, complaint);
}

void requireCertificate(const AcceptOptions& options) {
  const std::size_t balls = kindOf(artefactOf(options.artefact)).balls;
  require(balls == 0 || options.certified.diameter > 0, "--diameter",
          fmt::format("{} mm is no diameter of a ball: give the certified one", options.certified.diameter));
  require(balls < 2 || options.certified.spacing > options.certified.diameter, "--spacing",
          fmt::format("{} mm is not the distance of two balls' centres: give the certified one", options.certified.spacing));
}

void requireOneWay(const AcceptOptions& options, bool namesHead) {
  if (namesHead == !options.folders.empty()) {
    throw arguments::UsageError(namesHead ? "--from needs no head: leave its address out" : "ADDRESS, --serial or --from is required");
  }
  require(!options.simulated || options.folders.empty(), "--simulated", "the scans in folders are what they are");
  require(options.simulated || !options.artefact.empty(), "--artefact", "it is required: sphere, ballbar or plane");
  if (!options.simulated) requireCertificate(options);
}

View viewOf(const ScanResult& result) { return {result.grid(), pinholeOf(result.task.calibration.cameras[result.task.channels.front()])}; }

std::string textOf(const Position& position) {
  std::string text = fmt::format("{} {}:", kindOf(position.artefact).name, position.number);
  for (const Reading& reading : position.readings) text += fmt::format("  {} {:.4f}", signOf(reading.figure), reading.value);
  return text + " mm";
}

// Goes through the positions, whichever way leads to them.
class Acceptance {
 public:
  Acceptance(const AcceptOptions& options, Context& context) : options_(options), context_(context) {}

  void measureSimulated();
  void measurePlaced();
  void measureStored();

  const std::vector<Position>& positions() const { return positions_; }

 private:
  void askFor(Artefact artefact, std::uint32_t number) const;
  ScanResult scan(const Device& head, const ScanTask& task) const;
  void add(Artefact artefact, std::uint32_t number, const ScanResult& result, const Certified& certified);

  const AcceptOptions& options_;
  Context& context_;
  std::vector<Position> positions_;
};

void Acceptance::measureSimulated() {
  const Device head = openHead(context_);
  const SceneChange scenes(head, context_.address);
  ScanWishes wishes = options_.wishes;
  wishes.wantsTruth = true;
  for (const Artefact artefact : allArtefacts) {
    if (!options_.artefact.empty() && artefactOf(options_.artefact) != artefact) continue;
    for (std::uint32_t i = 1; i <= std::min(options_.positionsOf(artefact), kindOf(artefact).positions); ++i) {
      scenes.show(artefact, i);
      ScanTask task = taskOfHead(head, context_.address, wishes);
      const Certified certified = certifiedBy(std::exchange(task.truthText, {}));
      add(artefact, i, scan(head, task), certified);
    }
  }
}

// What is not found can be put there once more; the positions before it stay measured.
void Acceptance::measurePlaced() {
  const Device head = openHead(context_);
  const ScanTask task = taskOfHead(head, context_.address, options_.wishes);
  const Artefact artefact = artefactOf(options_.artefact);
  for (std::uint32_t i = 1; i <= options_.positionsOf(artefact);) {
    askFor(artefact, i);
    const ScanResult result = scan(head, task);
    try {
      add(artefact, i, result, options_.certified);
      ++i;
    } catch (const Failure& failure) {
      tell(failure.explanation(), false);
    }
  }
}

void Acceptance::measureStored() {
  const Artefact artefact = artefactOf(options_.artefact);
  for (std::uint32_t i = 1; i <= options_.folders.size(); ++i) {
    const std::string& folder = options_.folders[i - 1];
    const ScanTask task = taskOfFolder(folder, options_.wishes);
    if (task.channels.size() > 1)
      throw Failure({fmt::format("the pictures in \"{}\" are those of {} cameras", folder, task.channels.size()),
                     "Scan with one camera: an acceptance is that of one."});
    Steps steps(isTerminal(stderr));
    steps.expect(partsFromFolder(task) + 1);
    const PictureSource source = [&](const PictureSink& sink) { readRaw(folder, task, steps, sink); };
    add(artefact, i, compute(task, steps, source), options_.certified);
  }
}

void Acceptance::askFor(Artefact artefact, std::uint32_t number) const {
  tell(fmt::format("Put {} into position {} of {}, then press Enter.", kindOf(artefact).words, number, options_.positionsOf(artefact)));
  std::string line;
  if (std::getline(std::cin, line)) return;
  throw Failure({fmt::format("standard input ended before position {}", number), "Press Enter when the artefact is in its position."});
}

ScanResult Acceptance::scan(const Device& head, const ScanTask& task) const {
  Steps steps(isTerminal(stderr));
  steps.expect(partsFromHead(task) + 1);
  if (positions_.empty() && !context_.json)
    std::for_each(task.cautions.begin(), task.cautions.end(), [&](const std::string& text) { steps.caution(text); });
  return compute(task, steps, [&](const PictureSink& sink) { acquire(head, task, steps, sink); });
}

void Acceptance::add(Artefact artefact, std::uint32_t number, const ScanResult& result, const Certified& certified) {
  positions_.push_back(measurePosition(artefact, number, viewOf(result), certified));
  if (context_.json) return;
  fmt::print("{}\n", textOf(positions_.back()));
  std::fflush(stdout);
}

void print(const Line& line) {
  fmt::print("{:<5}{:<29}{:>10.4f} mm{:>11.4f} mm  {:<7} {} {}\n", signOf(line.figure), wordsOf(line.figure), line.value, line.limit,
             line.isKept() ? "kept" : "BROKEN", kindOf(line.artefact).name, line.position);
}

void print(const Verdict& verdict) {
  fmt::print("\n{:<34}{:>13}{:>14}  {:<7} {}\n", "figure", "worst", "limit", "", "where");
  for (const Line& line : verdict.lines) print(line);
  if (!verdict.isComplete) fmt::print("A trial: an acceptance takes 10 positions of the ball, 7 of the ball bar and 6 of the plate.\n");
}

std::string brokenOf(const Verdict& verdict) {
  std::string signs;
  for (const Line& line : verdict.lines) {
    if (!line.isKept()) signs += (signs.empty() ? "" : ", ") + std::string(signOf(line.figure));
  }
  return signs;
}

void report(const AcceptOptions& options, const Context& context, std::span<const Position> positions) {
  const Verdict verdict = judge(positions, options.limits, options.certified.flatness);
  const std::string told = describe(verdict, positions).indented() + "\n";
  if (!options.output.empty()) {
    files::writeFile(files::inFolder(options.output, "acceptance.json"), std::vector<std::uint8_t>(told.begin(), told.end()));
    writeDeviations(options.output, positions);
  }
  context.json ? fmt::print("{}", told) : print(verdict);
  if (!verdict.isAccepted)
    throw Failure({"beyond the limit: " + brokenOf(verdict),
                   "Calibrate the head anew, or look at the deviations: -o FOLDER keeps them as pictures.", "not-accepted"});
}

void runAccept(const AcceptOptions& options, Context& context) {
  requireOneWay(options, context.bySerial || !context.address.empty());
  if (!options.output.empty()) files::makeFolder(options.output);
  if (!options.output.empty()) files::requireWritable(files::inFolder(options.output, "acceptance.json"));
  Acceptance acceptance(options, context);
  if (!options.folders.empty())
    acceptance.measureStored();
  else if (options.simulated)
    acceptance.measureSimulated();
  else
    acceptance.measurePlaced();
  report(options, context, acceptance.positions());
}

std::string whatIsWrongWithArtefact(const std::string& name) {
  try {
    artefactOf(name);
    return "";
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
}

void addArtefact(arguments::Command& command, AcceptOptions& options) {
  command.option("--artefact", &options.artefact, "What is measured: sphere, ballbar or plane")
      .valueName("NAME")
      .check(whatIsWrongWithArtefact);
  command.option("--diameter", &options.certified.diameter, "Certified diameter of each ball in mm").valueName("MM").range(0, longest);
  command.option("--spacing", &options.certified.spacing, "Certified distance of the centres of the bar's balls in mm")
      .valueName("MM")
      .range(0, longest);
  command
      .option("--flatness", &options.certified.flatness,
              "Certified flatness of the plate in mm, by which its error may be larger; 0 unless told otherwise")
      .valueName("MM")
      .range(0, longest);
  command
      .option("--positions", &options.positions,
              "How many positions, 10 of the ball, 7 of the ball bar, 6 of the plate unless told otherwise")
      .valueName("N")
      .range(1, 1000);
}

void addLimits(arguments::Command& command, AcceptanceLimits& limits) {
  const auto add = [&](const char* name, double& limit, const char* help) {
    command.option(name, &limit, help).valueName("MM").range(0, longest);
  };
  add("--limit-form", limits.form, "Limit of the probing error of form in mm, 7 expected standard deviations unless told otherwise");
  add("--limit-form95", limits.form95, "The same of 95 % of the points, 5 of them unless told otherwise");
  add("--limit-size", limits.size, "Limit of the probing error of size in mm, 0.03 unless told otherwise");
  add("--limit-spacing", limits.spacing, "Limit of the sphere-spacing error in mm, 0.03 unless told otherwise");
  add("--limit-flatness", limits.flatness, "Limit of the flatness error in mm, 7 expected standard deviations unless told otherwise");
  add("--limit-flatness95", limits.flatness95, "The same of 95 % of the points, 5 of them unless told otherwise");
}

}  // namespace

void defineAccept(arguments::Command& command, Context& context) {
  const auto options = std::make_shared<AcceptOptions>();
  addOptionalAddress(command, context);
  command.flag("--simulated", &options->simulated, "Let a simulated head show all artefacts, or the one of --artefact, by itself");
  addArtefact(command, *options);
  command.option("--from", &options->folders, "Take scans of earlier times (fringix scan --raw) in place of a head, one FOLDER a position")
      .valueName("FOLDER");
  addLimits(command, options->limits);
  command.option("--calibration", &options->wishes.calibrationFile, "Calibration to use in place of the one that the head keeps")
      .valueName("FILE");
  command.option("--channel", &options->wishes.channels.front(), "Camera to measure with, 0 unless told otherwise")
      .valueName("N")
      .range(0, 3);
  command.option("-o,--output", &options->output, "Folder for acceptance.json and pictures of the deviations, made when it is missing")
      .valueName("FOLDER");
  command.note("Exit code: 0 when all limits are kept, 1 when one is broken or a scan fails, 2 for wrong usage.");
  command.run([options, &context] { runAccept(*options, context); });
}

}  // namespace fringix::tool
