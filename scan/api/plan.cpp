#include <algorithm>
#include <string>

#include "export.h"
#include "records.h"
#include "scan/plan.h"

namespace fringix::scan {

namespace {

Method methodFrom(std::int32_t method) {
  if (method != SLSCAN_GRAY_AND_PHASE && method != SLSCAN_THREE_FREQUENCIES) {
    throw Failure(Status::badParameter, "plan: method " + std::to_string(method) + " is unknown");
  }
  return static_cast<Method>(method);
}

std::size_t indexIn(const Plan& plan, std::int32_t index) {
  if (index < 0 || static_cast<std::size_t>(index) >= plan.pictures().size()) {
    throw Failure(Status::badParameter,
                  "plan: there is no picture " + std::to_string(index) + " among " + std::to_string(plan.pictures().size()));
  }
  return static_cast<std::size_t>(index);
}

}  // namespace

PlanSettings planFrom(const SLScanPlan& plan) { return {methodFrom(plan.method), plan.projectorWidth, plan.period, plan.steps}; }

}  // namespace fringix::scan

using namespace fringix::scan;

extern "C" {

int32_t SLScanPlanDefaults(int32_t method, int32_t projectorWidth, SLScanPlan* plan) {
  return guarded([&] {
    requireNotNull({plan});
    const PlanSettings settings = Plan(defaultSettings(methodFrom(method), projectorWidth)).settings();
    *plan = {method, settings.projectorWidth, settings.period, settings.steps};
  });
}

int32_t SLScanPlanPictureCount(const SLScanPlan* plan, int32_t* count) {
  return guarded([&] {
    requireNotNull({plan, count});
    *count = static_cast<std::int32_t>(Plan(planFrom(*plan)).pictures().size());
  });
}

int32_t SLScanPlanPicture(const SLScanPlan* plan, int32_t index, SLScanPicture* picture) {
  return guarded([&] {
    requireNotNull({plan, picture});
    const Plan full(planFrom(*plan));
    const PictureRole& role = full.pictures()[indexIn(full, index)];
    *picture = {static_cast<std::int32_t>(role.kind), role.frequency, role.number};
  });
}

int32_t SLScanPlanLine(const SLScanPlan* plan, int32_t index, uint8_t* line, uint32_t length) {
  return guarded([&] {
    requireNotNull({plan, line});
    const Plan full(planFrom(*plan));
    const auto pixels = full.line(indexIn(full, index));
    if (length != pixels.size()) {
      throw Failure(Status::badParameter,
                    "a line has " + std::to_string(pixels.size()) + " bytes; room for " + std::to_string(length) + " was given");
    }
    std::copy(pixels.begin(), pixels.end(), line);
  });
}
}
