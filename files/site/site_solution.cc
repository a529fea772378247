#include "files/site/site_solution.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

#include "files/system/system_sections.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/proj/param_table.h"

using namespace zel_cs::geomath;

namespace geomath_files {
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

// Local coordinates are those after the ground system; the calibration stands before it.
void LeaveGround(const GridToGround* ground, const std::string& name, IdenticalPoint& p) {
  unsigned long present = p.localFlags;
  if (!ground || ground->IsDisabled() || !(present & (kHasNorth | kHasEast))) return;
  if (!ground->ToGrid(p.localN, p.localE, p.localH, &present))
    throw UserError(fmt::format(
        "point {}: one local coordinate alone cannot be turned back from the ground system", name));
}

// A site's own projection stands at the middle of the longitudes: across ±180° they go on.
void JoinLongitudes(std::vector<IdenticalPoint>& points) {
  const auto first = std::find_if(points.begin(), points.end(), HasPosition);
  if (first == points.end()) return;
  const double near = std::remainder(first->globalE, kTwoPi);
  for (IdenticalPoint& p : points) p.globalE -= std::round((p.globalE - near) / kTwoPi) * kTwoPi;
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
  if (const ChainResult result = chain.ToLocal(p.globalN, p.globalE, p.globalH, frame.date);
      !result)
    throw UserError(
        fmt::format("point {}: {} cannot convert it", point.name, ChainStepName(result.failedAt)));
  return p;
}

}  // namespace

bool HasPosition(const IdenticalPoint& p) {
  constexpr std::uint32_t kPlane = kHasNorth | kHasEast;
  return (p.globalFlags & kPlane) == kPlane;
}

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

LengthUnit UnitOfControl(std::size_t column, const GridUnits& units) {
  if (column < 3) return {};
  return column == 5 ? units.height : units.plane;
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
    : projection_(std::move(frame.projection)), control_(control), adjustment_(options.adjustment) {
  if (!std::isnan(options.date)) frame.date = options.date;
  CoordinateChain chain = frame.chain;
  chain.SetProjection(projection_.get());
  chain.SetLocalization(nullptr);
  chain.SetGround(nullptr);
  if (chain.NeedsDates() && std::isnan(frame.date))
    throw UserError("the control needs the date of its global positions: their frame moves");
  for (const ControlPoint& point : control) {
    points_.push_back(ToGrid(chain, frame, point));
    if (options.onPoint) options.onPoint();
  }
  if (!projection_) JoinLongitudes(points_);
  for (IdenticalPoint& p : points_) {
    if (options.fixedScale) p.scaleHeight = 0;
    pointers_.push_back(&p);
  }

  solver_.emplace(pointers_.data(), static_cast<int>(points_.size()), options.fixedScale,
                  projection_.get(), frame.ellipsoid.a, frame.ellipsoid.invF,
                  options.centreOnFirst ? kFirstPoint : kCentreOfExtent);
  TakeCovariances(chain, frame.geographic, frame.date);
  const bool solved = solver_->UpdateParameters();
  TakeParameters();
  TakeEstimates();
  if (!ShiftHeightsInLine() && !solved)
    throw UserError(
        "the control points do not give a calibration: at least one point with global "
        "and local coordinates and a use is needed, and not all in one place");
  RefuseOnePlace();
  RefuseMissedPoint();
  check_.emplace(pointers_.data(), static_cast<int>(points_.size()), *solver_, options.onPoint);
}

void SiteSolution::RefuseOnePlace() const {
  if (site_.mode & LocalToGrid::kHorizontal) return;
  for (std::size_t i = 0; i < points_.size(); ++i)
    if (solver_->UseForHorParams(static_cast<int>(i)))
      throw UserError(
          "the horizontal control does not give a calibration: its points stand in one place");
}

void SiteSolution::TakeParameters() {
  site_.mode = solver_->GetInitialization();
  site_.SetProj(solver_->GetBaseProjection());
  double v[kPlaneKeys];
  if (solver_->GetPlaneParameters(v[0], v[1], v[2], v[3]))
    for (int i = 0; i < kPlaneKeys; ++i) site_.SetPlaneParam(v[i], i, 0);
  if (solver_->GetHeightParameters(v[0], v[1], v[2]))
    for (int i = 0; i < kHeightKeys; ++i) site_.SetHeightParam(v[i], i, 0);
}

// The estimates leave residuals of both parts, whether these are solved or not.
void SiteSolution::TakeEstimates() {
  const bool horizontal = site_.mode & LocalToGrid::kHorizontal;
  if (double rms; horizontal && solver_->GetDEstimation(rms)) rms_ = rms;
  if (double rms, angle; horizontal && solver_->GetEstimations(rms, angle)) rotationError_ = angle;
  solver_->CalcResiduals(horizontal, site_.mode & LocalToGrid::kVertical);
}

bool SiteSolution::ShiftHeightsInLine() {
  constexpr double kLeast = 3;  // fewer have their mean from the solver
  double sum = 0, count = 0, n, e, h;
  for (std::size_t i = 0; i < points_.size(); ++i) {
    if (!solver_->UseForVertParams(static_cast<int>(i))) continue;
    sum += points_[i].localH - points_[i].globalH;
    ++count;
  }
  const bool initialized = solver_->GetLocalOrigin(n, e, h);
  if (!initialized || site_.mode & LocalToGrid::kVertical || count < kLeast) return false;
  const double shift = sum / count;
  site_.SetHeightParam(shift, 0, 0);
  site_.mode |= LocalToGrid::kVertical;
  for (IdenticalPoint& p : points_)
    if (p.globalFlags & p.localFlags & kHasHeight) p.residualH = p.localH - (p.globalH + shift);
  return true;
}

void SiteSolution::RefuseMissedPoint() const {
  constexpr double kMissed = 1e-3;  // metres: far above the rounding of a shift
  const auto used = [&](std::size_t i) { return solver_->UseForHorParams(static_cast<int>(i)); };
  std::size_t only = points_.size();
  for (std::size_t i = 0; i < points_.size(); ++i) {
    if (!used(i)) continue;
    if (only < points_.size()) return;
    only = i;
  }
  if (only == points_.size() || !(site_.mode & LocalToGrid::kHorizontal)) return;
  const double miss = std::hypot(points_[only].residualN, points_[only].residualE);
  if (!(miss <= kMissed))
    throw UserError(fmt::format("point {}: the site misses its only horizontal point by {:.3f} m",
                                NameOf(only), miss));
}

std::vector<std::string> SiteSolution::Warnings() const {
  std::vector<std::string> texts;
  for (const CalibrationWarning& warning : check_->Warnings()) {
    const bool named = warning.point >= 0;
    texts.push_back(CalibrationWarningText(
        warning, named ? NameOf(static_cast<std::size_t>(warning.point)) : ""));
  }
  return texts;
}

std::vector<double> OwnProjectionValues(const SiteSolution& solution) {
  std::vector<double> values;
  for (int i = 0; i < solution.Projection().GetQParam(); ++i)
    values.push_back(solution.Projection().GetParam(i, kUnitDegrees));
  return values;
}

}  // namespace geomath_files
