// What the doctor says of a network that a test has made.
#pragma once

#include <string>

#include "program.h"
#include "support/json.h"

namespace fringix::test {

// What is not green, as "red connection 10.1.0.2", one after the other.
inline std::string troubles(const Outcome& outcome) {
  if (!outcome.output.starts_with("{")) return "no report: " + outcome.output + outcome.errors;
  const Json findings = Json(outcome.output).at("/findings");
  std::string text;
  for (std::size_t i = 0; i < findings.size(); ++i) {
    const Json finding = findings.at("/" + std::to_string(i));
    const std::string colour = finding.at("/colour").text();
    if (colour == "green") continue;
    const std::string subject = finding.at("/subject").text();
    text += (text.empty() ? "" : ", ") + colour + " " + finding.at("/area").text() + (subject.empty() ? "" : " ") + subject;
  }
  return text;
}

inline Outcome doctor(const std::string& arguments) { return runProgram(FRINGIX_TOOL, "doctor --json " + arguments); }

}  // namespace fringix::test
