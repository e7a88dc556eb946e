#include "protocol/encoding.h"

#include <cctype>
#include <charconv>
#include <cstdlib>
#include <stdexcept>

namespace fringix::protocol {

namespace {

constexpr std::int64_t largestNumber = std::int64_t{1} << 48;  // far above all that makes sense, and no product wraps
constexpr std::int64_t longestBlock = 256 << 20;

std::int64_t multiply(std::int64_t one, std::int64_t other) {
  if (other != 0 && std::abs(one) > largestNumber / std::abs(other)) throw std::runtime_error("a product that no size can be");
  return one * other;
}

std::size_t blockSize(const Field& field, const Facts& facts) {
  const std::int64_t size = evaluate(field.size, facts);
  if (size >= 0 && size <= longestBlock) return static_cast<std::size_t>(size);
  throw std::runtime_error(field.name + " would have " + std::to_string(size) + " bytes");
}

std::int64_t evaluateTerm(std::string_view term, const Facts& facts) {
  const bool isLiteral = !term.empty() && (term[0] == '-' || std::isdigit(static_cast<unsigned char>(term[0])) != 0);
  if (isLiteral) return parseNumber(term);
  const auto fact = facts.find(term);
  if (fact == facts.end()) throw std::runtime_error("conversations: nothing has told \"" + std::string(term) + "\"");
  return fact->second;
}

Bytes countingBytes(std::size_t size) {
  Bytes bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i % 255 + 1);
  return bytes;
}

Bytes missingPicture(std::size_t size) {
  Bytes bytes(size, '\0');
  if (size > 1) bytes[1] = '\xFF';
  return bytes;
}

}  // namespace

std::int64_t parseNumber(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isAll = error == std::errc{} && end == text.data() + text.size();
  if (isAll && number >= -largestNumber && number <= largestNumber) return number;
  throw std::runtime_error("conversations: no number: \"" + std::string(text) + "\"");
}

std::int64_t evaluate(std::string_view expression, const Facts& facts) {
  std::int64_t value = 1;
  for (char sign = '*'; sign != '\0';) {
    const std::size_t end = expression.find_first_of("*/");
    const std::int64_t operand = evaluateTerm(expression.substr(0, end), facts);
    if (sign == '/' && operand == 0) throw std::runtime_error("conversations: a division by zero");
    value = sign == '*' ? multiply(value, operand) : value / operand;
    sign = end == std::string_view::npos ? '\0' : expression[end];
    expression.remove_prefix(end == std::string_view::npos ? expression.size() : end + 1);
  }
  return value;
}

Bytes encodeInteger(std::int64_t value) {
  Bytes bytes(4, '\0');
  for (std::size_t i = 0; i < 4; ++i) bytes[i] = static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * i) & 0xFFU);
  return bytes;
}

Bytes encodeText(std::string_view text) {
  const std::string digits = std::to_string(text.size());
  return Bytes(6 - digits.size(), ' ') + digits + Bytes(text);
}

std::int32_t decodeInteger(const Bytes& bytes) {
  std::uint32_t value = 0;
  for (std::size_t i = 4; i > 0; --i) value = value << 8 | static_cast<unsigned char>(bytes.at(i - 1));
  return static_cast<std::int32_t>(value);
}

bool isNumber(Type type) { return type < Type::text; }

std::string_view unquoted(std::string_view text) {
  if (text.size() < 2 || text.front() != '"' || text.back() != '"')
    throw std::runtime_error("conversations: not in quotes: " + std::string(text));
  return text.substr(1, text.size() - 2);
}

Bytes encode(const Field& field, const Value& value, Facts& facts) {
  if (isNumber(field.type)) return encodeInteger(facts[field.name] = evaluate(value.text, facts));
  if (field.type == Type::text) return encodeText(unquoted(value.text));
  if (field.type == Type::name) return Bytes(unquoted(value.text)) + '\0';
  const std::size_t size = blockSize(field, facts);
  return value.text == "none" ? missingPicture(size) : countingBytes(size);
}

}  // namespace fringix::protocol
