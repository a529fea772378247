#include "files/system/projection_names.h"

#include <algorithm>
#include <map>

#include "files/words/name_match.h"
#include "geomath/base/angle.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/proj/factory.h"
#include "geomath/proj/methods/tm_proj.h"
#include "geomath/proj/param_table.h"
#include "geomath/proj/projection_type.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

// The Roman-numeral series of national grids (TTMProj), which the factory has no name for. Its
// parameters are those of "TMERC".
constexpr const char* kRomanNumeralTm = "TM";

std::wstring Widen(const std::string& text) { return {text.begin(), text.end()}; }

std::unique_ptr<TGeoProj> MakeDefault(const std::string& name, double a, double invF) {
  if (name == kRomanNumeralTm) return std::make_unique<TTMProj>(a, invF, 0, 1, 0, 0, 0);
  return std::unique_ptr<TGeoProj>(_GetProjByName(Widen(name).c_str(), a, invF));
}

ParameterUnit UnitOf(const TProjectionType& description, int index) {
  const bool latitude = description.SpecifyParam(index) == kParamSpecLatitude;
  switch (description.GetParamType(index)) {
    case kParamTypeAngle:
      // The grids of 1927 keep the arc-seconds of their table.
      if (!description.DoConvertToUnit(index)) return ParameterUnit::number;
      return latitude ? ParameterUnit::latitude : ParameterUnit::degrees;
    case kParamTypeLinear:
      return ParameterUnit::metres;
    case kParamTypeScale:
      return ParameterUnit::factor;
    default:
      return ParameterUnit::number;
  }
}

std::string QuantityOf(const TProjectionType& description, int index) {
  static const std::map<int, std::string> types = {
      {kParamTypeAngle, "angle"},        {kParamTypeLinear, "length"},
      {kParamTypeScale, "scale factor"}, {kParamTypeZone, "zone number"},
      {kParamTypeCount, "count"},        {kParamTypeCoefficient, "coefficient"}};
  static const std::map<int, std::string> specifications = {{kParamSpecLatitude, "latitude"},
                                                            {kParamSpecLongitude, "longitude"},
                                                            {kParamSpecAzimuth, "azimuth"},
                                                            {kParamSpecEasting, "false easting"},
                                                            {kParamSpecNorthing, "false northing"}};
  const auto specification = specifications.find(description.SpecifyParam(index));
  if (specification != specifications.end()) return specification->second;
  return types.at(description.GetParamType(index));
}

// The parameters that the library's metadata describe under a key.
std::vector<ProjectionParameter> Describe(const std::string& key) {
  std::vector<ProjectionParameter> parameters;
  TProjectionType description;
  if (description.Load(Widen(key).c_str()) != 0) return parameters;
  for (int i = 0; i < description.GetQParam(); ++i) {
    if (const char* name = description.GetParamName(i))
      parameters.push_back({name, QuantityOf(description, i), UnitOf(description, i)});
  }
  return parameters;
}

std::vector<ProjectionKind> CollectKinds() {
  std::vector<ProjectionKind> kinds;
  const auto add = [&kinds](const std::string& name, const std::string& key) {
    const auto projection = MakeDefault(name, kWgs84A, kWgs84InvF);
    if (projection) kinds.push_back({name, projection->GetType(), Describe(key)});
  };
  for (const ProjFactoryRow& row : ProjFactoryRows()) {
    const std::wstring name = row.name;  // ASCII
    add({name.begin(), name.end()}, {name.begin(), name.end()});
  }
  add(kRomanNumeralTm, "TMERC");
  std::sort(kinds.begin(), kinds.end(),
            [](const ProjectionKind& a, const ProjectionKind& b) { return a.name < b.name; });
  return kinds;
}

}  // namespace

const char* UnitName(ParameterUnit unit) {
  switch (unit) {
    case ParameterUnit::latitude:
    case ParameterUnit::degrees:
      return "degrees";
    case ParameterUnit::metres:
      return "metres";
    case ParameterUnit::factor:
    case ParameterUnit::number:
      break;
  }
  return "";
}

const std::vector<ProjectionKind>& ProjectionKinds() {
  static const std::vector<ProjectionKind> kinds = CollectKinds();
  return kinds;
}

std::vector<std::string> ProjectionNames() {
  std::vector<std::string> names;
  for (const ProjectionKind& kind : ProjectionKinds()) names.push_back(kind.name);
  return names;
}

const ProjectionKind* FindProjection(const std::string& name) {
  for (const ProjectionKind& kind : ProjectionKinds()) {
    if (SameName(kind.name, name)) return &kind;
  }
  return nullptr;
}

std::unique_ptr<TGeoProj> MakeProjection(const ProjectionKind& kind, double a, double invF,
                                         const std::vector<double>& values) {
  std::unique_ptr<TGeoProj> projection = MakeDefault(kind.name, a, invF);
  // In radians: the oblique Mercator takes its azimuth so under every unit code.
  std::vector<double> internal = values;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const ParameterUnit unit = kind.parameters.at(i).unit;
    if (unit == ParameterUnit::latitude || unit == ParameterUnit::degrees)
      internal[i] *= kRadPerDeg;
  }
  projection->SetParams(internal, kUnitInternal);
  return projection;
}

}  // namespace geomath_files
