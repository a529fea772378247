#include "geomath/frame/velocity_grid.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "geomath/base/batch.h"
#include "geomath/frame/motion_formulas.h"
#include "geomath/frame/search_back.h"
#include "geomath/shift/grid/node_grid.h"

namespace zel_cs::geomath {
namespace {

// A last change of 10 nm leaves that times the slope of what velocities sum up to, 1e-4: nothing.
constexpr double kLastChange[] = {1e-8, 1e-8, 1e-8};

std::string FaultOf(const VelocityGridDefinition& definition) {
  if (!(definition.ellipsoid.a > 0)) return "the ellipsoid has no positive semi-major axis";
  if (!std::isfinite(definition.epoch)) return "the epoch is not finite";
  if (!(definition.years.first <= definition.years.last)) return "the years end before they begin";
  return "";
}

}  // namespace

std::unique_ptr<VelocityGrid> VelocityGrid::Make(VelocityGridDefinition definition,
                                                 std::string* reason) noexcept try {
  std::string fault = FaultOf(definition);
  std::unique_ptr<const NodeGrid> made;
  if (fault.empty()) {
    NodeGrid::Definition nodes;
    nodes.parts = std::move(definition.parts);
    nodes.turns = true;
    nodes.components = definition.components == VelocityComponents::northEast ? 2 : 3;
    std::fill_n(nodes.units, 3, definition.unit);
    made = NodeGrid::Make(std::move(nodes), fault);
  }
  if (made) return std::unique_ptr<VelocityGrid>(new VelocityGrid(definition, std::move(made)));
  if (reason) *reason = std::move(fault);
  return nullptr;
} catch (const std::exception&) {  // no memory
  if (reason) reason->assign("no memory");
  return nullptr;
}

VelocityGrid::VelocityGrid(const VelocityGridDefinition& definition,
                           std::unique_ptr<const NodeGrid> nodes)
    : DatedShift(ShiftSpace::geocentric, ShiftKind::pointMotion, definition.years),
      ellipsoid_(definition.ellipsoid),
      components_(definition.components),
      epoch_(definition.epoch),
      nodes_(std::move(nodes)) {}

VelocityGrid::~VelocityGrid() = default;

void VelocityGrid::ForwardAt(double* const (&point)[3], const double* dates, std::size_t count,
                             ShiftStatus* status) const {
  double at[3][kBatchBlock], velocity[3][kBatchBlock], years[kBatchBlock];
  for (std::size_t c = 0; c < 3; ++c) std::copy_n(point[c], count, at[c]);
  ellipsoid_.XYZ_to_BLH_Batch(at[0], at[1], at[2], count);
  double* const values[] = {velocity[0], velocity[1], velocity[2]};
  nodes_->Values(at[0], at[1], values, count, status);
  for (std::size_t i = 0; i < count; ++i) years[i] = dates[i] - epoch_;

  if (components_ == VelocityComponents::geocentric) {
    for (std::size_t c = 0; c < 3; ++c)
      for (std::size_t i = 0; i < count; ++i) point[c][i] += years[i] * velocity[c][i];
    return;
  }
  if (components_ == VelocityComponents::northEast) std::fill_n(velocity[2], count, 0.0);
  RunKernel(LocalMotion(),
            {point[0], point[1], point[2], at[0], velocity[0], velocity[1], velocity[2], years},
            count);
}

void VelocityGrid::InverseAt(double* const (&point)[3], const double* dates, std::size_t count,
                             ShiftStatus* status) const {
  SearchBack(point, dates, count, status, kLastChange,
             [this](double* const(&columns)[3], const double* at, std::size_t open,
                    ShiftStatus* became) { ForwardAt(columns, at, open, became); });
}

void VelocityGrid::DifferentiateAt(const double* const (&source)[3], const double* dates,
                                   std::size_t count, double* const (&jacobian)[9],
                                   ShiftStatus* status) const {
  double at[3][kBatchBlock], velocity[3][kBatchBlock] = {}, years[kBatchBlock];
  for (std::size_t c = 0; c < 3; ++c) std::copy_n(source[c], count, at[c]);
  ellipsoid_.XYZ_to_BLH_Batch(at[0], at[1], at[2], count);
  for (std::size_t i = 0; i < count; ++i) years[i] = dates[i] - epoch_;
  const auto& j = jacobian;
  for (const int up : {2, 5}) std::fill_n(j[up], count, 0.0);
  nodes_->Surface(at[0], at[1],
                  {{velocity[0], velocity[1], velocity[2]}, {j[0], j[1], j[2]}, {j[3], j[4], j[5]}},
                  count, status);
  const auto run = [&](const auto& slopes) {
    const auto single = [&](double(&p)[16]) {
      slopes.template Convert<simd::Scalar>(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8],
                                            p[9], p[10], p[11], p[12], p[13], p[14], p[15]);
    };
    RunKernel(slopes,
              {at[0], at[1], at[2], velocity[0], velocity[1], velocity[2], years, j[0], j[1], j[2],
               j[3], j[4], j[5], j[6], j[7], j[8]},
              count, single);
  };
  if (components_ == VelocityComponents::geocentric)
    run(SpaceMotionSlopes{ellipsoid_.a, ellipsoid_.e2});
  else
    run(LocalMotionSlopes{ellipsoid_.a, ellipsoid_.e2});
}

}  // namespace zel_cs::geomath
