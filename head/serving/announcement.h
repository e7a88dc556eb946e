// What a head answers when the network is searched for heads.
#pragma once

#include <string>

#include "head/model/head_model.h"

namespace fringix::head {

// Labels and numbers: serial number, model code, protocol version, number of cameras, their and the projector's size, uptime in
// seconds; with the fault that the head is set to.
std::string announcement(const HeadModel& model);

}  // namespace fringix::head
