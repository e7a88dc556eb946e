#include "discovery/announce_reply.h"

#include <algorithm>
#include <charconv>

namespace fringix {

namespace {

constexpr std::string_view whiteSpace = " \t\n\v\f\r";

// Takes a text apart from the front. What fails leaves its output alone.
class Reader {
 public:
  explicit Reader(std::string_view text) noexcept : rest_(text) {}

  bool label() noexcept {
    skipWhiteSpace();
    const std::size_t length = std::min(rest_.find_first_of(whiteSpace), rest_.size());
    rest_.remove_prefix(length);
    return length > 0;
  }

  // Decimal, with an optional sign. It ends where the digits end, and a label may follow at once.
  bool number(std::int32_t& value) noexcept {
    skipWhiteSpace();
    if (rest_.starts_with('+') && !rest_.starts_with("+-")) rest_.remove_prefix(1);
    const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
    rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
    return error == std::errc{};
  }

 private:
  void skipWhiteSpace() noexcept { rest_.remove_prefix(std::min(rest_.find_first_not_of(whiteSpace), rest_.size())); }

  std::string_view rest_;
};

}  // namespace

AnnounceReply parseAnnounceReply(std::string_view text) noexcept {
  AnnounceReply reply;
  Reader in(text.substr(0, text.find('\0')));
  // Between info1 and info2 stands no label; kept on purpose.
  static_cast<void>(in.label() && in.number(reply.serial) && in.label() && in.number(reply.modelCode) &&                       //
                    in.label() && in.number(reply.info1) && in.number(reply.info2) && in.label() && in.number(reply.info3) &&  //
                    in.label() && in.number(reply.info4) && in.label() && in.number(reply.info5) &&                            //
                    in.label() && in.number(reply.info6) && in.label() && in.number(reply.info7));
  return reply;
}

const char* modelName(std::int32_t modelCode) noexcept {
  switch (modelCode) {
    case 0:
      return "HXA_T3D";
    case 1:
      return "QOR_T3D";
    case 2:
      return "QOR_T3D_C";
    default:
      return "UNKNOWN_DEVICE";
  }
}

}  // namespace fringix
