#include "files/epsg/epsg_projection.h"

#include <fmt/format.h>

#include <cmath>
#include <map>
#include <memory>
#include <vector>

#include "files/system/projection_names.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/base/curvature.h"
#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/lc_proj.h"
#include "geomath/proj/methods/rso_proj.h"

using namespace zel_cs::geomath;
using nlohmann::json;
using nlohmann::ordered_json;

namespace geomath_files {
namespace {

// Parameters of conversions by the codes of the registry.
enum EpsgParameter {
  kUnity = 1,  // none of the registry: a scale of 1
  kAxisColatitude = 1036,
  kEllipsoidScaling = 1038,
  kPlaneHeight = 1039,
  kOriginLat = 8801,
  kOriginLon = 8802,
  kOriginScale = 8805,
  kFalseEasting = 8806,
  kFalseNorthing = 8807,
  kCentreLat = 8811,
  kCentreLon = 8812,
  kAzimuth = 8813,
  kSkewAngle = 8814,
  kLineScale = 8815,
  kCentreEasting = 8816,
  kCentreNorthing = 8817,
  kPseudoParallel = 8818,
  kPseudoScale = 8819,
  kFalseOriginLat = 8821,
  kFalseOriginLon = 8822,
  kFirstParallel = 8823,
  kSecondParallel = 8824,
  kFalseOriginEasting = 8826,
  kFalseOriginNorthing = 8827,
  kTrueScaleLat = 8832,
  kPolarOriginLon = 8833,
};

// What the registry says of a conversion.
class Conversion {
 public:
  Conversion(const json& projected, const std::string& title)
      : ellipsoid(EllipsoidOf(projected.at("base_crs"))),
        title_(title),
        method_(projected.at("conversion").at("method")),
        parameters_(projected.at("conversion").at("parameters")),
        primeMeridian_(PrimeMeridianOf(projected.at("base_crs"))) {}

  int MethodCode() const { return CodeIn(method_); }
  std::string MethodName() const {
    return fmt::format("{} (EPSG method {})", method_.value("name", "?"), MethodCode());
  }
  [[noreturn]] void Refuse(const std::string& reason) const {
    throw UserError(fmt::format("{}: {}: {}", title_, MethodName(), reason));
  }

  // Degrees, metres or a factor. Longitudes count from Greenwich and lie within half a turn of it.
  double Angle(EpsgParameter code) const { return Degrees(Find(code)); }
  double Longitude(EpsgParameter code) const {
    return std::remainder(Angle(code) + primeMeridian_, 360);
  }
  double Length(EpsgParameter code) const { return Metres(Find(code)); }
  double Number(EpsgParameter code) const { return code == kUnity ? 1 : Factor(Find(code)); }

  const Ellipsoid ellipsoid;

 private:
  const json& Find(EpsgParameter code) const {
    const json* parameter = parameters_.Find(code);
    if (!parameter) Refuse(fmt::format("the registry gives no parameter {}", int{code}));
    return *parameter;
  }

  const std::string& title_;
  const json& method_;
  const ParameterList parameters_;
  const double primeMeridian_;  // degrees east of Greenwich
};

// A projection while it is put together; a parameter that is missing is 0.
struct Draft {
  std::string name;
  Ellipsoid ellipsoid;
  std::map<std::string, double> values;

  std::unique_ptr<TGeoProj> Make() const {
    const ProjectionKind& kind = *FindProjection(name);
    std::vector<double> numbers;
    for (const ProjectionParameter& parameter : kind.parameters) {
      const auto value = values.find(parameter.name);
      numbers.push_back(value == values.end() ? 0 : value->second);
    }
    return MakeProjection(kind, ellipsoid.a, ellipsoid.invF, numbers);
  }

  // Moves the false origin so that a place, degrees, gets these coordinates.
  void PlaceAt(double latitude, double longitude, double easting, double northing) {
    values["East0"] = values["North0"] = 0;
    double n = latitude * kRadPerDeg, e = longitude * kRadPerDeg;
    Make()->Forward(n, e);
    values["East0"] = easting - e;
    values["North0"] = northing - n;
  }
};

// ---- what the parameters alone do not say; equations are those of EPSG Guidance Note 7-2 ----

// Method 9804 has the scale k0 on the equator: the parallel φ where it is 1 follows from
// k0 = cos φ/√(1 − e²·sin²φ).
void FindTrueScaleParallel(const Conversion& given, Draft& draft) {
  const double k0 = given.Number(kOriginScale), e2 = given.ellipsoid.e2;
  draft.values["Lat0"] = std::asin(std::sqrt((1 - k0 * k0) / (1 - e2 * k0 * k0))) * kDegPerRad;
}
bool ShrinksFromEquator(const Conversion& given) {
  return given.Angle(kOriginLat) == 0 && given.Number(kOriginScale) <= 1;
}

// Method 1024 takes geodetic latitudes to a sphere of radius a.
void TakeSphere(const Conversion& given, Draft& draft) {
  draft.ellipsoid.b = draft.ellipsoid.a = given.ellipsoid.a;
  draft.ellipsoid.SetEllipsoid(true);
}
bool StartsAtEquator(const Conversion& given) { return given.Angle(kOriginLat) == 0; }

// Method 9803 turns the cone by 29.2985″ against the meridian of origin, which is a shift of that
// meridian by the angle over the cone constant n.
void TurnBelgianCone(const Conversion& given, Draft& draft) {
  constexpr double kTurn = 29.2985 / 3600;  // degrees
  const TLCProj cone(given.ellipsoid.a, given.ellipsoid.invF,
                     given.Angle(kFirstParallel) * kRadPerDeg,
                     given.Angle(kSecondParallel) * kRadPerDeg, 0, 0, 0, 0, 1);
  draft.values["Lon0"] += kTurn / cone.ConeConstant();
}

// Method 9829 has the parallel where the scale is 1, the class the scale at the pole.
void FindPoleScale(const Conversion& given, Draft& draft) {
  const double parallel = given.Angle(kTrueScaleLat);
  draft.values["Lat0"] = std::copysign(90, parallel);
  draft.values["Scale"] = 1;
  const auto projection = draft.Make();
  double b = parallel * kRadPerDeg, l = draft.values["Lon0"] * kRadPerDeg;
  projection->Forward(b, l);
  draft.values["Scale"] = 1 / projection->GetScale();
}

// Method 9830 has its false origin on that parallel.
void FindPoleScaleAndOrigin(const Conversion& given, Draft& draft) {
  FindPoleScale(given, draft);
  draft.PlaceAt(given.Angle(kTrueScaleLat), given.Longitude(kPolarOriginLon),
                given.Length(kFalseOriginEasting), given.Length(kFalseOriginNorthing));
}

// Method 1052 lifts the plane to a height H above the ellipsoid: its factors 1 + H/ν0 and 1 + H/ρ
// are those of the ellipsoid whose radii of curvature at the origin are ρ0 + H and ν0 + H. What
// they leave, ρ varying over the city, is below 0.1 mm.
void LiftEllipsoid(const Conversion& given, Draft& draft) {
  const double phi0 = given.Angle(kOriginLat) * kRadPerDeg, H = given.Length(kPlaneHeight);
  const double s2 = std::sin(phi0) * std::sin(phi0);
  const double nu = PrimeVerticalRadius(given.ellipsoid, phi0) + H;
  const double rho = MeridianRadius(given.ellipsoid, phi0) + H;
  const double q = rho / nu;  // (1 − e²)/(1 − e²·sin²φ0)
  const double e2 = (1 - q) / (1 - q * s2);
  draft.ellipsoid.a = nu * std::sqrt(1 - e2 * s2);
  draft.ellipsoid.b = draft.ellipsoid.a * std::sqrt(1 - e2);
  draft.ellipsoid.SetEllipsoid(true);
}

// An azimuth and a skew angle, degrees, of which both or none are turned round.
double HalfTurn(double angle) { return std::remainder(angle, 180); }

constexpr double kSameAngle = 1e-10;  // degrees: 0.02 mm at the ends of the earth

bool TurnsByAzimuth(const Conversion& given) {
  return std::abs(given.Angle(kAzimuth) - given.Angle(kSkewAngle)) < kSameAngle;
}

// By γ0, the azimuth of the central line on the equator of the aposphere: sin γ0 = sin αc/D. The
// registry rounds angles from a sine of 0.6 or 0.8 to 0.0001″.
bool TurnsByEquatorAzimuth(const Conversion& given) {
  constexpr double kRounded = 0.5e-3 / 3600;  // degrees
  const TRSOProj line(given.ellipsoid.a, given.ellipsoid.invF,
                      HalfTurn(given.Angle(kAzimuth)) * kRadPerDeg, 1, 0,
                      given.Angle(kCentreLat) * kRadPerDeg, 0, 0);
  const double gamma0 = line.EquatorAzimuth() * kDegPerRad;
  return std::abs(HalfTurn(given.Angle(kSkewAngle)) - gamma0) < kRounded;
}

bool IsSwissCylinder(const Conversion& given) {
  return given.Angle(kAzimuth) == 90 && TurnsByAzimuth(given) && given.Number(kLineScale) == 1;
}

void FoldAzimuth(const Conversion&, Draft& draft) {
  double& azimuth = draft.values["AxisAzimuth"];
  azimuth = HalfTurn(azimuth);
}

// Method 9815 has its false origin at the centre.
void PlaceCentre(const Conversion& given, Draft& draft) {
  FoldAzimuth(given, draft);
  draft.PlaceAt(given.Angle(kCentreLat), given.Longitude(kCentreLon), given.Length(kCentreEasting),
                given.Length(kCentreNorthing));
}

// The registry has the distance of the axis from the pole, the class its latitude; the class never
// adds a false origin.
void FindConeAxis(const Conversion& given, Draft& draft) {
  draft.values["Uq"] = 90 - given.Angle(kAxisColatitude);
}
bool StartsAtApex(const Conversion& given) {
  return given.Length(kFalseEasting) == 0 && given.Length(kFalseNorthing) == 0 &&
         given.Number(kPseudoScale) == 0.9999;
}

// ---- the methods ----

struct Term {
  const char* parameter;
  EpsgParameter source;
};
using Terms = std::vector<Term>;

// A method as a projection of the library. Where several rows have one method the first that
// applies is taken.
struct MethodRow {
  int method;
  const char* projection;
  const Terms& terms;
  void (*complete)(const Conversion& given, Draft& draft) = nullptr;
  bool (*applies)(const Conversion& given) = nullptr;
  const char* directions = "NE";  // in which the method's coordinates count
};

const Terms kTransverseTerms = {{"Central Meridian", kOriginLon},
                                {"Scale", kOriginScale},
                                {"Lat0", kOriginLat},
                                {"East0", kFalseEasting},
                                {"North0", kFalseNorthing}};
const Terms kOneParallelTerms = {{"SouthLat", kOriginLat}, {"NorthLat", kOriginLat},
                                 {"Lon0", kOriginLon},     {"Lat0", kOriginLat},
                                 {"East0", kFalseEasting}, {"North0", kFalseNorthing},
                                 {"Scale", kOriginScale}};
// Method 1102: the scale holds on the parallel of the natural origin, coordinates count from
// another one.
const Terms kOneParallelFalseOriginTerms = {
    {"SouthLat", kOriginLat},  {"NorthLat", kOriginLat},       {"Lon0", kFalseOriginLon},
    {"Lat0", kFalseOriginLat}, {"East0", kFalseOriginEasting}, {"North0", kFalseOriginNorthing},
    {"Scale", kOriginScale}};
const Terms kTwoParallelTerms = {{"SouthLat", kFirstParallel},
                                 {"NorthLat", kSecondParallel},
                                 {"Lon0", kFalseOriginLon},
                                 {"Lat0", kFalseOriginLat},
                                 {"East0", kFalseOriginEasting},
                                 {"North0", kFalseOriginNorthing},
                                 {"Scale", kUnity}};
// Method 1051: every length on the ellipsoid is multiplied, which is a scale of the cone.
const Terms kMichiganTerms = {{"SouthLat", kFirstParallel},   {"NorthLat", kSecondParallel},
                              {"Lon0", kFalseOriginLon},      {"Lat0", kFalseOriginLat},
                              {"East0", kFalseOriginEasting}, {"North0", kFalseOriginNorthing},
                              {"Scale", kEllipsoidScaling}};
const Terms kAlbersTerms = {{"SouthLat", kFirstParallel},   {"NorthLat", kSecondParallel},
                            {"Lon0", kFalseOriginLon},      {"Lat0", kFalseOriginLat},
                            {"East0", kFalseOriginEasting}, {"North0", kFalseOriginNorthing}};
const Terms kMercatorTerms = {{"Lon0", kOriginLon},
                              {"Lat0", kFirstParallel},
                              {"FEast", kFalseEasting},
                              {"FNorth", kFalseNorthing}};
const Terms kEquatorMercatorTerms = {
    {"Lon0", kOriginLon}, {"FEast", kFalseEasting}, {"FNorth", kFalseNorthing}};
const Terms kOriginTerms = {{"Lat0", kOriginLat},
                            {"Lon0", kOriginLon},
                            {"East0", kFalseEasting},
                            {"North0", kFalseNorthing}};
const Terms kStereographicTerms = {{"Lat0", kOriginLat},
                                   {"Lon0", kOriginLon},
                                   {"Scale", kOriginScale},
                                   {"East0", kFalseEasting},
                                   {"North0", kFalseNorthing}};
const Terms kPolarParallelTerms = {
    {"Lon0", kPolarOriginLon}, {"East0", kFalseEasting}, {"North0", kFalseNorthing}};
const Terms kPolarFalseOriginTerms = {{"Lon0", kPolarOriginLon}};
const Terms kObliqueTerms = {{"AxisAzimuth", kAzimuth}, {"Scale", kLineScale},
                             {"Lon0", kCentreLon},      {"Lat0", kCentreLat},
                             {"East0", kFalseEasting},  {"North0", kFalseNorthing}};
const Terms kObliqueCentreTerms = {
    {"AxisAzimuth", kAzimuth}, {"Scale", kLineScale}, {"Lon0", kCentreLon}, {"Lat0", kCentreLat}};
const Terms kSwissTerms = {
    {"L0", kCentreLon}, {"B0", kCentreLat}, {"East0", kCentreEasting}, {"North0", kCentreNorthing}};
const Terms kKrovakTerms = {{"Lat0", kCentreLat},
                            {"Lon0", kPolarOriginLon},
                            {"S0", kPseudoParallel},
                            {"Scale", kPseudoScale}};

// TMERCSPHER of the transverse Mercators, whose series serves the widest zones; OM83 of those that
// turn by the azimuth, since OM treats its origin meridian apart.
const MethodRow kMethods[] = {
    {9807, "TMERCSPHER", kTransverseTerms},
    {1111, "TMERCSPHER", kTransverseTerms},
    {9808, "TMERCSPHER", kTransverseTerms, nullptr, nullptr, "SW"},
    {9801, "LC", kOneParallelTerms},
    {9802, "LC", kTwoParallelTerms},
    {9803, "LC", kTwoParallelTerms, TurnBelgianCone},
    {9826, "LC", kOneParallelTerms, nullptr, nullptr, "NW"},
    {1051, "LC", kMichiganTerms},
    {1102, "LC", kOneParallelFalseOriginTerms},
    {9822, "AlbersConic", kAlbersTerms},
    {9804, "MERCATOR", kEquatorMercatorTerms, FindTrueScaleParallel, ShrinksFromEquator},
    {9805, "MERCATOR", kMercatorTerms},
    {1024, "MERCATOR", kEquatorMercatorTerms, TakeSphere, StartsAtEquator},
    {9806, "CASSINI", kOriginTerms},
    {9809, "DSTER", kStereographicTerms},
    {9810, "STER", kStereographicTerms},
    {9829, "STER", kPolarParallelTerms, FindPoleScale},
    {9830, "STER", kPolarFalseOriginTerms, FindPoleScaleAndOrigin},
    {9811, "NZMG", kOriginTerms},
    {9812, "OM83", kObliqueTerms, FoldAzimuth, TurnsByAzimuth},
    {9812, "RSO", kObliqueTerms, FoldAzimuth, TurnsByEquatorAzimuth},
    {9815, "SWISS", kSwissTerms, nullptr, IsSwissCylinder},
    {9815, "OM83", kObliqueCentreTerms, PlaceCentre, TurnsByAzimuth},
    {9815, "RSO", kObliqueCentreTerms, PlaceCentre, TurnsByEquatorAzimuth},
    {9819, "KROVAK", kKrovakTerms, FindConeAxis, StartsAtApex, "SW"},
    {1041, "KROVAK", kKrovakTerms, FindConeAxis, StartsAtApex, "SW"},
    {1052, "COLOMBIA", kOriginTerms, LiftEllipsoid},
};

const MethodRow& FindMethod(const Conversion& given) {
  bool known = false;
  for (const MethodRow& row : kMethods) {
    if (row.method != given.MethodCode()) continue;
    if (!row.applies || row.applies(given)) return row;
    known = true;
  }
  given.Refuse(known ? "the library's projection cannot take these parameters"
                     : "the library has no such projection");
}

double ValueOf(const Conversion& given, const ProjectionParameter& parameter, const Term& term,
               const char* directions) {
  switch (parameter.unit) {
    case ParameterUnit::metres: {
      const bool reversed = (parameter.quantity == "false northing" && directions[0] == 'S') ||
                            (parameter.quantity == "false easting" && directions[1] == 'W');
      return reversed ? -given.Length(term.source) : given.Length(term.source);
    }
    case ParameterUnit::latitude:
      return given.Angle(term.source);
    case ParameterUnit::degrees:
      return parameter.quantity == "longitude" ? given.Longitude(term.source)
                                               : given.Angle(term.source);
    case ParameterUnit::factor:
    case ParameterUnit::number:
      break;
  }
  return given.Number(term.source);
}

Draft Compose(const Conversion& given, const MethodRow& row) {
  Draft draft{row.projection, given.ellipsoid, {}};
  for (const ProjectionParameter& parameter : FindProjection(row.projection)->parameters) {
    draft.values[parameter.name] = 0;
    for (const Term& term : row.terms) {
      if (term.parameter == parameter.name)
        draft.values[parameter.name] = ValueOf(given, parameter, term, row.directions);
    }
  }
  if (row.complete) row.complete(given, draft);
  return draft;
}

// ---- axes ----

// Where an axis at a pole points on the plane of the polar stereographic projection: its N axis
// leaves the south pole along the meridian of origin, the north pole along the opposite one.
char PolarDirection(const Conversion& given, const Draft& draft, const json& axis) {
  const bool north = draft.values.at("Lat0") > 0;
  const double meridian = Degrees(axis.at("meridian").at("longitude"));
  const double bearing = std::remainder(meridian - draft.values.at("Lon0"), 360);
  constexpr double kSlack = 1e-6;  // degrees
  const auto is = [&](double wanted) {
    return std::abs(std::remainder(bearing - wanted, 360)) < kSlack;
  };
  if (axis.value("direction", "") == (north ? "south" : "north")) {
    if (is(90)) return 'E';
    if (is(north ? 180 : 0)) return 'N';
  }
  given.Refuse("its axes point along other meridians than those of the projection");
}

char DirectionOf(const Conversion& given, const Draft& draft, const json& axis) {
  if (axis.contains("meridian") && draft.name == "STER") return PolarDirection(given, draft, axis);
  const std::string direction = axis.value("direction", "");
  for (const char* known : {"north", "south", "east", "west"}) {
    if (direction == known) return static_cast<char>(known[0] - 'a' + 'A');
  }
  given.Refuse("an axis points to the " + direction);
}

// The axes text that turns what the class counts into the directions of the registry. The order of
// the two is left at north first: columns have names.
std::string AxesText(const Conversion& given, const Draft& draft, const json& axes) {
  std::string directions = "??";
  for (std::size_t i = 0; i < 2; ++i) {
    const char direction = DirectionOf(given, draft, axes.at(i));
    directions[direction == 'N' || direction == 'S' ? 0 : 1] = direction;
  }
  if (directions.find('?') != std::string::npos) given.Refuse("its axes are no pair");
  const bool countsSouthWest = draft.name == "KROVAK";
  std::string text = "NE";
  if ((directions[0] == 'S') != countsSouthWest) text[0] = 'S';
  if ((directions[1] == 'W') != countsSouthWest) text[1] = 'W';
  return text == "NE" ? "" : text;
}

}  // namespace

EpsgProjection ProjectionOf(const json& projected, const std::string& title) {
  const Conversion given(projected, title);
  const MethodRow& row = FindMethod(given);
  const Draft draft = Compose(given, row);
  const json& axes = projected.at("coordinate_system").at("axis");

  EpsgProjection projection;
  projection.section["name"] = draft.name;
  for (const ProjectionParameter& parameter : FindProjection(draft.name)->parameters)
    projection.section[parameter.name] = draft.values.at(parameter.name) + 0.0;  // of −0, 0
  projection.axes = AxesText(given, draft, axes);
  projection.method = given.MethodName();
  projection.unit = LengthUnitOf(MemberOf(axes.at(0), "unit"));
  projection.ellipsoid = draft.ellipsoid;
  projection.ownEllipsoid =
      draft.ellipsoid.a != given.ellipsoid.a || draft.ellipsoid.b != given.ellipsoid.b;
  return projection;
}

}  // namespace geomath_files
