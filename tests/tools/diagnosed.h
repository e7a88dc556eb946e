// What the doctor says of a network that a test has made.
#pragma once

#include <string>

#include "program.h"
#include "support/json.h"

namespace fringix::test {

// Whether it may be true of a machine that is busy just now: nobody got the processor in time.
inline bool isOfBusyMachines(const Json& finding) {
  const std::string area = finding.at("/area").text();
  if (area == "handshake" || area == "picture") return finding.at("/colour").text() == "yellow";
  return area == "round trip" || area == "losses";
}

// What is not green, as "red connection 10.1.0.2", one after the other. What a busy machine brings about counts only where it is expected.
inline std::string troubles(const Outcome& outcome, const std::string& expected) {
  if (!outcome.output.starts_with("{")) return "no report: " + outcome.output + outcome.errors;
  const Json findings = Json(outcome.output).at("/findings");
  std::string text;
  for (std::size_t i = 0; i < findings.size(); ++i) {
    const Json finding = findings.at("/" + std::to_string(i));
    const std::string colour = finding.at("/colour").text();
    if (colour == "green") continue;
    const std::string subject = finding.at("/subject").text();
    const std::string trouble = colour + " " + finding.at("/area").text() + (subject.empty() ? "" : " ") + subject;
    if (isOfBusyMachines(finding) && expected.find(trouble) == std::string::npos) continue;
    text += (text.empty() ? "" : ", ") + trouble;
  }
  return text;
}

inline Outcome doctor(const std::string& arguments) { return runProgram(FRINGIX_TOOL, "doctor --json " + arguments); }

}  // namespace fringix::test
