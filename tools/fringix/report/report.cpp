#include "report/report.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "console/json.h"
#include "pictures/colour_map.h"
#include "report/base64.h"
#include "report/page.h"

namespace fringix::tool {
namespace {

struct Box {
  std::array<float, 3> low{};
  std::array<float, 3> size{};
};

std::size_t countOf(const Report& report) { return report.points.size() / 3; }

Box boxOf(std::span<const float> points) {
  Box box;
  for (std::size_t axis = 0; axis < 3 && !points.empty(); ++axis) {
    float low = points[axis];
    float high = low;
    for (std::size_t i = axis; i < points.size(); i += 3) {
      low = std::min(low, points[i]);
      high = std::max(high, points[i]);
    }
    box.low[axis] = low;
    box.size[axis] = std::max(high - low, 1e-6F);
  }
  return box;
}

std::uint32_t quantised(double share, double steps) { return static_cast<std::uint32_t>(std::lround(std::clamp(share, 0.0, 1.0) * steps)); }

void appendPositions(std::vector<std::uint8_t>& bytes, std::span<const float> points, const Box& box) {
  for (std::size_t i = 0; i < points.size(); ++i) {
    const std::uint32_t place = quantised((points[i] - box.low[i % 3]) / box.size[i % 3], 65535);
    bytes.push_back(static_cast<std::uint8_t>(place & 0xFF));
    bytes.push_back(static_cast<std::uint8_t>(place >> 8));
  }
}

void appendChannel(std::vector<std::uint8_t>& bytes, const ReportChannel& channel) {
  const double range = std::max(channel.high - channel.low, 1e-12);
  for (const float value : channel.values) {
    const double share = std::isfinite(value) ? (value - channel.low) / range : 1;
    bytes.push_back(static_cast<std::uint8_t>(quantised(share, 255)));
  }
}

std::string packCloud(const Report& report, const Box& box) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(countOf(report) * (6 + report.channels.size()));
  appendPositions(bytes, report.points, box);
  for (const ReportChannel& channel : report.channels) appendChannel(bytes, channel);
  return toBase64(bytes);
}

// What lies between 1 and 99 % of the depths: single points far away shall not use up the colours.
std::array<float, 2> depthRange(std::span<const float> points) {
  std::vector<float> depths;
  for (std::size_t i = 2; i < points.size(); i += 3) depths.push_back(points[i]);
  if (depths.empty()) return {0, 1};
  const auto at = [&](double share) {
    const auto place = depths.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(depths.size() - 1));
    std::nth_element(depths.begin(), place, depths.end());
    return *place;
  };
  const float low = at(0.01);
  return {low, std::max(at(0.99), low + 1e-3F)};
}

std::string mapInHex(Colour (*colour)(double)) {
  std::string text;
  for (int i = 0; i < 256; ++i) {
    for (const std::uint8_t part : colour(i / 255.0)) text += fmt::format("{:02x}", part);
  }
  return text;
}

std::string escaped(std::string_view text) {
  std::string result;
  for (const char character : text) {
    switch (character) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += character;
    }
  }
  return result;
}

Json describe(const ReportChannel& channel) {
  return Json::object({{"name", channel.name},
                       {"unit", channel.unit},
                       {"low", channel.low},
                       {"high", channel.high},
                       {"map", channel.isDeviation ? "deviation" : "even"}});
}

Json asJson(std::span<const float> numbers) {
  std::vector<Json> list;
  for (const float number : numbers) list.emplace_back(double{number});
  return Json::array(std::move(list));
}

Json describeCloud(const Report& report, const Box& box) {
  std::vector<Json> channels;
  for (const ReportChannel& channel : report.channels) channels.push_back(describe(channel));
  return Json::object({{"points", countOf(report)},
                       {"unit", report.unit},
                       {"digits", report.unit == "m" ? 5 : 2},
                       {"low", asJson(box.low)},
                       {"size", asJson(box.size)},
                       {"depthRange", asJson(depthRange(report.points))},
                       {"channels", Json::array(std::move(channels))},
                       {"maps", Json::object({{"even", mapInHex(evenColour)}, {"deviation", mapInHex(deviationColour)}})}});
}

// As the content of a script element, which nothing in a name may end.
std::string inScript(const Json& json) {
  std::string text = json.line();
  for (std::size_t place = 0; (place = text.find('<', place)) != std::string::npos;) text.replace(place, 1, "\\u003c");
  return text;
}

std::string tablesOf(const Report& report) {
  std::string html;
  for (const ReportTable& table : report.tables) {
    if (!table.title.empty()) html += fmt::format("  <h2>{}</h2>\n", escaped(table.title));
    html += "  <table>\n";
    for (const auto& [name, value] : table.rows) html += fmt::format("    <tr><td>{}<td>{}\n", escaped(name), escaped(value));
    html += "  </table>\n";
  }
  return html;
}

std::string picturesOf(const Report& report) {
  std::string html;
  for (const auto& [caption, png] : report.pictures) {
    html += fmt::format("  <figure><img alt=\"{0}\" src=\"data:image/png;base64,{1}\"><figcaption>{0}</figcaption></figure>\n",
                        escaped(caption), toBase64(png));
  }
  return html;
}

void requireComplete(const Report& report) {
  for (const ReportChannel& channel : report.channels) {
    if (channel.values.size() == countOf(report)) continue;
    throw std::invalid_argument(
        fmt::format("the channel \"{}\" has {} numbers for {} points", channel.name, channel.values.size(), countOf(report)));
  }
}

struct Filling {
  std::string_view mark;
  std::string text;
};

// The page with each mark replaced; what is filled in is not searched again.
std::string filled(std::string_view page, std::span<const Filling> fillings) {
  std::string result;
  while (!page.empty()) {
    const std::size_t start = std::min(page.find('@'), page.size());
    result += page.substr(0, start);
    page.remove_prefix(start);
    const auto* const filling =
        std::find_if(fillings.data(), fillings.data() + fillings.size(), [&](const Filling& one) { return page.starts_with(one.mark); });
    const bool found = filling != fillings.data() + fillings.size();
    result += found ? std::string_view(filling->text) : page.substr(0, 1);
    page.remove_prefix(std::min(page.size(), found ? filling->mark.size() : std::size_t{1}));
  }
  return result;
}

}  // namespace

std::string makeReport(const Report& report) {
  requireComplete(report);
  const Box box = boxOf(report.points);
  const Filling fillings[] = {{"@TITLE@", escaped(report.title)},
                              {"@TABLES@", tablesOf(report)},
                              {"@PICTURES@", picturesOf(report)},
                              {"@FACTS@", inScript(describeCloud(report, box))},
                              {"@CLOUD@", packCloud(report, box)}};
  return filled(reportPage(), fillings);
}

}  // namespace fringix::tool
