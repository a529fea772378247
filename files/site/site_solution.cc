#include "files/site/site_solution.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/proj/param_table.h"

using namespace zel_cs::geomath;

namespace geomath_tools {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kCentreOfExtent = TLocalizationParam::kCentreOfExtent, kFirstPoint = 0;

// Where a column of control points goes, and which bit says that it is there.
struct ControlField {
  double IdenticalPoint::*value;
  std::uint32_t IdenticalPoint::*flags;
  std::uint32_t bit;
};
constexpr ControlField kControlFields[] = {
    {&IdenticalPoint::globalN, &IdenticalPoint::globalFlags, kHasNorth},
    {&IdenticalPoint::globalE, &IdenticalPoint::globalFlags, kHasEast},
    {&IdenticalPoint::globalH, &IdenticalPoint::globalFlags, kHasHeight},
    {&IdenticalPoint::localN, &IdenticalPoint::localFlags, kHasNorth},
    {&IdenticalPoint::localE, &IdenticalPoint::localFlags, kHasEast},
    {&IdenticalPoint::localH, &IdenticalPoint::localFlags, kHasHeight},
};
static_assert(std::size(kControlFields) == std::size(kControlColumns));

bool HasPosition(const IdenticalPoint& p) {
  constexpr std::uint32_t kPlane = kHasNorth | kHasEast;
  return (p.globalFlags & kPlane) == kPlane;
}

// Local coordinates are those after the ground system; the calibration stands before it.
void LeaveGround(const GridToGround* ground, const std::string& name, IdenticalPoint& p) {
  unsigned long present = p.localFlags;
  if (!ground || ground->IsDisabled() || !(present & (kHasNorth | kHasEast))) return;
  if (!ground->ToGrid(p.localN, p.localE, p.localH, &present))
    throw UserError(fmt::format(
        "point {}: one local coordinate alone cannot be turned back from the ground system", name));
}

// The point in the system's grid; one without a position stays, and will not be used.
IdenticalPoint ToGrid(const CoordinateChain& chain, const SiteFrame& frame,
                      const ControlPoint& point) {
  IdenticalPoint p = point.given;
  p.localN *= frame.grid.northSign;
  p.localE *= frame.grid.eastSign;
  LeaveGround(frame.chain.GetGround(), point.name, p);
  if (!HasPosition(p)) return p;
  p.globalN *= frame.geographic.northSign * kRadPerDeg;
  p.globalE *= frame.geographic.eastSign * kRadPerDeg;
  if (const ChainResult result = chain.ToLocal(p.globalN, p.globalE, p.globalH); !result)
    throw UserError(
        fmt::format("point {}: {} cannot convert it", point.name, ChainStepName(result.failedAt)));
  return p;
}

}  // namespace

void SetControl(IdenticalPoint& point, std::size_t column, double value) {
  const ControlField& field = kControlFields[column];
  point.*field.value = value;
  point.*field.flags |= field.bit;
  point.scaleHeight = point.globalH;
}

std::optional<double> GetControl(const IdenticalPoint& point, std::size_t column) {
  const ControlField& field = kControlFields[column];
  if (!(point.*field.flags & field.bit)) return {};
  return point.*field.value;
}

IdenticalPoint NewControl() {
  IdenticalPoint point;
  for (const ControlField& field : kControlFields) point.*field.value = 0;
  point.residualN = point.residualE = point.residualH = kNaN;
  return point;
}

const std::vector<std::string>& PointUseWords() {
  static const std::vector<std::string> words = {"none", "vertical", "horizontal", "both",
                                                 "rotation"};
  return words;
}

std::optional<std::int32_t> PointUseOf(const std::string& text) {
  const std::vector<std::string>& words = PointUseWords();
  for (std::size_t code = 0; code < words.size(); ++code) {
    if (FoldName(text) == words[code] || text == std::to_string(code))
      return static_cast<std::int32_t>(code);
  }
  return {};
}

std::int32_t WholeUse(const IdenticalPoint& p) {
  constexpr std::uint32_t kPlane = kHasNorth | kHasEast;
  const std::uint32_t both = p.globalFlags & p.localFlags;
  return ((both & kPlane) == kPlane ? PointUseHorizontal : 0) |
         (both & kHasHeight ? PointUseVertical : 0);
}

SiteSolution::SiteSolution(SiteFrame frame, const std::vector<ControlPoint>& control,
                           const CalibrationOptions& options)
    : projection_(std::move(frame.projection)) {
  CoordinateChain chain = frame.chain;
  chain.SetProjection(projection_.get());
  chain.SetLocalization(nullptr);
  chain.SetGround(nullptr);
  for (const ControlPoint& point : control) {
    names_.push_back(point.name);
    points_.push_back(ToGrid(chain, frame, point));
  }
  for (IdenticalPoint& p : points_) pointers_.push_back(&p);

  solver_.emplace(pointers_.data(), static_cast<int>(points_.size()), options.fixedScale,
                  projection_.get(), frame.ellipsoid.a, frame.ellipsoid.invF,
                  options.centreOnFirst ? kFirstPoint : kCentreOfExtent);
  if (!solver_->UpdateParameters())
    throw UserError(
        "the control points do not give a calibration: at least one point with global "
        "and local coordinates and a use is needed, and not all in one place");

  site_.mode = solver_->GetInitialization();
  site_.SetProj(solver_->GetBaseProjection());
  double v[kPlaneKeys];
  if (solver_->GetPlaneParameters(v[0], v[1], v[2], v[3]))
    for (int i = 0; i < kPlaneKeys; ++i) site_.SetPlaneParam(v[i], i, 0);
  if (solver_->GetHeightParameters(v[0], v[1], v[2]))
    for (int i = 0; i < kHeightKeys; ++i) site_.SetHeightParam(v[i], i, 0);
  check_.emplace(pointers_.data(), static_cast<int>(points_.size()), *solver_);
}

std::vector<std::string> SiteSolution::Warnings() const {
  std::vector<std::string> texts;
  for (const CalibrationWarning& warning : check_->Warnings()) {
    const bool named = warning.point >= 0;
    texts.push_back(CalibrationWarningText(
        warning, named ? names_[static_cast<std::size_t>(warning.point)] : ""));
  }
  return texts;
}

std::vector<double> OwnProjectionValues(const SiteSolution& solution) {
  std::vector<double> values;
  for (int i = 0; i < solution.Projection().GetQParam(); ++i)
    values.push_back(solution.Projection().GetParam(i, kUnitDegrees));
  return values;
}

}  // namespace geomath_tools
