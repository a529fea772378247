#include "geomath/proj/built_in_projection_types.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "geomath/proj/internal/kind.h"
#include "geomath/proj/methods/ak01_proj.h"
#include "geomath/proj/methods/ak29_proj.h"
#include "geomath/proj/methods/albers_ea_conic_proj.h"
#include "geomath/proj/methods/cassini_proj.h"
#include "geomath/proj/methods/colombia_proj.h"
#include "geomath/proj/methods/krovak_proj.h"
#include "geomath/proj/methods/lc27_proj.h"
#include "geomath/proj/methods/lc_proj.h"
#include "geomath/proj/methods/malaysia_cs2000_proj.h"
#include "geomath/proj/methods/mercator_proj.h"
#include "geomath/proj/methods/minnesota_la_proj.h"
#include "geomath/proj/methods/mon_spher.h"
#include "geomath/proj/methods/nzmg_proj.h"
#include "geomath/proj/methods/o_mercator_proj.h"
#include "geomath/proj/methods/rd_proj.h"
#include "geomath/proj/methods/rd_trans_proj.h"
#include "geomath/proj/methods/rso_proj.h"
#include "geomath/proj/methods/spc_lc83_proj.h"
#include "geomath/proj/methods/spc_om83_proj.h"
#include "geomath/proj/methods/spc_tm83_proj.h"
#include "geomath/proj/methods/ster_proj.h"
#include "geomath/proj/methods/swiss_proj.h"
#include "geomath/proj/methods/tm27_proj.h"
#include "geomath/proj/methods/utm_proj.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {
namespace {

// The type and specification codes of a parameter follow from its quantity.
struct QuantityCodes {
  ParamTypeCode type;
  ParamSpecCode spec;
};

constexpr QuantityCodes CodesOf(Quantity quantity) {
  constexpr QuantityCodes codes[] = {{kParamTypeAngle, kParamSpecLatitude},     // latitude
                                     {kParamTypeAngle, kParamSpecLongitude},    // longitude
                                     {kParamTypeAngle, kParamSpecAzimuth},      // azimuth
                                     {kParamTypeAngle, kParamSpecNone},         // angle
                                     {kParamTypeLinear, kParamSpecEasting},     // easting
                                     {kParamTypeLinear, kParamSpecNorthing},    // northing
                                     {kParamTypeLinear, kParamSpecNone},        // length
                                     {kParamTypeScale, kParamSpecNone},         // scale
                                     {kParamTypeZone, kParamSpecNone},          // zone
                                     {kParamTypeCount, kParamSpecNone},         // count
                                     {kParamTypeCoefficient, kParamSpecNone}};  // coefficient
  return codes[static_cast<std::size_t>(quantity)];
}

bool IsPrinted(const ParamDescription& param) {
  return param.unit == ParamUnit::arcSeconds || param.unit == ParamUnit::surveyFeet;
}

}  // namespace

/// One kind: the parameters of its class, in the forms that the interface takes.
struct ProjTypeRow {
  /// `paramCount`, when it is not 0, may exceed the parameters that are described.
  template <class Param>
  ProjTypeRow(ProjType kind, std::span<const Param> rows, std::size_t paramCount = 0)
      : type(kind),
        count(static_cast<int>(paramCount ? paramCount : rows.size())),
        described(rows.size()) {
    std::copy(rows.begin(), rows.end(), params.begin());
    std::ranges::transform(rows, names.begin(), &ParamDescription::name);
    // A table's printed constants stay in the units of the table.
    convertsToUnit = std::ranges::none_of(rows, IsPrinted);
  }

  const ParamDescription* Find(int index) const {
    const auto at = static_cast<std::size_t>(index);  // a negative one lies beyond all
    return at < described ? &params[at] : nullptr;
  }
  // Nobody writes through the interface's plain pointers.
  char** Names() const { return const_cast<char**>(names.data()); }

  ProjType type;
  int count;
  std::size_t described;
  std::array<ParamDescription, kMaxParams> params{};
  std::array<const char*, kMaxParams> names{};
  bool convertsToUnit;
};

namespace {

/// The parameters of a class.
template <class Proj>
const ProjTypeRow& RowOf(ProjType type) {
  static const ProjTypeRow row(type, Proj().Params());
  return row;
}

// Kept: 11 parameters, six described.
const ProjTypeRow& TM27Row() {
  static const ProjTypeRow row(ProjTypeTM27, TTM27Proj().Params(), 11);
  return row;
}

// Kept: the Swiss kind, and the first four parameters of TMonSpher.
const ProjTypeRow& TMSpherRow() {
  static const ProjTypeRow row(ProjTypeSwiss, TMonSpher().Params().first(4));
  return row;
}

// Transverse Mercator in zones, which no class of this library is.
const ProjTypeRow& TMZonesRow() {
  static constexpr ParamDescription params[] = {{"1-st zone central meridian", Quantity::longitude},
                                                {"Zone width", Quantity::angle},
                                                {"Scale", Quantity::scale},
                                                {"East0", Quantity::easting},
                                                {"North0", Quantity::northing},
                                                {"Number of zones", Quantity::count}};
  static const ProjTypeRow row(ProjTypeTMZones, std::span<const ParamDescription>(params));
  return row;
}

// Kept: one kind for all three.
const ProjTypeRow& CountyRow() { return RowOf<TMinnesota_LAProj>(ProjTypeMinnesota_LA); }

template <class Description>
ProjectionType* Create() {
  return new Description;
}

constexpr ProjTypeKey kKeys[] = {
    {L"TMERC", Create<TTMercProjType>},
    {L"TMERC_KMS", Create<TTMercProjType>},
    {L"TMERC_NZ", Create<TTMercProjType>},
    {L"TMERCSPHER", Create<TTMercProjType>},
    {L"KMSTRANS", Create<TTMercProjType>},
    {L"TM83", Create<TSPC_TM83ProjType>},
    {L"OM83", Create<TSPC_OM83ProjType>},
    {L"LC83", Create<TSPC_LC83ProjType>},
    {L"LC", Create<TLCProjType>},
    {L"TM27", Create<TTM27ProjType>},
    {L"LC27", Create<TLC27ProjType>},
    {L"AK01", Create<TAK01ProjType>},
    {L"AK29", Create<TAK29ProjType>},
    {L"STER", Create<TSterProjType>},
    {L"TM", Create<TTMProjType>},
    {L"AlbersConic", Create<TAlbersEAConicProjType>},
    {L"MERCATOR", Create<TMercatorProjType>},
    {L"OM", Create<TOMProjType>},
    {L"CASSINI", Create<TCassiniProjType>},
    {L"SWISS", Create<TSwissProjType>},
    {L"TMSPHER", Create<TTMSpherProjType>},
    {L"RSO", Create<TRSOProjType>},
    {L"COLOMBIA", Create<TColombiaProjType>},
    {L"LA_MW", Create<TLA_MWProjType>},
    {L"OM_MW", Create<TOM_MWProjType>},
    {L"TM_MW", Create<TTM_MWProjType>},
    {L"RDPROJ", Create<TRDProjType>},
    {L"RDTRANS", Create<TRDTransProjType>},
    {L"DSTER", Create<TDoubleSterProjType>},
    {L"NZMG", Create<TNZMGProjType>},
    {L"KROVAK", Create<TKROVAKProjType>},
    {L"C_S2000", Create<TC_S2000ProjType>},
};

}  // namespace

TabulatedProjType::TabulatedProjType(const ProjTypeRow& row)
    : ProjectionType(static_cast<unsigned int>(row.type), row.count, row.Names()), row_(&row) {}

char* TabulatedProjType::GetParamName(int index) const {
  return row_->Find(index) ? Names()[index] : nullptr;
}

int TabulatedProjType::GetParamType(int index) const {
  const ParamDescription* param = row_->Find(index);
  return param ? CodesOf(param->quantity).type : kParamTypeNone;
}

int TabulatedProjType::SpecifyParam(int index) const {
  const ParamDescription* param = row_->Find(index);
  return param ? CodesOf(param->quantity).spec : kParamSpecNone;
}

bool TabulatedProjType::DoConvertToUnit() const { return row_->convertsToUnit; }

std::span<const ProjTypeKey> BuiltInProjTypes() { return kKeys; }

}  // namespace zel_cs::geomath

using namespace zel_cs::geomath;

TTMercProjType::TTMercProjType() : TabulatedProjType(RowOf<TUTMProj>(ProjTypeTM)) {}
TSPC_TM83ProjType::TSPC_TM83ProjType()
    : TabulatedProjType(RowOf<TSPC_TM83Proj>(ProjTypeSPC_TM83)) {}
TSPC_OM83ProjType::TSPC_OM83ProjType()
    : TabulatedProjType(RowOf<TSPC_OM83Proj>(ProjTypeSPC_OM83)) {}
TSPC_LC83ProjType::TSPC_LC83ProjType()
    : TabulatedProjType(RowOf<TSPC_LC83Proj>(ProjTypeSPC_LC83)) {}
TLCProjType::TLCProjType() : TabulatedProjType(RowOf<TLCProj>(ProjTypeLC)) {}
TTM27ProjType::TTM27ProjType() : TabulatedProjType(TM27Row()) {}
TLC27ProjType::TLC27ProjType() : TabulatedProjType(RowOf<TLC27Proj>(ProjTypeLC27)) {}
TAK01ProjType::TAK01ProjType() : TabulatedProjType(RowOf<TAK01Proj>(ProjTypeAK01)) {}
TAK29ProjType::TAK29ProjType() : TabulatedProjType(RowOf<TAK29Proj>(ProjTypeAK29)) {}
TSterProjType::TSterProjType() : TabulatedProjType(RowOf<TSterProj>(ProjTypeSter)) {}
TTMProjType::TTMProjType() : TabulatedProjType(TMZonesRow()) {}
TAlbersEAConicProjType::TAlbersEAConicProjType()
    : TabulatedProjType(RowOf<TAlbersEAConicProj>(ProjTypeAlbersEAConic)) {}
TMercatorProjType::TMercatorProjType()
    : TabulatedProjType(RowOf<TMercatorProj>(ProjTypeMercator)) {}
TOMProjType::TOMProjType() : TabulatedProjType(RowOf<TOMercatorProj>(ProjTypeOMercator)) {}
TCassiniProjType::TCassiniProjType() : TabulatedProjType(RowOf<TCassiniProj>(ProjTypeCassini)) {}
TSwissProjType::TSwissProjType() : TabulatedProjType(RowOf<TSwissProj>(ProjTypeSwiss)) {}
TTMSpherProjType::TTMSpherProjType() : TabulatedProjType(TMSpherRow()) {}
TRSOProjType::TRSOProjType() : TabulatedProjType(RowOf<TRSOProj>(ProjTypeRSO)) {}
TColombiaProjType::TColombiaProjType()
    : TabulatedProjType(RowOf<TColombiaProj>(ProjTypeColombia)) {}
TLA_MWProjType::TLA_MWProjType() : TabulatedProjType(CountyRow()) {}
TOM_MWProjType::TOM_MWProjType() : TabulatedProjType(CountyRow()) {}
TTM_MWProjType::TTM_MWProjType() : TabulatedProjType(CountyRow()) {}
TRDProjType::TRDProjType() : TabulatedProjType(RowOf<TRDProj>(ProjTypeRD)) {}
TRDTransProjType::TRDTransProjType() : TabulatedProjType(RowOf<TRDTransProj>(ProjTypeRDTrans)) {}
TDoubleSterProjType::TDoubleSterProjType()
    : TabulatedProjType(RowOf<TDoubleSter>(ProjTypeDoubleSter)) {}
TNZMGProjType::TNZMGProjType() : TabulatedProjType(RowOf<TNZMGProj>(ProjTypeNZMG)) {}
TKROVAKProjType::TKROVAKProjType() : TabulatedProjType(RowOf<TKrovakProj>(ProjTypeKrovak)) {}
TC_S2000ProjType::TC_S2000ProjType()
    : TabulatedProjType(RowOf<TMalaysia_CS2000Proj>(ProjTypeMalaysia_CS2000)) {}
