#include "geomath/proj/factory.h"

#include <algorithm>
#include <iterator>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/ak01_proj.h"
#include "geomath/proj/methods/ak29_proj.h"
#include "geomath/proj/methods/double_ster_proj.h"
#include "geomath/proj/methods/lc_proj.h"
#include "geomath/proj/methods/malaysia_cs2000_proj.h"
#include "geomath/proj/methods/malaysia_cs_proj.h"
#include "geomath/proj/methods/minnesota_om_proj.h"
#include "geomath/proj/methods/nzmg_proj.h"
#include "geomath/proj/methods/o_mercator_proj.h"
#include "geomath/proj/methods/rso_proj.h"
#include "geomath/proj/methods/spc_om83_proj.h"
#include "geomath/proj/methods/ster_proj.h"
#include "geomath/proj/methods/swiss_proj.h"
#include "geomath/proj/methods/utm_proj.h"

namespace zel_cs::geomath {
namespace {

constexpr double kDeg = kRadPerDeg;
constexpr double kWgs84Axis = 6378137.0;  // metres; both design axes of the county rows
constexpr int kByNameOnly = -1;

struct Row {
  const wchar_t* name;
  int code;
  TGeoProj* (*make)(double a, double invF);
};

template <class Proj, class... Args>
TGeoProj* Make(Args... args) {
  return new Proj(args...);
}

/// A class with its tabulated constants and ellipsoid built in.
template <class Proj>
TGeoProj* MakeDefault(double, double) {
  return new Proj;
}

/// Kept: the placeholders put 1 into the slot of the southern parallel and 0 into the scale.
template <class Proj>
TGeoProj* MakeCounty(double a, double f) {
  return new Proj(a, f, 0, 0, 0, 1.0, 0, 0, 0, kWgs84Axis, kWgs84Axis, 0, 0, 0);
}

// clang-format off
constexpr Row kRows[] = {
    {L"TMERC", ProjTypeTM, [](double a, double f) { return Make<TUTMProj>(a, f, 0, 1.0, 0, 0, 0); }},
    {L"STER", ProjTypeSter, [](double a, double f) { return Make<TSterProj>(a, f, 0, 0, 1.0, 0, 0); }},
    {L"LC", ProjTypeLC, [](double a, double f) { return Make<TLCProj>(a, f, 0, 30 * kDeg, 0, 0, 0, 0, 1.0); }},
    {L"AK01", ProjTypeAK01, MakeDefault<TAK01Proj>},
    {L"AK29", ProjTypeAK29, MakeDefault<TAK29Proj>},
    {L"OM83", ProjTypeSPC_OM83, [](double a, double f) { return Make<TSPC_OM83Proj>(a, f, 0, 1.0, 0, 0, 0, 0, 0); }},
    // Kept: the placeholder of the northern parallel is 1 radian.
    {L"OM_MW", ProjTypeMinnesota_OM, MakeCounty<TMinnesota_OMProj>},
    {L"RSO", ProjTypeRSO, [](double a, double f) { return Make<TRSOProj>(a, f, -36.9742095 * kDeg, 0.99984, 102.25 * kDeg, 4 * kDeg, 804671.2996, 0); }},
    {L"SWISS", ProjTypeSwiss, [](double a, double f) { return Make<TSwissProj>(a, f, 0, 0, 0, 0); }},
    {L"DSTER", ProjTypeDoubleSter, [](double a, double f) { return Make<TDoubleSter>(a, f, 0, 0, 1.0, 0, 0); }},
    {L"NZMG", ProjTypeNZMG, [](double a, double f) { return Make<TNZMGProj>(a, f, 0, 0, 0, 0); }},
    {L"C_S", ProjTypeMalaysia_CS, [](double a, double f) { return Make<TMalaysia_CSProj>(a, f, 0, 0, 30745.124, 11227.927, -0.0098, 0.021, -2.0871, 5.29886, -5.27113, -1.83579, -0.47547, -0.74017, -0.64384, 0.17978, 0.58805, -0.66614); }},
    {L"OM", ProjTypeOMercator, [](double a, double f) { return Make<TOMercatorProj>(a, f, 0, 1.0, 0, 0, 0, 0); }},
    {L"C_S2000", kByNameOnly, [](double a, double f) { return Make<TMalaysia_CS2000Proj>(a, f, 0, 0, 0, 0); }},
};
// clang-format on

template <class Matches>
TGeoProj* MakeFirst(Matches matches, double a, double invF) {
  const Row* row = std::find_if(std::begin(kRows), std::end(kRows), matches);
  return row != std::end(kRows) ? row->make(a, invF) : new TGeoProj;
}

}  // namespace

TGeoProj* _GetProjByName(const CZelStringT<wchar_t>& name, double a, double invF) {
  return MakeFirst([&name](const Row& row) { return name.Compare(row.name) == 0; }, a, invF);
}

TGeoProj* _GetProjByType(int type, double a, double invF) {
  const auto ofType = [type](const Row& row) {
    return row.code == type && row.code != kByNameOnly;
  };
  return MakeFirst(ofType, a, invF);
}

}  // namespace zel_cs::geomath
