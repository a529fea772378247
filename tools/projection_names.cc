#include "tools/projection_names.h"

#include "geomath/base/ellipsoid.h"
#include "geomath/proj/factory.h"
#include "geomath/proj/methods/tm_proj.h"
#include "geomath/proj/param_table.h"
#include "geomath/proj/projection_type.h"
#include "tools/name_match.h"

using namespace zel_cs::geomath;

namespace geomath_tools {
namespace {

// The names of the factory. It cannot list them, and answers an unknown one with kind 40.
constexpr const char* kFactoryNames[] = {
    "AK01",   "AK29",       "AlbersConic", "CASSINI",  "COLOMBIA", "C_S2000",  "DSTER", "KMSTRANS",
    "KROVAK", "LA_MW",      "LC",          "LC27",     "LC83",     "MERCATOR", "NZMG",  "OM",
    "OM83",   "OM_MW",      "RDPROJ",      "RSO",      "STER",     "SWISS",    "TM27",  "TM83",
    "TMERC",  "TMERCSPHER", "TMERC_KMS",   "TMERC_NZ", "TMSPHER",  "TM_MW",
};

// The Roman-numeral series of national grids (TTMProj), which the factory has no name for. Its
// parameters are those of "TMERC".
constexpr const char* kRomanNumeralTm = "TM";

std::wstring Widen(const std::string& text) { return {text.begin(), text.end()}; }

std::unique_ptr<TGeoProj> MakeDefault(const std::string& name, double a, double invF) {
  if (name == kRomanNumeralTm) return std::make_unique<TTMProj>(a, invF, 0, 1, 0, 0, 0);
  return std::unique_ptr<TGeoProj>(_GetProjByName(Widen(name).c_str(), a, invF));
}

ParameterUnit UnitOf(const TProjectionType& description, int index) {
  switch (description.GetParamType(index)) {
    case kParamTypeAngle:
      return description.SpecifyParam(index) == kParamSpecLatitude ? ParameterUnit::latitude
                                                                   : ParameterUnit::degrees;
    case kParamTypeLinear:
      return ParameterUnit::metres;
    case kParamTypeScale:
      return ParameterUnit::factor;
    default:
      return ParameterUnit::number;
  }
}

// The parameters that the library's metadata describe under a key.
std::vector<ProjectionParameter> Describe(const char* key) {
  std::vector<ProjectionParameter> parameters;
  TProjectionType description;
  if (description.Load(Widen(key).c_str()) != 0) return parameters;
  for (int i = 0; i < description.GetQParam(); ++i) {
    if (const char* name = description.GetParamName(i))
      parameters.push_back({name, UnitOf(description, i)});
  }
  return parameters;
}

std::vector<ProjectionKind> CollectKinds() {
  std::vector<ProjectionKind> kinds;
  for (const char* name : kFactoryNames) {
    const auto projection = MakeDefault(name, kWgs84A, kWgs84InvF);
    if (projection && projection->GetType() != ProjTypeNone)
      kinds.push_back({name, Describe(name)});
  }
  kinds.push_back({kRomanNumeralTm, Describe("TMERC")});
  return kinds;
}

}  // namespace

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
    if (FoldName(kind.name) == FoldName(name)) return &kind;
  }
  return nullptr;
}

std::unique_ptr<TGeoProj> MakeProjection(const ProjectionKind& kind, double a, double invF,
                                         const std::vector<double>& values) {
  std::unique_ptr<TGeoProj> projection = MakeDefault(kind.name, a, invF);
  for (std::size_t i = 0; i < values.size(); ++i)
    projection->SetParam(values[i], static_cast<int>(i), kUnitDegrees);
  return projection;
}

}  // namespace geomath_tools
