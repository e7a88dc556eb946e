// What a head can be asked or told by name: one row for each value.
#pragma once

#include <cstdint>
#include <fringix/fringix.hpp>
#include <span>
#include <string>

namespace fringix::tool {

struct Value {
  const char* name;                            // on the command line and in JSON
  const char* label;                           // in tables and messages
  const char* meaning;                         // for the help
  const char* unit;                            // null: it has none, or only the head knows it
  std::int32_t since;                          // the protocol version that it needs; 0: none
  std::int64_t (*read)(const Device&);         // null: can only be set
  Range (*range)(const Device&);               // null: the head does not tell
  void (*write)(const Device&, std::int32_t);  // null: can only be read
  Range sendable;                              // other numbers have no place in the command
};

enum class Access { read, write };

std::span<const Value> allValues();

// The value of that name; throws arguments::UsageError when there is none that can be read or set as asked.
const Value& findValue(const std::string& name, Access access);

// A line "name  meaning" for each value that can be read or set, begun with its line end.
std::string listValues(Access access);

}  // namespace fringix::tool
