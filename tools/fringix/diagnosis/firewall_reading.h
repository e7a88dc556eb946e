// What the firewalls of this machine say of their rules.
#pragma once

#include <vector>

#include "diagnosis/facts.h"

namespace fringix::tool::diagnosis {

std::vector<Firewall> readFirewalls();  // empty: none runs

extern const System thisSystem;

}  // namespace fringix::tool::diagnosis
