// What people can make running heads do.
#pragma once

#include <list>
#include <string>
#include <string_view>

#include "head/serving/head_server.h"

namespace fringix::head {

// Raises a trigger of each head; gives one line for each: who was told.
std::string triggerAll(std::list<HeadServer>& heads);

// Does what a line of standard input says: "trigger", all heads, "trigger 2", the second one, "scene ballbar:3", which pictures
// show from the answer on, or "fault always: drip". Gives the answer in whole lines; to any other line it is what can be said, to an empty
// one nothing.
std::string obey(std::string_view line, std::list<HeadServer>& heads);

}  // namespace fringix::head
