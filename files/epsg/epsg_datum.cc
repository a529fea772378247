#include "files/epsg/epsg_datum.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "files/epsg/projjson.h"
#include "geomath/base/angle.h"
#include "geomath/datum/datum.h"

using namespace zel_cs::geomath;
using nlohmann::json;
using nlohmann::ordered_json;

namespace geomath_files {
namespace {

using Vector = TAbstractPoint3<double>;

// Parameters of transformations by the codes of the registry; those of X, Y and Z.
constexpr int kTranslations[] = {8605, 8606, 8607}, kRotations[] = {8608, 8609, 8610};
constexpr int kScaleDifference = 8611, kPivots[] = {8617, 8618, 8667}, kLongitudeOffset = 8602;
// What they grow by in a year, the date at which they begin, and the only one at which others hold.
constexpr int kTranslationRates[] = {1040, 1041, 1042}, kRotationRates[] = {1043, 1044, 1045};
constexpr int kScaleRate = 1046, kReferenceEpoch = 1047, kOnlyEpoch = 1049;

// Methods that are similarities, by their sense: for geocentric coordinates, for geographic ones
// with height, and without.
struct MethodRow {
  int codes[3];
  bool positionVector;
};
constexpr MethodRow kMethods[] = {
    {{1031, 1035, 9603}, false},  // translations
    {{1033, 1037, 9606}, true},   // position vector
    {{1032, 1038, 9607}, false},  // coordinate frame
    {{1061, 1062, 1063}, true},   // about a pivot (Molodensky-Badekas): position vector
    {{1034, 1039, 9636}, false},  // and coordinate frame
};
constexpr MethodRow kDatedMethods[] = {
    {{1053, 1055, 1054}, true},   // position vector
    {{1056, 1058, 1057}, false},  // coordinate frame
    {{1065}, true},               // position vector at one date
    {{1066}, false},              // coordinate frame at one date
};

// Longitudes that count from another meridian.
constexpr int kLongitudeRotation = 9601;

template <class Codes>
bool Contains(const Codes& codes, int code) {
  return std::find(std::begin(codes), std::end(codes), code) != std::end(codes);
}

int MethodOf(const json& part) {
  const json& method = MemberOf(part, "method");
  const int inverse = CodeIn(method, "INVERSE(EPSG)");
  return inverse ? inverse : CodeIn(method);
}

template <class Rows>
const MethodRow* FindMethod(const Rows& rows, const json& part) {
  const int code = MethodOf(part);
  if (code == 0) return nullptr;
  for (const MethodRow& row : rows) {
    if (Contains(row.codes, code)) return &row;
  }
  return nullptr;
}

SevenParameters ReadSeven(const ParameterList& given, bool positionVector) {
  SevenParameters seven;
  for (int i = 0; i < 3; ++i) {
    seven.shift[i] = given.In(kTranslations[i], Metres);
    seven.rotation[i] = given.In(kRotations[i], ArcSeconds);
  }
  seven.ppm = given.In(kScaleDifference, Factor) * 1e6;
  seven.positionVector = positionVector;
  return seven;
}

// What a parameter grows by in a year, in metres, arc-seconds or parts per million, from a unit that
// the registry has by the second: its figures, without the rounding of that.
double ReadRate(const ParameterList& given, int code, double (*unit)(const json&),
                double scale = 1) {
  constexpr double kSecondsInYear = 31556925.445, kFigures = 1e12;
  return std::round(given.In(code, unit) * kSecondsInYear * scale * kFigures) / kFigures + 0.0;
}

ordered_json ReadRates(const ParameterList& given) {
  constexpr const char* kAxes[] = {"X", "Y", "Z"};
  ordered_json rates = ordered_json::object();
  for (std::size_t i = 0; i < 3; ++i)
    rates[std::string("d") + kAxes[i]] = ReadRate(given, kTranslationRates[i], Metres);
  for (std::size_t i = 0; i < 3; ++i)
    rates[std::string("r") + kAxes[i]] = ReadRate(given, kRotationRates[i], ArcSeconds);
  rates["ppm"] = ReadRate(given, kScaleRate, Factor, 1e6);
  return rates;
}

// X ↦ T + P + (1 + s)·R·(X − P), R being the exact rotation of Datum.
Vector Apply(const RegisteredSimilarity& step, const Vector& x) {
  const SevenParameters& seven = step.seven;
  const double sense = seven.positionVector ? -1 : 1;
  const double *t = seven.shift, *r = seven.rotation;
  const Datum datum(nullptr, t[0], t[1], t[2], sense * r[0], sense * r[1], sense * r[2],
                    seven.ppm * 1e-6, userTypeUser, nullptr);
  const Vector pivot(step.pivot[0], step.pivot[1], step.pivot[2]);
  Vector p = x - pivot;
  if (step.inverse)
    datum.ToLocalDatum(p);
  else
    datum.ToWGS84Datum(p);
  return p + pivot;
}

// A rotation of longitude takes one prime meridian to another, which is nothing since the
// projection's longitudes count from Greenwich. What goes beyond that turns the system about its
// axis.
RegisteredSimilarity ReadLongitudeRotation(const json& part) {
  const double turn = ParameterList(part.at("parameters")).In(kLongitudeOffset, Degrees) +
                      PrimeMeridianOf(part.at("target_crs")) -
                      PrimeMeridianOf(part.at("source_crs"));
  constexpr double kRounding = 1e-12;  // degrees
  RegisteredSimilarity step;
  step.seven.positionVector = true;
  if (std::abs(turn) > kRounding) step.seven.rotation[2] = turn * 3600;
  return step;
}

// Similarities one after the other are one similarity. Its parameters, in the coordinate-frame
// sense, follow from where the origin and a point on each axis go: T + (1 + s)·Rᵀ·X with
// R = Rx·Ry·Rz, as in Similarity.
SevenParameters Join(const std::vector<RegisteredSimilarity>& steps) {
  const auto map = [&](Vector p) {
    for (const RegisteredSimilarity& step : steps) p = Apply(step, p);
    return p;
  };
  constexpr double kFar = 1e7;  // metres: beyond it no digit is gained
  const Vector origin = map({0, 0, 0});
  Vector rows[3];  // of (1 + s)·R
  double factor = 0;
  for (int i = 0; i < 3; ++i) {
    Vector far{0, 0, 0};
    far[i] = kFar;
    rows[i] = (map(far) - origin) / kFar;
    factor += std::hypot(rows[i][0], rows[i][1], rows[i][2]) / 3;
  }
  const double cosY = std::hypot(rows[0][0], rows[0][1]);
  const double angles[] = {std::atan2(-rows[1][2], rows[2][2]), std::atan2(rows[0][2], cosY),
                           std::atan2(-rows[0][1], rows[0][0])};
  // Figures worth a micrometre on the ground, so that what cancels is 0.
  const auto round = [](double value, double digits) {
    return std::round(value * digits) / digits + 0.0;
  };
  SevenParameters joined;
  for (int i = 0; i < 3; ++i) {
    joined.shift[i] = round(origin[i], 1e6);
    joined.rotation[i] = round(angles[i] / kRadPerArcSecond, 1e8);
  }
  joined.ppm = round((factor - 1) * 1e6, 1e7);
  return joined;
}

}  // namespace

bool SevenParameters::IsNull() const {
  const auto zero = [](double value) { return value == 0; };
  return ppm == 0 && std::all_of(std::begin(shift), std::end(shift), zero) &&
         std::all_of(std::begin(rotation), std::end(rotation), zero);
}

double SevenParameters::SmallAngleError() const {
  constexpr double kRadius = 6.4e6;  // metres
  const double r = std::hypot(rotation[0], rotation[1], rotation[2]) * kRadPerArcSecond;
  return kRadius * r * r / 2;
}

ordered_json SevenParameters::Section() const {
  ordered_json section = {{"dX", shift[0]},    {"dY", shift[1]},    {"dZ", shift[2]},
                          {"rX", rotation[0]}, {"rY", rotation[1]}, {"rZ", rotation[2]},
                          {"ppm", ppm}};
  if (positionVector) section["rotation"] = "position-vector";
  return section;
}

bool RegisteredSimilarity::IsPlain() const {
  return !inverse &&
         std::all_of(std::begin(pivot), std::end(pivot), [](double x) { return x == 0; });
}

ordered_json RegisteredSimilarity::Section() const {
  ordered_json section = seven.Section();
  if (pivot[0] != 0 || pivot[1] != 0 || pivot[2] != 0)
    section.update({{"pivotX", pivot[0]}, {"pivotY", pivot[1]}, {"pivotZ", pivot[2]}});
  return section;
}

std::optional<RegisteredSimilarity> ReadSimilarity(const json& part) {
  const json& method = MemberOf(part, "method");
  if (CodeIn(method) == kLongitudeRotation) return ReadLongitudeRotation(part);
  const MethodRow* row = FindMethod(kMethods, part);
  if (!row) return std::nullopt;
  const ParameterList given(part.at("parameters"));
  RegisteredSimilarity step;
  step.seven = ReadSeven(given, row->positionVector);
  for (int i = 0; i < 3; ++i) step.pivot[i] = given.In(kPivots[i], Metres);
  step.inverse = CodeIn(method, "INVERSE(EPSG)") != 0;
  return step;
}

std::optional<ordered_json> ReadDatedSimilarity(const json& part) {
  const MethodRow* row = FindMethod(kDatedMethods, part);
  if (!row) return std::nullopt;
  const ParameterList given(part.at("parameters"));
  ordered_json section = ReadSeven(given, row->positionVector).Section();
  const auto years = [](const json& quantity) { return quantity.at("value").get<double>(); };
  if (given.Find(kOnlyEpoch)) {
    section["validAt"] = given.In(kOnlyEpoch, years);
  } else {
    section["rates"] = ReadRates(given);
    section["epoch"] = given.In(kReferenceEpoch, years);
  }
  return section;
}

SevenParameters JoinSimilarities(const std::vector<RegisteredSimilarity>& steps) {
  if (steps.empty()) return {};
  return steps.size() == 1 && steps[0].IsPlain() ? steps[0].seven : Join(steps);
}

}  // namespace geomath_files
