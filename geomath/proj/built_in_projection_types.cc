#include "geomath/proj/built_in_projection_types.h"

#include <array>
#include <cstddef>
#include <iterator>

namespace zel_cs::geomath {

/// What a parameter is; the type and specification codes of every parameter follow from it.
enum class Quantity {
  latitude,
  longitude,
  azimuth,
  angle,
  easting,
  northing,
  length,
  scale,
  zone,
  count,
  coefficient
};

struct ParamDescription {
  const char* name;
  Quantity quantity;
};

/// One kind. `count` may exceed the parameters that are described.
struct ProjTypeRow {
  ProjType type;
  int count;
  std::span<const ParamDescription> params;
  char** names;
  bool convertsToUnit;
};

namespace {

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

using enum Quantity;

constexpr ParamDescription kTMercParams[] = {{"Central Meridian", longitude},
                                             {"Scale", scale},
                                             {"Lat0", latitude},
                                             {"East0", easting},
                                             {"North0", northing}};
constexpr ParamDescription kTM83Params[] = {
    {"CentralMeridian", longitude}, {"Scale", scale},     {"Lat0", latitude}, {"East0", easting},
    {"North0", northing},           {"Zone number", zone}};
constexpr ParamDescription kOM83Params[] = {
    {"AxisAzimuth", azimuth}, {"Scale", scale},     {"Lon0", longitude},  {"Lat0", latitude},
    {"East0", easting},       {"North0", northing}, {"Zone number", zone}};
constexpr ParamDescription kLC83Params[] = {
    {"SouthLat", latitude}, {"NorthLat", latitude}, {"Lon0", longitude},  {"Lat0", latitude},
    {"East0", easting},     {"North0", northing},   {"Zone number", zone}};
constexpr ParamDescription kLCParams[] = {
    {"SouthLat", latitude}, {"NorthLat", latitude}, {"Lon0", longitude}, {"Lat0", latitude},
    {"East0", easting},     {"North0", northing},   {"Scale", scale}};
constexpr ParamDescription kTM27Params[] = {{"L1", coefficient},  {"L2", coefficient},
                                            {"L34", coefficient}, {"L5", coefficient},
                                            {"L6", coefficient},  {"Zone number", zone}};
constexpr ParamDescription kLC27Params[] = {
    {"L1", coefficient},  {"L2", coefficient},  {"L3", coefficient},  {"L4", coefficient},
    {"L5", coefficient},  {"L6", coefficient},  {"L78", coefficient}, {"L9", coefficient},
    {"L10", coefficient}, {"L11", coefficient}, {"Zone number", zone}};
constexpr ParamDescription kAK01Params[] = {
    {"A", coefficient}, {"B", coefficient},       {"C", coefficient},  {"D", coefficient},
    {"F", coefficient}, {"G", coefficient},       {"H", coefficient},  {"I", coefficient},
    {"e", coefficient}, {"epsilon", coefficient}, {"Lon0", longitude}, {"Zone number", zone}};
constexpr ParamDescription kAK29Params[] = {
    {"C", coefficient}, {"CM", longitude}, {"Zone number", zone}};
constexpr ParamDescription kSterParams[] = {{"Lat0", latitude},
                                            {"Lon0", longitude},
                                            {"Scale", scale},
                                            {"East0", easting},
                                            {"North0", northing}};
constexpr ParamDescription kTMParams[] = {{"1-st zone central meridian", longitude},
                                          {"Zone width", angle},
                                          {"Scale", scale},
                                          {"East0", easting},
                                          {"North0", northing},
                                          {"Number of zones", count}};
constexpr ParamDescription kAlbersParams[] = {{"SouthLat", latitude}, {"NorthLat", latitude},
                                              {"Lon0", longitude},    {"Lat0", latitude},
                                              {"East0", easting},     {"North0", northing}};
constexpr ParamDescription kMercatorParams[] = {
    {"Lon0", longitude}, {"Lat0", latitude}, {"FEast", easting}, {"FNorth", northing}};
constexpr ParamDescription kObliqueParams[] = {{"AxisAzimuth", azimuth}, {"Scale", scale},
                                               {"Lon0", longitude},      {"Lat0", latitude},
                                               {"East0", easting},       {"North0", northing}};
constexpr ParamDescription kCassiniParams[] = {{"Lat0", latitude},
                                               {"Lon0", longitude},
                                               {"AxisAzimuth", azimuth},
                                               {"East0", easting},
                                               {"North0", northing}};
constexpr ParamDescription kSwissParams[] = {
    {"L0", longitude}, {"B0", latitude}, {"East0", easting}, {"North0", northing}};
constexpr ParamDescription kTMSpherParams[] = {
    {"Lat0", latitude}, {"Lon0", longitude}, {"LatNormal", latitude}, {"_k1", scale}};
constexpr ParamDescription kOriginParams[] = {
    {"Lat0", latitude}, {"Lon0", longitude}, {"East0", easting}, {"North0", northing}};
constexpr ParamDescription kCountyParams[] = {{"LonOrigin", longitude},  {"LatOrigin", latitude},
                                              {"NorthStdP", latitude},   {"SouthStdP", latitude},
                                              {"Scale", scale},          {"FN", northing},
                                              {"FE", easting},           {"DesElA", length},
                                              {"DesElB", length},        {"ElevationShift", length},
                                              {"ObliqueAngle", azimuth}, {"GeoidHeight", length}};
constexpr ParamDescription kKrovakParams[] = {
    {"Lat0", latitude}, {"Lon0", longitude}, {"dLon", longitude}, {"Uq", latitude},
    {"S0", latitude},   {"Scale", scale},    {"East0", easting},  {"North0", northing}};
constexpr ParamDescription kCS2000Params[] = {
    {"AxisAzimuth", azimuth}, {"Scale", scale}, {"Lon0", longitude}, {"Lat0", latitude}};

/// The names of a parameter table on their own, for the interface that takes them so.
template <const auto& params>
constexpr auto kNames = [] {
  std::array<const char*, std::size(params)> names{};
  for (std::size_t i = 0; i < std::size(params); ++i) names[i] = params[i].name;
  return names;
}();

template <const auto& params>
constexpr ProjTypeRow Row(ProjType type, int count = static_cast<int>(std::size(params))) {
  // Nobody writes through the interface's plain pointers.
  return {type, count, params, const_cast<char**>(kNames<params>.data()), true};
}

/// A kind of the grids of 1927, whose constants stay in the units of their published table.
template <const auto& params>
constexpr ProjTypeRow Row1927(ProjType type, int count = static_cast<int>(std::size(params))) {
  ProjTypeRow row = Row<params>(type, count);
  row.convertsToUnit = false;
  return row;
}

constexpr ProjTypeRow kTMerc = Row<kTMercParams>(ProjTypeTM);
constexpr ProjTypeRow kTM83 = Row<kTM83Params>(ProjTypeSPC_TM83);
constexpr ProjTypeRow kOM83 = Row<kOM83Params>(ProjTypeSPC_OM83);
constexpr ProjTypeRow kLC83 = Row<kLC83Params>(ProjTypeSPC_LC83);
constexpr ProjTypeRow kLC = Row<kLCParams>(ProjTypeLC);
constexpr ProjTypeRow kTM27 = Row1927<kTM27Params>(ProjTypeTM27, 11);  // Kept: 11, six described
constexpr ProjTypeRow kLC27 = Row1927<kLC27Params>(ProjTypeLC27);
constexpr ProjTypeRow kAK01 = Row1927<kAK01Params>(ProjTypeAK01);
constexpr ProjTypeRow kAK29 = Row1927<kAK29Params>(ProjTypeAK29);
constexpr ProjTypeRow kSter = Row<kSterParams>(ProjTypeSter);
constexpr ProjTypeRow kTM = Row<kTMParams>(ProjTypeTMZones);
constexpr ProjTypeRow kAlbers = Row<kAlbersParams>(ProjTypeAlbersEAConic);
constexpr ProjTypeRow kMercator = Row<kMercatorParams>(ProjTypeMercator);
constexpr ProjTypeRow kOM = Row<kObliqueParams>(ProjTypeOMercator);
constexpr ProjTypeRow kCassini = Row<kCassiniParams>(ProjTypeCassini);
constexpr ProjTypeRow kSwiss = Row<kSwissParams>(ProjTypeSwiss);
constexpr ProjTypeRow kTMSpher = Row<kTMSpherParams>(ProjTypeSwiss);  // Kept: the Swiss kind
constexpr ProjTypeRow kRSO = Row<kObliqueParams>(ProjTypeRSO);
constexpr ProjTypeRow kColombia = Row<kOriginParams>(ProjTypeColombia);
constexpr ProjTypeRow kCounty = Row<kCountyParams>(ProjTypeMinnesota_LA);  // Kept: for all three
constexpr ProjTypeRow kRD = Row<kOriginParams>(ProjTypeRD);
constexpr ProjTypeRow kRDTrans = Row<kSterParams>(ProjTypeRDTrans);
constexpr ProjTypeRow kDoubleSter = Row<kSterParams>(ProjTypeDoubleSter);
constexpr ProjTypeRow kNZMG = Row<kOriginParams>(ProjTypeNZMG);
constexpr ProjTypeRow kKrovak = Row<kKrovakParams>(ProjTypeKrovak);
constexpr ProjTypeRow kCS2000 = Row<kCS2000Params>(ProjTypeMalaysia_CS2000);

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

const ParamDescription* Find(const ProjTypeRow& row, int index) {
  if (index < 0 || static_cast<std::size_t>(index) >= row.params.size()) return nullptr;
  return &row.params[static_cast<std::size_t>(index)];
}

}  // namespace

TabulatedProjType::TabulatedProjType(const ProjTypeRow& row)
    : ProjectionType(static_cast<unsigned int>(row.type), row.count, row.names), row_(&row) {}

char* TabulatedProjType::GetParamName(int index) const {
  return Find(*row_, index) ? Names()[index] : nullptr;
}

int TabulatedProjType::GetParamType(int index) const {
  const ParamDescription* param = Find(*row_, index);
  return param ? CodesOf(param->quantity).type : kParamTypeNone;
}

int TabulatedProjType::SpecifyParam(int index) const {
  const ParamDescription* param = Find(*row_, index);
  return param ? CodesOf(param->quantity).spec : kParamSpecNone;
}

bool TabulatedProjType::DoConvertToUnit() const { return row_->convertsToUnit; }

std::span<const ProjTypeKey> BuiltInProjTypes() { return kKeys; }

}  // namespace zel_cs::geomath

using namespace zel_cs::geomath;

TTMercProjType::TTMercProjType() : TabulatedProjType(kTMerc) {}
TSPC_TM83ProjType::TSPC_TM83ProjType() : TabulatedProjType(kTM83) {}
TSPC_OM83ProjType::TSPC_OM83ProjType() : TabulatedProjType(kOM83) {}
TSPC_LC83ProjType::TSPC_LC83ProjType() : TabulatedProjType(kLC83) {}
TLCProjType::TLCProjType() : TabulatedProjType(kLC) {}
TTM27ProjType::TTM27ProjType() : TabulatedProjType(kTM27) {}
TLC27ProjType::TLC27ProjType() : TabulatedProjType(kLC27) {}
TAK01ProjType::TAK01ProjType() : TabulatedProjType(kAK01) {}
TAK29ProjType::TAK29ProjType() : TabulatedProjType(kAK29) {}
TSterProjType::TSterProjType() : TabulatedProjType(kSter) {}
TTMProjType::TTMProjType() : TabulatedProjType(kTM) {}
TAlbersEAConicProjType::TAlbersEAConicProjType() : TabulatedProjType(kAlbers) {}
TMercatorProjType::TMercatorProjType() : TabulatedProjType(kMercator) {}
TOMProjType::TOMProjType() : TabulatedProjType(kOM) {}
TCassiniProjType::TCassiniProjType() : TabulatedProjType(kCassini) {}
TSwissProjType::TSwissProjType() : TabulatedProjType(kSwiss) {}
TTMSpherProjType::TTMSpherProjType() : TabulatedProjType(kTMSpher) {}
TRSOProjType::TRSOProjType() : TabulatedProjType(kRSO) {}
TColombiaProjType::TColombiaProjType() : TabulatedProjType(kColombia) {}
TLA_MWProjType::TLA_MWProjType() : TabulatedProjType(kCounty) {}
TOM_MWProjType::TOM_MWProjType() : TabulatedProjType(kCounty) {}
TTM_MWProjType::TTM_MWProjType() : TabulatedProjType(kCounty) {}
TRDProjType::TRDProjType() : TabulatedProjType(kRD) {}
TRDTransProjType::TRDTransProjType() : TabulatedProjType(kRDTrans) {}
TDoubleSterProjType::TDoubleSterProjType() : TabulatedProjType(kDoubleSter) {}
TNZMGProjType::TNZMGProjType() : TabulatedProjType(kNZMG) {}
TKROVAKProjType::TKROVAKProjType() : TabulatedProjType(kKrovak) {}
TC_S2000ProjType::TC_S2000ProjType() : TabulatedProjType(kCS2000) {}
