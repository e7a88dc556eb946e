// The values of examples as bytes of the wire.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "protocol/conversations.h"

namespace fringix::protocol {

using Bytes = std::string;

// Numbers that have crossed the wire, by the names of their fields: what sizes and later values are made of.
using Facts = std::map<std::string, std::int64_t, std::less<>>;

// All of a text, in decimal. Throws std::runtime_error for what is no number, or far above all that makes sense.
std::int64_t parseNumber(std::string_view text);

// Numbers and names of facts with * and / between them, from left to right. Throws std::runtime_error for an
// unknown name and for what is too large.
std::int64_t evaluate(std::string_view expression, const Facts& facts);

Bytes encodeInteger(std::int64_t value);  // 4 bytes, least significant first
Bytes encodeText(std::string_view text);  // its length in 6 characters, then the text
std::int32_t decodeInteger(const Bytes& bytes);

// A number is a fact from then on. A block has 256 MiB at most, else std::runtime_error is thrown. Bytes that the value does not say count
// from 1 to 255, over and over.
Bytes encode(const Field& field, const Value& value, Facts& facts);

bool isNumber(Type type);
std::string_view unquoted(std::string_view text);

}  // namespace fringix::protocol
