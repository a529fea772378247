#include "geomath/frame/deformation_model.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "geomath/base/angle.h"
#include "geomath/base/batch.h"
#include "geomath/frame/motion_formulas.h"
#include "geomath/frame/search_back.h"
#include "geomath/shift/grid/node_grid.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

// Last changes of an inverse: 10 nm, of which the slope of the displacements, at most some hundredths
// beside a fault, is left.
constexpr double kLastAngle = 2e-15, kLastHeight = 1e-8;

// By how much, in radians, a point outside of an extent counts as on its edge: 0.6 mm, the rounding of
// coordinates that are printed with 9 decimals of a degree.
constexpr double kOnEdge = 1e-10;

constexpr Turn kTurn{kTwoPi, 1 / kTwoPi};

bool IsSound(const GeographicExtent& extent) {
  return extent.south <= extent.north && extent.west <= extent.east &&
         extent.east - extent.west <= kTwoPi + kOnEdge && std::abs(extent.west) <= 2 * kTwoPi &&
         std::abs(extent.south) <= kHalfPi + kOnEdge && std::abs(extent.north) <= kHalfPi + kOnEdge;
}

std::string FaultOf(const TimeFunction& f) {
  double numbers[] = {f.epoch, f.beforeFactor, f.initialFactor, f.finalFactor, f.relaxation};
  if (!std::all_of(std::begin(numbers), std::end(numbers),
                   [](double x) { return std::isfinite(x); }))
    return "a number of its time function is not finite";
  if (f.kind == TimeFunctionKind::exponential && !(f.relaxation > 0 && f.end >= f.epoch))
    return "its relaxation is not positive, or ends before it begins";
  if (f.kind != TimeFunctionKind::piecewise) return "";
  if (f.points.empty()) return "its time function has no points";
  for (std::size_t i = 0; i < f.points.size(); ++i) {
    if (!std::isfinite(f.points[i].date) || !std::isfinite(f.points[i].factor))
      return "a point of its time function is not finite";
    if (i > 0 && f.points[i].date < f.points[i - 1].date)
      return "the points of its time function go back in time";
  }
  return "";
}

std::string FaultOf(const DeformationModelDefinition& definition) {
  if (!(definition.ellipsoid.a > 0)) return "the ellipsoid has no positive semi-major axis";
  if (!IsSound(definition.extent)) return "the extent is not on the Earth, or turned around";
  if (!(definition.years.first <= definition.years.last)) return "the years end before they begin";
  if (definition.components.empty() ||
      definition.components.size() > DeformationModel::kMaxComponents)
    return "a model has 1 to 4096 components";
  if (definition.angles && definition.method == HorizontalMethod::geocentric)
    return "angles are not applied as vectors in space";
  return "";
}

// A block whose points have one date needs each factor once.
bool IsOneDate(const double* dates, std::size_t count) {
  return std::all_of(dates, dates + count, [dates](double date) { return date == dates[0]; });
}

}  // namespace

// A component whose nodes hold radians and metres.
struct DeformationModel::Component {
  std::unique_ptr<const NodeGrid> nodes;
  ShiftComponents displacement;
  bool inSpace;  // the nodes hold vectors along X, Y, Z
  double south, north;
  double west, east;  // counted from the western edge of the model
  TimeFunction time;

  // `l` counts from the western edge of the model to the turn.
  bool Holds(double b, double l) const {
    const bool along = (b >= south - kOnEdge) & (b <= north + kOnEdge);
    const bool across = (l >= west - kOnEdge) & (l <= east + kOnEdge);
    const bool pastTurn = l + kTwoPi <= east + kOnEdge;
    return along & (across | pastTurn);
  }

  // Null with a reason.
  static std::unique_ptr<Component> Make(const DeformationModelDefinition& model,
                                         DeformationComponent& given, std::string& reason);
};

// The points of a block: latitudes, and longitudes from the western edge of the model.
struct DeformationModel::Place {
  const double *b, *l;
  bool oneDate;
};

struct DeformationModel::Sums {
  double north[kBatchBlock], east[kBatchBlock], up[kBatchBlock];
};

namespace {

// The displacements in the nodes, in metres, as vectors along X, Y, Z.
void TurnIntoSpace(ShiftGridPart& part, ShiftComponents displacement, double horizontalUnit,
                   double verticalUnit) {
  const bool level = displacement != ShiftComponents::vertical;
  const bool height = displacement != ShiftComponents::horizontal;
  const std::size_t components = level && height ? 3 : level ? 2 : 1;
  std::vector<float> turned;
  turned.reserve(part.values.size() / components * 3);
  const float* value = part.values.data();
  for (int row = 0; row < part.rows; ++row)
    for (int column = 0; column < part.columns; ++column, value += components) {
      const double b = part.south + row * part.northStep, l = part.west + column * part.eastStep;
      const double n = level ? value[0] * horizontalUnit : 0;
      const double e = level ? value[1] * horizontalUnit : 0;
      const double u = height ? value[components - 1] * verticalUnit : 0;
      const auto [sinB, cosB] = SinCos(b);
      const auto [sinL, cosL] = SinCos(l);
      const double outward = u * cosB - n * sinB;
      const double xyz[] = {outward * cosL - e * sinL, outward * sinL + e * cosL,
                            n * cosB + u * sinB};
      for (const double x : xyz) turned.push_back(static_cast<float>(x));
    }
  part.values = std::move(turned);
}

}  // namespace

std::unique_ptr<DeformationModel::Component> DeformationModel::Component::Make(
    const DeformationModelDefinition& model, DeformationComponent& given, std::string& reason) {
  const bool inSpace = given.interpolation == DisplacementInterpolation::geocentricBilinear;
  reason = FaultOf(given.time);
  if (reason.empty() && !IsSound(given.extent))
    reason = "its extent is not on the Earth, or turned around";
  if (reason.empty() && inSpace && model.angles) reason = "angles are not interpolated in space";
  const std::size_t components = static_cast<std::size_t>(given.displacement) + 1;
  for (const ShiftGridPart& part : given.parts) {
    const auto nodes = static_cast<double>(part.rows) * part.columns;
    if (reason.empty() && inSpace &&
        nodes * static_cast<double>(components) != static_cast<double>(part.values.size()))
      reason = "the size of a part does not fit its values";
  }
  if (!reason.empty()) return nullptr;

  NodeGrid::Definition nodes;
  nodes.parts = std::move(given.parts);
  nodes.turns = true;
  nodes.components = inSpace ? 3 : components;
  const bool vertical = given.displacement == ShiftComponents::vertical;
  const double h = model.horizontalUnit, v = model.verticalUnit;
  const double units[] = {vertical ? v : h, h, v}, metres[] = {1, 1, 1};
  std::copy_n(inSpace ? metres : units, 3, nodes.units);
  for (ShiftGridPart& part : nodes.parts) {
    part.accuracies.clear();
    if (inSpace) TurnIntoSpace(part, given.displacement, h, v);
  }
  auto made = std::make_unique<Component>();
  made->nodes = NodeGrid::Make(std::move(nodes), reason);
  if (!made->nodes) return nullptr;
  made->displacement = given.displacement;
  made->inSpace = inSpace;
  made->south = given.extent.south;
  made->north = given.extent.north;
  made->west = kTurn.Reduce(given.extent.west - model.extent.west);
  made->east = made->west + (given.extent.east - given.extent.west);
  made->time = std::move(given.time);
  return made;
}

std::unique_ptr<DeformationModel> DeformationModel::Make(DeformationModelDefinition definition,
                                                         std::string* reason) noexcept try {
  std::string fault = FaultOf(definition);
  std::vector<Component> components;
  for (DeformationComponent& given : definition.components) {
    if (!fault.empty()) break;
    if (auto made = Component::Make(definition, given, fault))
      components.push_back(std::move(*made));
    else
      fault = "component " + std::to_string(components.size() + 1) + ": " + fault;
  }
  if (fault.empty())
    return std::unique_ptr<DeformationModel>(
        new DeformationModel(definition, std::move(components)));
  if (reason) *reason = std::move(fault);
  return nullptr;
} catch (const std::exception&) {  // no memory
  if (reason) reason->assign("no memory");
  return nullptr;
}

DeformationModel::DeformationModel(const DeformationModelDefinition& definition,
                                   std::vector<Component> components)
    : DatedShift(ShiftSpace::geographic, ShiftKind::pointMotion, definition.years),
      ellipsoid_(definition.ellipsoid),
      extent_(definition.extent),
      method_(definition.method),
      angles_(definition.angles),
      components_(std::move(components)) {}

DeformationModel::~DeformationModel() = default;

// Adds what a component does to the points within its extent. One that adds nothing at the date is
// not looked up.
void DeformationModel::AddComponent(const Component& component, const Place& place,
                                    const double* dates, Sums& sums, std::size_t count,
                                    ShiftStatus* status) const {
  const double ofAll = component.time.At(dates[0]);
  if (place.oneDate && ofAll == 0) return;
  std::size_t index[kBatchBlock], reached = 0;
  for (std::size_t i = 0; i < count; ++i) {
    index[reached] = i;
    reached += component.Holds(place.b[i], place.l[i]);
  }
  if (reached == 0) return;

  double b[kBatchBlock], l[kBatchBlock], values[3][kBatchBlock], factor[kBatchBlock];
  for (std::size_t k = 0; k < reached; ++k) {
    b[k] = place.b[index[k]];
    l[k] = extent_.west + place.l[index[k]];
    factor[k] = place.oneDate ? ofAll : component.time.At(dates[index[k]]);
  }
  ShiftStatus became[kBatchBlock] = {};
  double* const columns[] = {values[0], values[1], values[2]};
  component.nodes->Values(b, l, columns, reached, became);
  if (component.inSpace) RunKernel(LocalParts(), {b, l, values[0], values[1], values[2]}, reached);

  const bool level = component.inSpace || component.displacement != ShiftComponents::vertical;
  const bool height = component.inSpace || component.displacement != ShiftComponents::horizontal;
  const double* up = values[level ? 2 : 0];
  for (std::size_t k = 0; k < reached; ++k) {
    const std::size_t i = index[k];
    if (factor[k] == 0 || became[k] == ShiftStatus::outside) continue;
    if (became[k] == ShiftStatus::hole) status[i] = became[k];
    if (level) sums.north[i] += factor[k] * values[0][k];
    if (level) sums.east[i] += factor[k] * values[1][k];
    if (height) sums.up[i] += factor[k] * up[k];
  }
}

void DeformationModel::Apply(double* const (&point)[3], Sums& sums, std::size_t count) const {
  if (angles_) {
    for (std::size_t i = 0; i < count; ++i) {
      point[0][i] += sums.north[i];
      point[1][i] += sums.east[i];
      point[2][i] += sums.up[i];
    }
  } else if (method_ == HorizontalMethod::addition) {
    RunKernel(EllipsoidalMotion{ellipsoid_.a, ellipsoid_.e2},
              {point[0], point[1], point[2], sums.north, sums.east, sums.up}, count);
  } else {
    double b[kBatchBlock], given[kBatchBlock], one[kBatchBlock];
    std::copy_n(point[0], count, b);
    std::copy_n(point[1], count, given);
    std::fill_n(one, count, 1.0);
    ellipsoid_.BLH_to_XYZ_Batch(point[0], point[1], point[2], count);
    RunKernel(LocalMotion(), {point[0], point[1], point[2], b, sums.north, sums.east, sums.up, one},
              count);
    ellipsoid_.XYZ_to_BLH_Batch(point[0], point[1], point[2], count);
    for (std::size_t i = 0; i < count; ++i)  // longitudes keep their turn
      point[1][i] += kTwoPi * std::round((given[i] - point[1][i]) / kTwoPi);
  }
}

void DeformationModel::ForwardAt(double* const (&point)[3], const double* dates, std::size_t count,
                                 ShiftStatus* status) const {
  double east[kBatchBlock];  // of the western edge
  for (std::size_t i = 0; i < count; ++i) {
    east[i] = kTurn.Reduce(point[1][i] - extent_.west + kOnEdge) - kOnEdge;
    const bool along =
        (point[0][i] >= extent_.south - kOnEdge) & (point[0][i] <= extent_.north + kOnEdge);
    const bool across = east[i] <= extent_.east - extent_.west + kOnEdge;
    if (!(along & across)) status[i] = ShiftStatus::outside;
  }
  Sums sums;
  for (double* sum : {sums.north, sums.east, sums.up}) std::fill_n(sum, count, 0.0);
  const Place place{point[0], east, IsOneDate(dates, count)};
  for (const Component& component : components_)
    AddComponent(component, place, dates, sums, count, status);
  Apply(point, sums, count);
}

void DeformationModel::InverseAt(double* const (&point)[3], const double* dates, std::size_t count,
                                 ShiftStatus* status) const {
  constexpr double kLastChange[] = {kLastAngle, kLastAngle, kLastHeight};
  SearchBack(point, dates, count, status, kLastChange,
             [this](double* const(&columns)[3], const double* at, std::size_t open,
                    ShiftStatus* became) { ForwardAt(columns, at, open, became); });
}

}  // namespace zel_cs::geomath
