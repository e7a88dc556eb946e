// What the examples for LabVIEW and MATLAB say of the C functions, against the headers.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "fringix/scan.h"
#include "tools/program.h"

namespace fringix::test {
namespace {

struct Prototype {
  std::string result;                   // "int32_t", "char*"
  std::vector<std::string> parameters;  // "int32_t handle", "uint8_t* data"
};

using Prototypes = std::map<std::string, Prototype>;

std::string replaced(const std::string& text, const char* pattern, const char* with) {
  return std::regex_replace(text, std::regex(pattern), with);
}

// "const uint8_t* data" is "uint8_t* data", and so on: one blank, before the name.
std::string plain(const std::string& declaration) {
  return replaced(replaced(replaced(declaration, "\\bconst\\b", ""), "\\s+", " "), "^ | $| (?=\\*)", "");
}

std::vector<std::string> parametersOf(const std::string& list) {
  std::vector<std::string> parameters;
  std::istringstream parts(list);
  for (std::string part; std::getline(parts, part, ',');) {
    if (plain(part) != "void") parameters.push_back(plain(part));
  }
  return parameters;
}

Prototypes prototypesOf(const std::filesystem::path& header) {
  const std::string text = replaced(readText(header), "FRINGIX_API|FRINGIX_SCAN_API", "");
  const std::regex prototype("\\n\\s*((?:const )?\\w+\\*?) (SL\\w+)\\(([^()]*)\\);");
  Prototypes prototypes;
  for (std::sregex_iterator match(text.begin(), text.end(), prototype), end; match != end; ++match)
    prototypes[(*match)[2]] = {plain((*match)[1]), parametersOf((*match)[3])};
  return prototypes;
}

Prototypes allPrototypes() {
  Prototypes all = prototypesOf(std::filesystem::path(HEADER_FOLDER) / "fringix.h");
  all.merge(prototypesOf(std::filesystem::path(HEADER_FOLDER) / "scan.h"));
  return all;
}

std::string nameOf(const std::string& parameter) { return parameter.substr(parameter.rfind(' ') + 1); }
std::string typeOf(const std::string& parameter) { return parameter.substr(0, parameter.rfind(' ')); }

// What a node may be told of a parameter: "type | pass".
std::set<std::string> waysToPass(const std::string& type) {
  const std::map<std::string, std::string> numbers = {
      {"int32_t", "Signed 32-bit Integer"}, {"uint32_t", "Unsigned 32-bit Integer"}, {"uint8_t", "Unsigned 8-bit Integer"}};
  const std::string pointee = type.substr(0, type.find('*'));
  const bool isNumber = numbers.count(pointee) > 0;
  const std::string address = "Unsigned Pointer-sized Integer | ";
  if (type == pointee) return {numbers.at(type) + " | Value"};
  if (type == pointee + "**") return {address + "Pointer to Value"};
  if (pointee == "char") return {"String | C String Pointer", "Array of Unsigned 8-bit Integer | Array Data Pointer"};
  if (pointee == "SLScanner") return {address + "Value"};
  if (pointee == "uint8_t") return {"Array of Unsigned 8-bit Integer | Array Data Pointer", address + "Value"};
  if (isNumber) return {numbers.at(pointee) + " | Pointer to Value"};
  const std::string number = pointee == "SLScanPlan" ? "Signed 32-bit" : pointee == "SLScanCloud" ? "Unsigned 64-bit" : "Unsigned 8-bit";
  return {"Array of " + number + " Integer | Array Data Pointer"};
}

TEST(ForeignCalls, TheTableForLabViewIsThatOfTheHeaders) {
  const Prototypes prototypes = allPrototypes();
  std::istringstream lines(readText(std::filesystem::path(EXAMPLE_FOLDER) / "labview/README.md"));
  const std::regex first("\\| `(SL\\w+)` \\| return type \\| (.*?) \\|.*"), next("\\| \\| `(\\w+)` \\| (.*) \\|");
  std::string function;
  std::map<std::string, std::size_t> rows;
  std::smatch match;
  for (std::string line; std::getline(lines, line);) {
    if (std::regex_match(line, match, first)) {
      function = match[1];
      ASSERT_EQ(prototypes.count(function), 1U) << function;
      EXPECT_EQ(match[2], prototypes.at(function).result == "int32_t" ? "Signed 32-bit Integer" : "String") << function;
      rows[function] = 0;
    } else if (std::regex_match(line, match, next)) {
      const std::vector<std::string>& parameters = prototypes.at(function).parameters;
      const std::size_t row = rows[function]++;
      ASSERT_LT(row, parameters.size()) << function;
      EXPECT_EQ(match[1], nameOf(parameters[row])) << function;
      EXPECT_EQ(waysToPass(typeOf(parameters[row])).count(match[2]), 1U) << function << ": " << line;
    }
  }
  EXPECT_EQ(rows.size(), 23U);
  for (const auto& [name, count] : rows) EXPECT_EQ(count, prototypes.at(name).parameters.size()) << name;
}

// As loadlibrary reads it, what is a structure for C is a block of numbers, and a scanner is one.
std::string asMatlabIsTold(const std::string& parameter) {
  const std::string blocks = replaced(parameter, "^(SLScanCalibration|SLScanSettings|SLScanFindings)\\*", "uint8_t*");
  return replaced(replaced(replaced(blocks, "^SLScanPlan\\*", "int32_t*"), "^SLScanner\\*\\*", "uint64_t*"), "^SLScanner\\*", "uint64_t");
}

TEST(ForeignCalls, TheHeaderForMatlabIsThatOfScans) {
  const Prototypes prototypes = allPrototypes();
  const Prototypes told = prototypesOf(std::filesystem::path(EXAMPLE_FOLDER) / "matlab/fringix_scan_matlab.h");
  EXPECT_EQ(told.size(), 10U);
  for (const auto& [name, prototype] : told) {
    ASSERT_EQ(prototypes.count(name), 1U) << name;
    EXPECT_EQ(prototype.result, prototypes.at(name).result) << name;
    std::vector<std::string> expected;
    for (const std::string& parameter : prototypes.at(name).parameters) expected.push_back(asMatlabIsTold(parameter));
    EXPECT_EQ(prototype.parameters, expected) << name;
  }
}

TEST(ForeignCalls, BlocksHaveTheSizesOfTheRecords) {
  const std::string matlab = readText(std::filesystem::path(EXAMPLE_FOLDER) / "matlab/scan_to_cloud.m");
  const std::string labview = readText(std::filesystem::path(EXAMPLE_FOLDER) / "labview/README.md");
  for (const std::size_t size : {sizeof(SLScanCalibration), sizeof(SLScanSettings), sizeof(SLScanFindings)}) {
    EXPECT_NE(matlab.find("zeros(1, " + std::to_string(size) + ", 'uint8')"), std::string::npos) << size;
    EXPECT_NE(labview.find("array of " + std::to_string(size) + " bytes"), std::string::npos) << size;
  }
  EXPECT_EQ(sizeof(SLScanPlan), 4 * sizeof(std::int32_t));
  EXPECT_EQ(sizeof(SLScanCloud), 9 * sizeof(std::uint64_t));
}

}  // namespace
}  // namespace fringix::test
