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

template <class Proj, class... Args>
TGeoProj* Make(Args... args) {
  return new Proj(args...);
}

/// A class with its tabulated constants and ellipsoid built in.
template <class Proj>
TGeoProj* MakeDefault(double, double) {
  return new Proj;
}

/// The default object of a class on the ellipsoid.
template <class Proj>
TGeoProj* MakeOn(double a, double invF) {
  Proj* proj = new Proj;
  if (proj) proj->SetEllipsoid(a, invF);
  return proj;
}

constexpr ProjFactoryRow kRows[] = {
    {L"TMERC", ProjTypeTM, MakeOn<TUTMProj>},
    {L"STER", ProjTypeSter, MakeOn<TSterProj>},
    {L"LC", ProjTypeLC, MakeOn<TLCProj>},
    {L"AK01", ProjTypeAK01, MakeDefault<TAK01Proj>},
    {L"AK29", ProjTypeAK29, MakeDefault<TAK29Proj>},
    {L"TM27", ProjTypeTM27, MakeDefault<TTM27Proj>},
    {L"LC27", ProjTypeLC27, MakeDefault<TLC27Proj>},
    {L"TM83", ProjTypeSPC_TM83, MakeOn<TSPC_TM83Proj>},
    {L"OM83", ProjTypeSPC_OM83, MakeOn<TSPC_OM83Proj>},
    // Kept: the northern parallel starts as 1 radian.
    {L"LC83", ProjTypeSPC_LC83,
     [](double a, double f) { return Make<TSPC_LC83Proj>(a, f, 0, 1.0, 0, 0, 0, 0, 0); }},
    // Kept: the default values put 1 into the slot of the southern parallel and 0 into the scale.
    {L"LA_MW", ProjTypeMinnesota_LA, MakeOn<TMinnesota_LAProj>},
    {L"OM_MW", ProjTypeMinnesota_OM, MakeOn<TMinnesota_OMProj>},
    {L"TM_MW", ProjTypeMinnesota_TM, MakeOn<TMinnesota_TMProj>},
    {L"COLOMBIA", ProjTypeColombia, MakeOn<TColombiaProj>},
    {L"RSO", ProjTypeRSO, MakeOn<TRSOProj>},
    {L"SWISS", ProjTypeSwiss, MakeOn<TSwissProj>},
    {L"RDPROJ", ProjTypeRD, MakeOn<TRDProj>},
    {L"DSTER", ProjTypeDoubleSter, MakeOn<TDoubleSter>},
    {L"KMSTRANS", ProjTypeKMSTrans,
     [](double a, double f) {
       return Make<TKMSTransProj>(a, f, 9 * kDeg, 0.9996, 0, 500000.0, 0, 115);
     }},
    {L"NZMG", ProjTypeNZMG, [](double a, double f) { return Make<TNZMGProj>(a, f, 0, 0, 0, 0); }},
    {L"TMERC_KMS", ProjTypeKMSTM,
     [](double a, double f) { return Make<TKMSProjTM>(a, f, 9 * kDeg, 0.9996, 0, 500000.0, 0); }},
    {L"TMERCSPHER", ProjTypeDenmarkTM, MakeOn<TDenmarkTMProj>},
    {L"C_S", ProjTypeMalaysia_CS, MakeOn<TMalaysia_CSProj>},
    {L"AlbersConic", ProjTypeAlbersEAConic, MakeOn<TAlbersEAConicProj>},
    {L"OM", ProjTypeOMercator, MakeOn<TOMercatorProj>},
    {L"CASSINI", ProjTypeCassini, MakeOn<TCassiniProj>},
    {L"KROVAK", ProjTypeKrovak,
     [](double a, double f) { return Make<TKrovakProj>(a, f, 0, 0, 0, 0, 0, 0.9999, 0, 0); }},
    {L"MERCATOR", ProjTypeMercator, MakeOn<TMercatorProj>},
    {L"TMERC_NZ", kByNameOnly, MakeOn<TTTMNZ>},
    {L"TMSPHER", ProjTypeMonSpher, MakeOn<TMonSpher>},
    {L"C_S2000", kByNameOnly, MakeOn<TMalaysia_CS2000Proj>},
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
