#include "geomath/proj/factory.h"

#include <algorithm>
#include <iterator>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/o_mercator_proj.h"
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
    // Kept: the placeholder of the northern parallel is 1 radian.
    {L"OM", ProjTypeOMercator, [](double a, double f) { return Make<TOMercatorProj>(a, f, 0, 1.0, 0, 0, 0, 0); }},
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
