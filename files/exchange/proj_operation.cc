#include "files/exchange/proj_operation.h"

#include <fmt/format.h>
#include <proj.h>

#include "files/words/user_error.h"

namespace geomath_files {
namespace {

void Run(PJ* operation, PJ_DIRECTION direction, CoordinateColumns& points) {
  const std::size_t n = points.Count(), size = sizeof(double);
  proj_trans_generic(operation, direction, points.second.data(), size, n, points.first.data(), size,
                     n, points.height.data(), size, n, nullptr, 0, 0);
}

}  // namespace

ProjOperation::ProjOperation(const std::string& definition) : context_(proj_context_create()) {
  proj_log_level(context_, PJ_LOG_NONE);
  operation_ = proj_create(context_, definition.c_str());
  if (operation_) return;
  proj_context_destroy(context_);
  throw UserError(fmt::format("--pipeline: PROJ does not take \"{}\"", definition));
}

ProjOperation::~ProjOperation() {
  proj_destroy(operation_);
  proj_context_destroy(context_);
}

void ProjOperation::Forward(CoordinateColumns& points) const { Run(operation_, PJ_FWD, points); }
void ProjOperation::Inverse(CoordinateColumns& points) const { Run(operation_, PJ_INV, points); }

}  // namespace geomath_files
