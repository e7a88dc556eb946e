#include "console/output.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "console/json.h"

namespace fringix::tool {

bool outputFailed() { return std::ferror(stdout) != 0; }

Explanation explainOutputFailure(const std::string& reason) {
  return {fmt::format("the output could not be written{}{}", reason.empty() ? "" : ": ", reason),
          "Check that there is room for it, and that the program that reads it still runs.", "output"};
}

// An earlier write that failed has left a mark on the stream, but not its reason.
void flushOutput() {
  errno = 0;
  const bool flushed = std::fflush(stdout) == 0;
  const int error = errno;
  if (!flushed || outputFailed()) throw Failure(explainOutputFailure(error == 0 ? "" : std::generic_category().message(error)));
}

void tell(const std::string& line) {
  std::fflush(stdout);  // what was printed before stands before it where both go to one place
  std::fputs((line + "\n").c_str(), stderr);
  std::fflush(stderr);  // Windows keeps it back otherwise, in a pipe
}

void tell(const Explanation& explanation, bool asJson) {
  if (!asJson) return tell(fmt::format("fringix: {}{}{}", explanation.what, explanation.next.empty() ? "" : "\n  ", explanation.next));
  Json error = Json::object({{"kind", explanation.kind}, {"what", explanation.what}, {"next", explanation.next}});
  if (explanation.status != 0) error.add("status", explanation.status);
  tell(Json::object({{"error", error}}).line());
}

}  // namespace fringix::tool
