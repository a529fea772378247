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

// Longitudes that count from another meridian.
constexpr int kLongitudeRotation = 9601;

template <class Codes>
bool Contains(const Codes& codes, int code) {
  return std::find(std::begin(codes), std::end(codes), code) != std::end(codes);
}

const MethodRow* FindMethod(int code) {
  for (const MethodRow& row : kMethods) {
    if (Contains(row.codes, code)) return &row;
  }
  return nullptr;
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
  const json* offset = FindParameter(part.at("parameters"), kLongitudeOffset);
  const double turn = (offset ? Degrees(*offset) : 0) + PrimeMeridianOf(part.at("target_crs")) -
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
  const json method = part.value("method", json::object());
  if (CodeIn(method) == kLongitudeRotation) return ReadLongitudeRotation(part);
  const int inverse = CodeIn(method, "INVERSE(EPSG)");
  const MethodRow* row = FindMethod(inverse ? inverse : CodeIn(method));
  if (!row) return std::nullopt;
  const auto read = [&](int code, double (*unit)(const json&)) {
    const json* parameter = FindParameter(part.at("parameters"), code);
    return parameter ? unit(*parameter) : 0;
  };
  RegisteredSimilarity step;
  for (int i = 0; i < 3; ++i) {
    step.seven.shift[i] = read(kTranslations[i], Metres);
    step.seven.rotation[i] = read(kRotations[i], ArcSeconds);
    step.pivot[i] = read(kPivots[i], Metres);
  }
  step.seven.ppm = read(kScaleDifference, Factor) * 1e6;
  step.seven.positionVector = row->positionVector;
  step.inverse = inverse != 0;
  return step;
}

SevenParameters JoinSimilarities(const std::vector<RegisteredSimilarity>& steps) {
  if (steps.empty()) return {};
  return steps.size() == 1 && steps[0].IsPlain() ? steps[0].seven : Join(steps);
}

}  // namespace geomath_files
