#include "arguments/suggestion.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace fringix::arguments {
namespace {

// Letters that are added, left out, wrong, or swapped with their neighbour, between two words.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> steps(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        steps[i][j] = i + j;
        continue;
      }
      const std::size_t wrong = a[i - 1] == b[j - 1] ? 0 : 1;
      steps[i][j] = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, steps[i - 1][j - 1] + wrong});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
    }
  }
  return steps[a.size()][b.size()];
}

}  // namespace

std::string didYouMean(std::string_view word, std::span<const std::string> known) {
  constexpr std::size_t longest = 40;  // a word beyond is no typing error, and the work grows with its length
  if (word.size() > longest) return "";
  const std::string* nearest = nullptr;
  std::size_t least = std::max(std::size_t{1}, word.size() / 3) + 1;
  for (const std::string& candidate : known) {
    const std::size_t longer = std::max(word.size(), candidate.size()) - std::min(word.size(), candidate.size());
    if (longer >= least) continue;
    const std::size_t steps = distance(word, candidate);
    if (steps >= least || steps >= candidate.size()) continue;
    least = steps;
    nearest = &candidate;
  }
  return nearest == nullptr ? "" : ", did you mean \"" + *nearest + "\"?";
}

}  // namespace fringix::arguments
