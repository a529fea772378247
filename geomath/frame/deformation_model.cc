#include "geomath/frame/deformation_model.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "geomath/base/angle.h"
#include "geomath/base/batch.h"
#include "geomath/frame/motion_formulas.h"
#include "geomath/frame/one_date.h"
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

// Radians, 64 m: farther than points move. One that does is searched for.
constexpr double kFar = 1e-5;

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

}  // namespace

// A component whose nodes hold radians and metres.
struct DeformationModel::Component {
  std::unique_ptr<const NodeGrid> nodes;
  ShiftComponents displacement;
  bool inSpace;  // the nodes hold vectors along X, Y, Z
  double south, north;
  double west, east;  // counted from the western edge of the model
  TimeFunction time;

  // How far a point is inside of the extent, towards north or south and towards east or west;
  // negative outside.
  double Inside(double b, double l, double& across) const {
    const double here = std::min(l - west, east - l);
    across = std::max(here, std::min(l + kTwoPi - west, east - l - kTwoPi));
    return std::min(b - south, north - b);
  }

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
  bool oneDate;  // each factor is needed once
};

struct DeformationModel::Sums {
  double north[kBatchBlock], east[kBatchBlock], up[kBatchBlock];
};

// Of the sums along latitude and longitude, and their mixed derivatives; and how far a point may move
// along either until these are others.
struct DeformationModel::Slopes {
  double north[2][kBatchBlock], east[2][kBatchBlock], up[2][kBatchBlock];
  double northTwist[kBatchBlock], eastTwist[kBatchBlock], upTwist[kBatchBlock];
  double room[2][kBatchBlock];
  double parallels
      [kBatchBlock];  // how the radians of a metre to the east grow to the north, of themselves

  void Limit(std::size_t i, double along, double across) {
    room[0][i] = std::min(room[0][i], along);
    room[1][i] = std::min(room[1][i], across);
  }
};

namespace {

// The surfaces of a component at the points that it holds.
struct ComponentSurface {
  double value[3][kBatchBlock], alongB[3][kBatchBlock], alongL[3][kBatchBlock];
  double twist[3][kBatchBlock], room[2][kBatchBlock];

  CellSurface View() {
    return {{{value[0], value[1], value[2]},
             {alongB[0], alongB[1], alongB[2]},
             {alongL[0], alongL[1], alongL[2]}},
            {twist[0], twist[1], twist[2]},
            room[0],
            room[1],
            kFar};
  }

  // Vectors along X, Y, Z to their parts along N, E and U, which turn with the place: ∂N/∂B = −U,
  // ∂U/∂B = N, ∂N/∂L = −sin B·E, ∂E/∂L = sin B·N − cos B·U, ∂U/∂L = cos B·E.
  void TurnFromSpace(double* b, double* l, bool slopes, std::size_t count) {
    RunKernel(LocalParts(), {b, l, value[0], value[1], value[2]}, count);
    if (!slopes) return;
    for (auto* along : {&alongB, &alongL})
      RunKernel(LocalParts(), {b, l, (*along)[0], (*along)[1], (*along)[2]}, count);
    for (std::size_t k = 0; k < count; ++k) {
      const double n = value[0][k], e = value[1][k], u = value[2][k];
      const auto [sinB, cosB] = SinCos(b[k]);
      alongB[0][k] -= u;
      alongB[2][k] += n;
      alongL[0][k] -= e * sinB;
      alongL[1][k] += n * sinB - u * cosB;
      alongL[2][k] += e * cosB;
    }
  }
};

}  // namespace

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
                                    const double* dates, Sums& sums, Slopes* slopes,
                                    std::size_t count, ShiftStatus* status) const {
  const double ofAll = component.time.At(dates[0]);
  if (place.oneDate && ofAll == 0) return;
  std::size_t index[kBatchBlock], reached = 0;
  for (std::size_t i = 0; i < count; ++i) {
    index[reached] = i;
    reached += component.Holds(place.b[i], place.l[i]);
  }
  for (std::size_t i = 0; slopes && i < count; ++i) {
    if (!place.oneDate && component.time.At(dates[i]) == 0) continue;
    double across;
    const double along = component.Inside(place.b[i], place.l[i], across);
    if (component.Holds(place.b[i], place.l[i]))
      slopes->Limit(i, along, across);
    else if (std::max(-along, -across) < kFar)
      slopes->Limit(i, 0, 0);
  }
  if (reached == 0) return;

  double b[kBatchBlock], l[kBatchBlock], factor[kBatchBlock];
  for (std::size_t k = 0; k < reached; ++k) {
    b[k] = place.b[index[k]];
    l[k] = extent_.west + place.l[index[k]];
    factor[k] = place.oneDate ? ofAll : component.time.At(dates[index[k]]);
  }
  ShiftStatus became[kBatchBlock] = {};
  ComponentSurface surface;
  double* const columns[] = {surface.value[0], surface.value[1], surface.value[2]};
  if (slopes)
    component.nodes->Cells(b, l, surface.View(), reached, became);
  else
    component.nodes->Values(b, l, columns, reached, became);
  if (component.inSpace) surface.TurnFromSpace(b, l, slopes, reached);

  const bool level = component.inSpace || component.displacement != ShiftComponents::vertical;
  const bool height = component.inSpace || component.displacement != ShiftComponents::horizontal;
  const int up = level ? 2 : 0;
  for (std::size_t k = 0; k < reached; ++k) {
    const std::size_t i = index[k];
    if (factor[k] == 0) continue;
    // Vectors in space turn with the place.
    if (slopes && component.inSpace) slopes->Limit(i, 0, 0);
    if (slopes) slopes->Limit(i, surface.room[0][k], surface.room[1][k]);
    if (became[k] == ShiftStatus::outside) continue;
    if (became[k] == ShiftStatus::hole) status[i] = became[k];
    if (level) sums.north[i] += factor[k] * surface.value[0][k];
    if (level) sums.east[i] += factor[k] * surface.value[1][k];
    if (height) sums.up[i] += factor[k] * surface.value[up][k];
    if (!slopes) continue;
    const auto add = [&](double(&along)[2][kBatchBlock], double(&twist)[kBatchBlock], int c) {
      along[0][i] += factor[k] * surface.alongB[c][k];
      along[1][i] += factor[k] * surface.alongL[c][k];
      twist[i] += factor[k] * surface.twist[c][k];
    };
    if (level) add(slopes->north, slopes->northTwist, 0);
    if (level) add(slopes->east, slopes->eastTwist, 1);
    if (height) add(slopes->up, slopes->upTwist, up);
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

// The sums of the displacements at points, and their slopes where they are asked for.
void DeformationModel::Displace(const double* b, const double* l, const double* dates,
                                std::size_t count, Sums& sums, Slopes* slopes,
                                ShiftStatus* status) const {
  double east[kBatchBlock];  // of the western edge
  const double width = extent_.east - extent_.west;
  for (std::size_t i = 0; i < count; ++i) {
    east[i] = kTurn.Reduce(l[i] - extent_.west + kOnEdge) - kOnEdge;
    const bool along = (b[i] >= extent_.south - kOnEdge) & (b[i] <= extent_.north + kOnEdge);
    const bool across = east[i] <= width + kOnEdge;
    if (!(along & across)) status[i] = ShiftStatus::outside;
  }
  for (double* sum : {sums.north, sums.east, sums.up}) std::fill_n(sum, count, 0.0);
  if (slopes) {
    *slopes = {};
    for (std::size_t i = 0; i < count; ++i) {
      slopes->room[0][i] = slopes->room[1][i] = kFar;
      slopes->Limit(i, std::min(b[i] - extent_.south, extent_.north - b[i]),
                    std::min(east[i], width - east[i]));
    }
  }
  const Place place{b, east, IsOneDate(dates, count)};
  for (const Component& component : components_)
    AddComponent(component, place, dates, sums, slopes, count, status);
}

void DeformationModel::ForwardAt(double* const (&point)[3], const double* dates, std::size_t count,
                                 ShiftStatus* status) const {
  Sums sums;
  Displace(point[0], point[1], dates, count, sums, nullptr, status);
  Apply(point, sums, count);
}

// Sums of displacements of HorizontalMethod::addition, and their slopes, as angles.
void DeformationModel::ToAngles(const double* b, std::size_t count, Sums& sums,
                                Slopes& slopes) const {
  if (angles_) return;
  std::copy_n(b, count, slopes.parallels);
  RunKernel(EllipsoidalMotionSlopes{ellipsoid_.a, ellipsoid_.e2},
            {slopes.parallels, sums.north, sums.east, slopes.north[0], slopes.north[1],
             slopes.east[0], slopes.east[1], slopes.northTwist, slopes.eastTwist},
            count);
}

void DeformationModel::DifferentiateAt(const double* const (&source)[3], const double* dates,
                                       std::size_t count, double* const (&jacobian)[9],
                                       ShiftStatus* status) const {
  if (method_ == HorizontalMethod::geocentric)
    return DatedShift::DifferentiateAt(source, dates, count, jacobian, status);
  Sums sums;
  Slopes slopes;
  Displace(source[0], source[1], dates, count, sums, &slopes, status);
  ToAngles(source[0], count, sums, slopes);
  for (std::size_t c = 0; c < 2; ++c)
    for (std::size_t i = 0; i < count; ++i) {
      jacobian[c][i] += slopes.north[c][i];
      jacobian[3 + c][i] += slopes.east[c][i];
      jacobian[6 + c][i] += slopes.up[c][i];
    }
}

// Newton's method in the cells of a target, b, l and h: displacements are s + S·δ + Q(δ) there. A step
// δ = −(I + S)⁻¹·s leaves Q(δ), which the twist of the cells and the growth g of the radians of a metre
// to the east make; a second step for that leaves less than `rest`. False, nothing written, where that
// is more than nothing, or where the origin lies in another cell.
bool DeformationModel::StepBack(const Sums& sums, const Slopes& slopes, std::size_t i, double& b,
                                double& l, double& h) const {
  constexpr double kRest = 1e-17;      // radians, 0.06 nm
  constexpr double kMeridians = 0.02;  // how the radii of meridians grow along them, at most
  const double nB = slopes.north[0][i], nL = slopes.north[1][i];
  const double eB = slopes.east[0][i], eL = slopes.east[1][i];
  const double nTwist = slopes.northTwist[i], eTwist = slopes.eastTwist[i];
  const double g = slopes.parallels[i], e = sums.east[i];
  const double perDeterminant = 1 / ((1 + nB) * (1 + eL) - nL * eB);
  const auto solve = [&](double north, double east, double& db, double& dl) {
    db = (nL * east - (1 + eL) * north) * perDeterminant;
    dl = (eB * north - (1 + nB) * east) * perDeterminant;
  };
  double db, dl, moreB, moreL;
  solve(sums.north[i], e, db, dl);
  const double curved = (eB - e * g) * g + e * (g * g + 0.5);
  solve(nTwist * db * dl, (eTwist + eL * g) * db * dl + curved * db * db, moreB, moreL);

  const double step = std::abs(db) + std::abs(dl);
  const double strain = std::abs(nB) + std::abs(nL) + std::abs(eB) + std::abs(eL);
  const double secant2 = 1 + g * g, twist = std::abs(nTwist) + std::abs(eTwist);
  const double rest = 2 * twist * step * (std::abs(moreB) + std::abs(moreL)) +
                      2 * secant2 * secant2 * (std::abs(e) + strain) * step * step * step +
                      (angles_ ? 0 : kMeridians * strain * step * step);
  db += moreB;
  dl += moreL;
  const bool inCell = std::abs(db) < slopes.room[0][i] && std::abs(dl) < slopes.room[1][i];
  if (!(inCell && rest <= kRest)) return false;
  b += db;
  l += dl;
  h -= sums.up[i] + slopes.up[0][i] * db + slopes.up[1][i] * dl + slopes.upTwist[i] * db * dl;
  return true;
}

void DeformationModel::InverseAt(double* const (&point)[3], const double* dates, std::size_t count,
                                 ShiftStatus* status) const {
  constexpr double kLastChange[] = {kLastAngle, kLastAngle, kLastHeight};
  bool found[kBatchBlock] = {};
  if (method_ == HorizontalMethod::addition) {
    Sums sums;
    Slopes slopes;
    ShiftStatus became[kBatchBlock] = {};
    Displace(point[0], point[1], dates, count, sums, &slopes, became);
    ToAngles(point[0], count, sums, slopes);
    for (std::size_t i = 0; i < count; ++i)
      found[i] =
          HasResult(became[i]) && StepBack(sums, slopes, i, point[0][i], point[1][i], point[2][i]);
  }
  SearchBack(
      point, dates, count, status, kLastChange,
      [this](double* const(&columns)[3], const double* at, std::size_t open, ShiftStatus* became) {
        ForwardAt(columns, at, open, became);
      },
      found);
}

}  // namespace zel_cs::geomath
