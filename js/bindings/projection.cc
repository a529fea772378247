#include <cmath>
#include <limits>

#include "files/system/system_sections.h"
#include "files/words/name_match.h"
#include "geomath/base/angle.h"
#include "geomath/geodesic/distortion.h"
#include "js/bindings/objects.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_js {
namespace {

enum ProjectionOperation { kForward, kInverse, kFactors, kDistortion };

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr unsigned int kToInternal = 1;
constexpr const char* kNorthEast = "NE";  // axes that need no text

std::wstring Widen(const std::string& text) { return {text.begin(), text.end()}; }

std::string AxesAt(const json& given, const char* key) {
  json axes = json::object();
  if (given.contains(key)) axes[key] = given.at(key);
  const AxisText* found = ReadAxisPair(
      JsonSection("Projection", "", axes, {"gridAxes", "geographicAxes"}, KeySpelling::camel), key);
  return found ? found->text : kNorthEast;
}

void GiveFactors(const TGeoProj& projection, const Block& block) {
  auto& [first, second, c, d, e, f, g, h] = block.columns;
  for (std::size_t i = 0; i < block.count; ++i) {
    const PointFactors factors = FactorsAt(projection, first[i], second[i]);
    first[i] = factors.scale;
    second[i] = factors.convergence;
  }
  GiveAngles(block, 1);
}

// In the order of the properties of JavaScript's object.
constexpr double Distortion::*kDistortions[] = {
    &Distortion::meridianScale, &Distortion::parallelScale,     &Distortion::arealScale,
    &Distortion::convergence,   &Distortion::angularDistortion, &Distortion::semiMajor,
    &Distortion::semiMinor};
constexpr std::size_t kConvergence = 3, kAngular = 4;

void GiveDistortion(const TGeoProj& projection, const Block& block) {
  constexpr std::size_t kPart = 64;  // points whose results stay in the cache
  Distortion found[kPart];
  for (std::size_t first = 0; first < block.count; first += kPart) {
    const std::size_t n = std::min(kPart, block.count - first);
    DistortionAt(projection, block.columns[0] + first, block.columns[1] + first, found, n);
    for (std::size_t k = 0; k < std::size(kDistortions); ++k)
      for (std::size_t i = 0; i < n; ++i) block.columns[k][first + i] = found[i].*kDistortions[k];
  }
  GiveAngles(block, kConvergence);
  GiveAngles(block, kAngular);
}

}  // namespace

void TakePosition(const Block& block, const ProjectionObject* projection) {
  constexpr AngleKind kKinds[] = {AngleKind::latitude, AngleKind::longitude};
  const bool northFirst = !projection || projection->latitudeFirst;
  TakeAngles(block, 0, kKinds[!northFirst]);
  TakeAngles(block, 1, kKinds[northFirst]);
}

ProjectionObject::ProjectionObject(const ProjectionKind& its, std::vector<double> parameters,
                                   double axis, double inverseFlattening, std::string grid,
                                   std::string geographic)
    : kind(its),
      values(std::move(parameters)),
      a(axis),
      invF(inverseFlattening),
      gridAxes(std::move(grid)),
      geographicAxes(std::move(geographic)),
      latitudeFirst(AxisPairOf(geographicAxes).northFirst),
      plainAxes(gridAxes == kNorthEast && geographicAxes == kNorthEast),
      projection(geomath_files::MakeProjection(kind, a, invF, values)) {
  // Axes that are set cost time, even if they turn nothing.
  if (gridAxes != kNorthEast) projection->SetNEAxes(Widen(gridAxes).c_str());
  if (geographicAxes != kNorthEast) projection->SetBLAxes(Widen(geographicAxes).c_str());
}

// One point takes the shorter way where its axes need no turning.
void ProjectionObject::ForwardColumns(double* first, double* second, std::size_t count) const {
  if (count > 1 || !plainAxes)
    projection->ForwardBatch(first, second, count);
  else if (!projection->ForwardPoint(*first, *second))
    *first = *second = kNaN;
}

void ProjectionObject::InverseColumns(double* first, double* second, std::size_t count) const {
  if (count > 1 || !plainAxes)
    projection->InverseBatch(first, second, count);
  else if (!projection->InversePoint(*first, *second))
    *first = *second = kNaN;
}

void ProjectionObject::Convert(int operation, const Block& block) const {
  auto& [first, second, c, d, e, f, g, h] = block.columns;
  if (operation == kInverse) {
    InverseColumns(first, second, block.count);
    DropBeyondTheMap(block, 2);
    GiveAngles(block, 0);
    GiveAngles(block, 1);
    return;
  }
  TakePosition(block, this);
  if (operation == kForward) {
    ForwardColumns(first, second, block.count);
    return;
  }
  projection->RotateBLBatch(kToInternal, first, second, block.count);
  if (operation == kFactors)
    GiveFactors(*projection, block);
  else
    GiveDistortion(*projection, block);
}

json ProjectionObject::Describe() const {
  json parameters = json::object();
  for (std::size_t i = 0; i < values.size(); ++i)
    parameters[CamelName(kind.parameters[i].name)] = values[i];
  return {{"name", kind.name},
          {"parameters", parameters},
          {"gridAxes", gridAxes},
          {"geographicAxes", geographicAxes}};
}

std::shared_ptr<Object> MakeProjection(const json& given) {
  const auto on = EllipsoidAt(given);
  const json section = Without(given, {"ellipsoid", "gridAxes", "geographicAxes"});
  NamedProjection read = ReadProjection({"Projection", "", section, KeySpelling::camel},
                                        on->ellipsoid.a, on->ellipsoid.invF);
  return std::make_shared<ProjectionObject>(*read.kind, std::move(read.values), on->ellipsoid.a,
                                            on->ellipsoid.invF, AxesAt(given, "gridAxes"),
                                            AxesAt(given, "geographicAxes"));
}

}  // namespace geomath_js
