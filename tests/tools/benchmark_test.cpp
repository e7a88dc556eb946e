// What becomes of the samples of a benchmark: figures, tables, JSON, diagrams.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <stdexcept>

#include "benchmark/axis.h"
#include "benchmark/diagram.h"
#include "benchmark/tables.h"
#include "pictures/colour_map.h"

namespace fringix::tool {
namespace {

// 1 to `count` milliseconds.
std::vector<double> upTo(std::size_t count) {
  std::vector<double> samples(count);
  std::iota(samples.begin(), samples.end(), 1.0);
  return samples;
}

Measured measured(const std::string& name, std::vector<double> samples, std::uint64_t bytes = 0) {
  const Timing timing = timingOf(samples);
  return {name, name + " of the test", bytes, 0, timing, std::move(samples)};
}

Findings findingsOf(std::vector<Measured> measured) {
  Findings findings;
  findings.date = "2026-11-22T10:15:00Z";
  findings.head = {"192.168.0.10", 4711, "", 3300, {1280, 1024}, {1280, 800}};
  findings.libraryVersion = 4002;
  findings.system = "Linux";
  findings.measured = std::move(measured);
  return findings;
}

bool has(const std::string& text, const std::string& part) { return text.find(part) != text.npos; }

TEST(TimingTest, FiguresAreSamples) {
  const std::vector<double> samples = upTo(200);
  const Timing timing = timingOf(samples);
  EXPECT_EQ(timing.samples, 200U);
  EXPECT_EQ(timing.least, 1);
  EXPECT_EQ(timing.mean, 100.5);
  EXPECT_EQ(timing.median, 100);
  EXPECT_EQ(timing.p95, 190);
  EXPECT_EQ(timing.p99, 198);
  EXPECT_EQ(timing.worst, 200);
}

TEST(TimingTest, FewSamplesDoNotTellWhatIsRare) {
  EXPECT_FALSE(timingOf(upTo(19)).p95);
  EXPECT_EQ(timingOf(upTo(20)).p95, 19);
  EXPECT_FALSE(timingOf(upTo(99)).p99);
  EXPECT_EQ(timingOf(upTo(100)).p99, 99);
  EXPECT_EQ(timingOf(upTo(1)).median, 1);
}

TEST(TimingTest, BinsAreRoundAndTheRestHasOne) {
  std::vector<double> samples = upTo(99);
  samples.push_back(5000);
  const std::vector<Bin> bins = binsOf(samples, 11);
  ASSERT_EQ(bins.size(), 11U);
  EXPECT_EQ(bins[0].from, 0);
  EXPECT_EQ(bins[0].to, 10);
  EXPECT_EQ(bins[0].count, 9U);
  EXPECT_EQ(bins[9].count, 10U);
  EXPECT_EQ(bins[10].from, 100);
  EXPECT_EQ(bins[10].to, 5000);
  EXPECT_EQ(bins[10].count, 1U);
}

TEST(TimingTest, EverySampleIsInOneBin) {
  for (const std::vector<double>& samples :
       {upTo(1), upTo(2), upTo(7), upTo(1000), std::vector<double>(30, 0.1), std::vector<double>{0.1, 0.1, 0.3}}) {
    const std::vector<Bin> bins = binsOf(samples, 10);
    const std::size_t all =
        std::accumulate(bins.begin(), bins.end(), std::size_t{0}, [](std::size_t sum, const Bin& bin) { return sum + bin.count; });
    EXPECT_EQ(all, samples.size());
    EXPECT_LE(bins.size(), 12U);
  }
}

TEST(BenchmarkTableTest, ShowsFiguresAndRates) {
  Findings findings = findingsOf({measured("picture", upTo(200), 1310720)});
  findings.measured[0].lost = 3;
  findings.notMeasured.push_back({"scan", "scan", "nobody asked"});
  const std::string table = tableOf(findings);
  EXPECT_TRUE(has(table, "head              4711 at 192.168.0.10\nmodel             not told\n")) << table;
  EXPECT_TRUE(has(table, "picture of the test               200    100.000    190.000    198.000    200.000       10.0     13.0  3 lost\n"))
      << table;
  EXPECT_TRUE(has(table, "scan                                -  nobody asked\n")) << table;
}

TEST(BenchmarkTableTest, HistogramShowsWhereTheSamplesAre) {
  std::vector<double> samples(90, 0.015);
  samples.insert(samples.end(), 10, 0.025);
  const std::string histogram = histogramOf(measured("command", samples));
  EXPECT_TRUE(has(histogram, "    0.014 to     0.016  ########################################       90   90.0 %\n")) << histogram;
  EXPECT_TRUE(has(histogram, "  ####                                           10   10.0 %\n")) << histogram;
}

TEST(BenchmarkTableTest, ComparesWhatBothHave) {
  const NamedFindings here{"here.json", findingsOf({measured("command", upTo(4)), measured("scan", upTo(1))})};
  const NamedFindings there{"there.json", findingsOf({measured("command", {3, 4, 5, 6}), measured("trigger", upTo(1))})};
  const std::string text = comparisonOf(here, there);
  EXPECT_TRUE(has(text, "                                       here.json                    there.json    ratio\n")) << text;
  EXPECT_TRUE(has(text, "\n  median ms                                2.000                         4.000     2.00\n")) << text;
  EXPECT_TRUE(has(text, "\nscan                            scan of the test                  not measured\n")) << text;
  EXPECT_TRUE(has(text, "\ntrigger                             not measured           trigger of the test\n")) << text;
  EXPECT_FALSE(has(text, "p95")) << "nobody has it";
  const std::string json = describeComparison(here, there).line();
  EXPECT_TRUE(has(json, R"({"name":"command","median":{"first":2,"second":4,"ratio":2},"p95":{"first":null,)")) << json;
}

TEST(FindingsTest, AreReadAsTheyWereWritten) {
  Findings findings = findingsOf({measured("picture", upTo(200), 1310720), measured("scan", upTo(1))});
  findings.head.model = "SLS-1";
  findings.notMeasured.push_back({"trigger", "trigger", "no wire"});
  findings.changed = "the light is on";
  findings.complete = false;
  const std::string text = describe(findings).indented();
  const Findings read = readFindings(text);
  EXPECT_EQ(describe(read).indented(), text);
  EXPECT_EQ(read.measured[0].timing.p99, 198);
  EXPECT_FALSE(read.measured[1].timing.p95);
}

TEST(FindingsTest, OthersAreRefusedWithTheReason) {
  const auto refusal = [](const std::string& text) -> std::string {
    try {
      readFindings(text);
      return "none";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  };
  const auto changed = [](const std::string& from, const std::string& to) {
    std::string text = describe(findingsOf({measured("command", upTo(1))})).line();
    return text.replace(text.find(from), from.size(), to);
  };
  EXPECT_TRUE(has(refusal("{"), "parse error")) << refusal("{");
  EXPECT_EQ(refusal("[]"), "it has no \"format\"");
  EXPECT_EQ(refusal(changed("fringix-bench", "fringix-scan")), "it is no \"fringix-bench\" of version 1");
  EXPECT_EQ(refusal(changed("\"serial\":4711", "\"serial\":1e99")),
            "it has 1e+99 in place of a whole number from -2147483648 to 2147483647");
  EXPECT_EQ(refusal(changed("\"samples\":1", "\"samples\":0")), "it has 0 in place of a whole number from 1 to 9223372036854775807");
  EXPECT_EQ(refusal(changed("\"median\":1", "\"median\":\"1\"")), "it has \"1\" in place of a number");
  EXPECT_EQ(refusal(changed("\"complete\":true", "\"complete\":1")), "it has 1 in place of true or false");
  EXPECT_EQ(refusal(changed("\"name\":\"command\"", "\"name\":[]")), "it has [] in place of a text");
}

TEST(AxisTest, EndsBeyondTheSamples) {
  for (const auto& [least, worst] : {std::pair{0.01, 100.0}, {2.3, 2.4}, {5.0, 5.0}, {0.0, 1.0}}) {
    const Axis axis(least, worst);
    EXPECT_LT(axis.shareOf(worst), 1);
    EXPECT_GE(axis.shareOf(least), 0);
    EXPECT_NEAR(axis.shareOf(axis.timeAt(0.3)), 0.3, 1e-9);
    EXPECT_GE(axis.ticks().size(), 2U) << least;
    for (const Axis::Tick& tick : axis.ticks()) EXPECT_GE(tick.time, 0);
  }
}

TEST(AxisTest, EqualRatiosAreEquallyFarApartWhereTimesDiffer) {
  const Axis axis(0.01, 100);
  EXPECT_NEAR(axis.shareOf(1) - axis.shareOf(0.1), axis.shareOf(10) - axis.shareOf(1), 1e-9);
  const Axis even(2, 3);
  EXPECT_NEAR(even.shareOf(2.2) - even.shareOf(2.1), even.shareOf(2.9) - even.shareOf(2.8), 1e-9);
}

// How many pixels of a part of a picture have a colour.
std::size_t countOf(const png::Raster& raster, const Colour& colour) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < raster.samples.size(); i += 3)
    count += std::equal(colour.begin(), colour.end(), &raster.samples[i]) ? 1U : 0U;
  return count;
}

TEST(DistributionDiagramTest, HasAFieldForEachCallAndColoursForWhatIsRare) {
  std::vector<double> samples(900, 10);
  for (const auto& [count, time] : {std::pair{80, 20.0}, {14, 25.0}, {5, 28.0}, {1, 5000.0}})
    samples.insert(samples.end(), static_cast<std::size_t>(count), time);
  const png::Raster one = drawDistributions(findingsOf({measured("command", samples)}));
  const png::Raster three =
      drawDistributions(findingsOf({measured("a", samples), measured("b", upTo(3)), measured("c", upTo(2)), measured("d", upTo(1))}));
  EXPECT_EQ(one.width, three.width);
  EXPECT_GT(three.height, one.height);
  EXPECT_GT(countOf(one, evenColour(0.45)), 500U) << "most";
  EXPECT_GT(countOf(one, evenColour(0.9)), 10U) << "more than 95 %";
  EXPECT_GT(countOf(one, deviationColour(0.97)), 10U) << "more than 99 %";
  EXPECT_GT(countOf(three, evenColour(0.45)), countOf(one, evenColour(0.45)));
}

TEST(DistributionDiagramTest, DrawsAnySamples) {
  for (const std::vector<double>& samples : {std::vector<double>{0}, std::vector<double>{0, 0, 1e6}, std::vector<double>(3, 7), upTo(2)})
    EXPECT_GT(drawDistributions(findingsOf({measured("a", samples)})).height, 0U);
}

}  // namespace
}  // namespace fringix::tool
