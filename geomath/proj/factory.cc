#include "geomath/proj/factory.h"

#include <algorithm>
#include <iterator>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/ak01_proj.h"
#include "geomath/proj/methods/ak29_proj.h"
#include "geomath/proj/methods/albers_ea_conic_proj.h"
#include "geomath/proj/methods/cassini_proj.h"
#include "geomath/proj/methods/colombia_proj.h"
#include "geomath/proj/methods/denmark_tm_proj.h"
#include "geomath/proj/methods/double_ster_proj.h"
#include "geomath/proj/methods/kms_proj_tm.h"
#include "geomath/proj/methods/kms_trans_proj.h"
#include "geomath/proj/methods/krovak_proj.h"
#include "geomath/proj/methods/lc27_proj.h"
#include "geomath/proj/methods/lc_proj.h"
#include "geomath/proj/methods/malaysia_cs2000_proj.h"
#include "geomath/proj/methods/malaysia_cs_proj.h"
#include "geomath/proj/methods/mercator_proj.h"
#include "geomath/proj/methods/minnesota_la_proj.h"
#include "geomath/proj/methods/minnesota_om_proj.h"
#include "geomath/proj/methods/minnesota_tm_proj.h"
#include "geomath/proj/methods/mon_spher.h"
#include "geomath/proj/methods/nzmg_proj.h"
#include "geomath/proj/methods/o_mercator_proj.h"
#include "geomath/proj/methods/rd_proj.h"
#include "geomath/proj/methods/rso_proj.h"
#include "geomath/proj/methods/spc_lc83_proj.h"
#include "geomath/proj/methods/spc_om83_proj.h"
#include "geomath/proj/methods/spc_tm83_proj.h"
#include "geomath/proj/methods/ster_proj.h"
#include "geomath/proj/methods/swiss_proj.h"
#include "geomath/proj/methods/tm27_proj.h"
#include "geomath/proj/methods/tm_nz.h"
#include "geomath/proj/methods/utm_proj.h"

namespace zel_cs::geomath {
namespace {

constexpr double kDeg = kRadPerDeg;
constexpr double kWgs84Axis = 6378137.0;  // metres; both design axes of the county rows

template <class Proj, class... Args>
TGeoProj* Make(Args... args) {
  return new Proj(args...);
}

/// A class with its tabulated constants and ellipsoid built in.
template <class Proj>
TGeoProj* MakeDefault(double, double) {
  return new Proj;
}

/// Kept: the default values put 1 into the slot of the southern parallel and 0 into the scale.
template <class Proj>
TGeoProj* MakeCounty(double a, double f) {
  return new Proj(a, f, 0, 0, 0, 1.0, 0, 0, 0, kWgs84Axis, kWgs84Axis, 0, 0, 0);
}

constexpr ProjFactoryRow kRows[] = {
    {L"TMERC", ProjTypeTM,
     [](double a, double f) { return Make<TUTMProj>(a, f, 0, 1.0, 0, 0, 0); }},
    {L"STER", ProjTypeSter,
     [](double a, double f) { return Make<TSterProj>(a, f, 0, 0, 1.0, 0, 0); }},
    {L"LC", ProjTypeLC,
     [](double a, double f) { return Make<TLCProj>(a, f, 0, 30 * kDeg, 0, 0, 0, 0, 1.0); }},
    {L"AK01", ProjTypeAK01, MakeDefault<TAK01Proj>},
    {L"AK29", ProjTypeAK29, MakeDefault<TAK29Proj>},
    {L"TM27", ProjTypeTM27, MakeDefault<TTM27Proj>},
    {L"LC27", ProjTypeLC27, MakeDefault<TLC27Proj>},
    {L"TM83", ProjTypeSPC_TM83,
     [](double a, double f) { return Make<TSPC_TM83Proj>(a, f, 0, 1.0, 0, 0, 0, 0); }},
    {L"OM83", ProjTypeSPC_OM83,
     [](double a, double f) { return Make<TSPC_OM83Proj>(a, f, 0, 1.0, 0, 0, 0, 0, 0); }},
    // Kept: the northern parallel starts as 1 radian.
    {L"LC83", ProjTypeSPC_LC83,
     [](double a, double f) { return Make<TSPC_LC83Proj>(a, f, 0, 1.0, 0, 0, 0, 0, 0); }},
    {L"LA_MW", ProjTypeMinnesota_LA, MakeCounty<TMinnesota_LAProj>},
    {L"OM_MW", ProjTypeMinnesota_OM, MakeCounty<TMinnesota_OMProj>},
    {L"TM_MW", ProjTypeMinnesota_TM, MakeCounty<TMinnesota_TMProj>},
    {L"COLOMBIA", ProjTypeColombia,
     [](double a, double f) { return Make<TColombiaProj>(a, f, 0, 0, 0, 0); }},
    {L"RSO", ProjTypeRSO,
     [](double a, double f) {
       return Make<TRSOProj>(a, f, -36.9742095 * kDeg, 0.99984, 102.25 * kDeg, 4 * kDeg,
                             804671.2996, 0);
     }},
    {L"SWISS", ProjTypeSwiss,
     [](double a, double f) { return Make<TSwissProj>(a, f, 0, 0, 0, 0); }},
    {L"RDPROJ", ProjTypeRD, [](double a, double f) { return Make<TRDProj>(a, f, 0, 0, 0, 0); }},
    {L"DSTER", ProjTypeDoubleSter,
     [](double a, double f) { return Make<TDoubleSter>(a, f, 0, 0, 1.0, 0, 0); }},
    {L"KMSTRANS", ProjTypeKMSTrans,
     [](double a, double f) {
       return Make<TKMSTransProj>(a, f, 9 * kDeg, 0.9996, 0, 500000.0, 0, 115);
     }},
    {L"NZMG", ProjTypeNZMG, [](double a, double f) { return Make<TNZMGProj>(a, f, 0, 0, 0, 0); }},
    {L"TMERC_KMS", ProjTypeKMSTM,
     [](double a, double f) { return Make<TKMSProjTM>(a, f, 9 * kDeg, 0.9996, 0, 500000.0, 0); }},
    {L"TMERCSPHER", ProjTypeDenmarkTM,
     [](double a, double f) { return Make<TDenmarkTMProj>(a, f, 0, 1.0, 0, 0, 0); }},
    {L"C_S", ProjTypeMalaysia_CS,
     [](double a, double f) {
       return Make<TMalaysia_CSProj>(a, f, 0, 0, 30745.124, 11227.927, -0.0098, 0.021, -2.0871,
                                     5.29886, -5.27113, -1.83579, -0.47547, -0.74017, -0.64384,
                                     0.17978, 0.58805, -0.66614);
     }},
    {L"AlbersConic", ProjTypeAlbersEAConic,
     [](double a, double f) { return Make<TAlbersEAConicProj>(a, f, 0, 30 * kDeg, 0, 0, 0, 0); }},
    {L"OM", ProjTypeOMercator,
     [](double a, double f) { return Make<TOMercatorProj>(a, f, 0, 1.0, 0, 0, 0, 0); }},
    {L"CASSINI", ProjTypeCassini,
     [](double a, double f) { return Make<TCassiniProj>(a, f, 0, 0, 0, 0, 0); }},
    {L"KROVAK", ProjTypeKrovak,
     [](double a, double f) { return Make<TKrovakProj>(a, f, 0, 0, 0, 0, 0, 0.9999, 0, 0); }},
    {L"MERCATOR", ProjTypeMercator,
     [](double a, double f) { return Make<TMercatorProj>(a, f, 0, 0, 0, 0); }},
    {L"TMERC_NZ", kByNameOnly,
     [](double a, double f) { return Make<TTTMNZ>(a, f, 0, 1.0, 0, 0, 0, 0.999998261); }},
    {L"TMSPHER", ProjTypeMonSpher,
     [](double a, double f) { return Make<TMonSpher>(a, f, 0, 0, 0, 1.0, 1.0, 0, 0, 0); }},
    {L"C_S2000", kByNameOnly,
     [](double a, double f) { return Make<TMalaysia_CS2000Proj>(a, f, 0, 0, 0, 0); }},
};

template <class Matches>
TGeoProj* MakeFirst(Matches matches, double a, double invF) {
  const ProjFactoryRow* row = std::find_if(std::begin(kRows), std::end(kRows), matches);
  return row != std::end(kRows) ? row->make(a, invF) : new TGeoProj;
}

}  // namespace

std::span<const ProjFactoryRow> ProjFactoryRows() { return kRows; }

TGeoProj* _GetProjByName(const CZelStringT<wchar_t>& name, double a, double invF) {
  return MakeFirst([&name](const ProjFactoryRow& row) { return name.Compare(row.name) == 0; }, a,
                   invF);
}

TGeoProj* _GetProjByType(int type, double a, double invF) {
  const auto ofType = [type](const ProjFactoryRow& row) {
    return row.code == type && row.code != kByNameOnly;
  };
  return MakeFirst(ofType, a, invF);
}

}  // namespace zel_cs::geomath
