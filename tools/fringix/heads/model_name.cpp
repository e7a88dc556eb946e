#include "heads/model_name.h"

#include <fringix/fringix.hpp>
#include <future>
#include <memory>

#include "aside/run_aside.h"

namespace fringix::tool {
namespace {

std::string search(const std::string& address) {
  try {
    for (const FoundDevice& head : findDevices())
      if (head.address == address) return head.model;
  } catch (const Error&) {  // then nobody tells
  }
  return "";
}

}  // namespace

// Where answers never pause, a search does not end.
std::string modelName(const std::string& address, std::chrono::milliseconds limit) {
  const auto answer = std::make_shared<std::promise<std::string>>();
  std::future<std::string> answered = answer->get_future();
  runAside([address, answer] { answer->set_value(search(address)); });
  return answered.wait_for(limit) == std::future_status::ready ? answered.get() : "";
}

}  // namespace fringix::tool
