#include "geomath/proj/factory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <typeindex>
#include <utility>
#include <vector>

#include "geomath/proj/built_in_projection_types.h"
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
#include "geomath/proj/param_table.h"
#include "geomath/proj/projection_type.h"

namespace zel_cs::geomath {
namespace {

// International 1924: no default of any class.
constexpr double kA = 6378388.0, kInvF = 297.0;
constexpr int kNone = kByNameOnly;

std::unique_ptr<TGeoProj> ByName(const wchar_t* name) {
  return std::unique_ptr<TGeoProj>(_GetProjByName(name, kA, kInvF));
}

std::unique_ptr<TGeoProj> ByType(int type) {
  return std::unique_ptr<TGeoProj>(_GetProjByType(type, kA, kInvF));
}

const std::vector<double> kCountyArgs = {0, 0, 0, 1, 0, 0, 0, 6378137, 6378137, 0, 0, 0};

// The factory's defaults as the file formats fix them: name, code, class, the kind that the object
// reports, parameters in radians and metres (empty: the class's own), own ellipsoid.
const struct Case {
  const wchar_t* name;
  int code;
  std::type_index type;
  int kind;
  std::vector<double> params;
  bool ownEllipsoid = false;
} kCases[] = {
    {L"TMERC", 0, typeid(TUTMProj), 0, {0, 1, 0, 0, 0}},
    {L"STER", 10, typeid(TSterProj), 10, {0, 0, 1, 0, 0}},
    {L"LC", 4, typeid(TLCProj), 4, {0, 0.5235987755982988, 0, 0, 0, 0, 1}},
    {L"AK01", 8, typeid(TAK01Proj), 8, {}, true},
    {L"AK29", 9, typeid(TAK29Proj), 9, {}, true},
    {L"TM27", 6, typeid(TTM27Proj), 6, {}, true},
    {L"LC27", 7, typeid(TLC27Proj), 7, {}, true},
    {L"TM83", 1, typeid(TSPC_TM83Proj), 1, {0, 1, 0, 0, 0, 0}},
    {L"OM83", 2, typeid(TSPC_OM83Proj), 2, {0, 1, 0, 0, 0, 0, 0}},
    {L"LC83", 3, typeid(TSPC_LC83Proj), 3, {0, 1, 0, 0, 0, 0, 0}},
    {L"LA_MW", 29, typeid(TMinnesota_LAProj), 29, kCountyArgs},
    {L"OM_MW", 28, typeid(TMinnesota_OMProj), 28, kCountyArgs},
    {L"TM_MW", 27, typeid(TMinnesota_TMProj), 27, kCountyArgs},
    {L"COLOMBIA", 22, typeid(TColombiaProj), 22, {0, 0, 0, 0}},
    {L"RSO",
     21,
     typeid(TRSOProj),
     21,
     {-0.6453216940971663, 0.99984, 1.784599160164202, 0.06981317007977318, 804671.2996, 0}},
    {L"SWISS", 20, typeid(TSwissProj), 20, {0, 0, 0, 0}},
    {L"RDPROJ", 30, typeid(TRDProj), 30, {0, 0, 0, 0}},
    {L"DSTER", 32, typeid(TDoubleSter), 32, {0, 0, 1, 0, 0}},
    {L"KMSTRANS", 33, typeid(TKMSTransProj), 36, {0.15707963267948966, 0.9996, 0, 500000, 0}},
    {L"NZMG", 34, typeid(TNZMGProj), 34, {0, 0, 0, 0}},
    {L"TMERC_KMS", 35, typeid(TKMSProjTM), 36, {0.15707963267948966, 0.9996, 0, 500000, 0}},
    {L"TMERCSPHER", 36, typeid(TDenmarkTMProj), 36, {0, 1, 0, 0, 0}},
    {L"C_S",
     24,
     typeid(TMalaysia_CSProj),
     24,
     {0, 0, 30745.124, 11227.927, -0.0098, 0.021, -2.0871, 5.29886, -5.27113, -1.83579, -0.47547,
      -0.74017, -0.64384, 0.17978, 0.58805, -0.66614}},
    {L"AlbersConic", 12, typeid(TAlbersEAConicProj), 4, {0, 0.5235987755982988, 0, 0, 0, 0}},
    {L"OM", 15, typeid(TOMercatorProj), 15, {0, 1, 0, 0, 0, 0}},
    {L"CASSINI", 17, typeid(TCassiniProj), 17, {0, 0, 0, 0, 0}},
    {L"KROVAK", 37, typeid(TKrovakProj), 37, {0, 0, 0, 0, 0, 0.9999, 0, 0}},
    {L"MERCATOR", 14, typeid(TMercatorProj), 14, {0, 0, 0, 0}},
    {L"TMERC_NZ", kNone, typeid(TTTMNZ), 0, {0, 1, 0, 0, 0, 0.999998261}},
    {L"TMSPHER", 38, typeid(TMonSpher), 38, {0, 0, 0, 1, 1, 0, 0, 0}},
    {L"C_S2000", kNone, typeid(TMalaysia_CS2000Proj), 39, {0, 0, 0, 0}},
};

void ExpectRow(const Case& row, const TGeoProj& proj) {
  EXPECT_EQ(std::type_index(typeid(proj)), row.type);
  EXPECT_EQ(proj.GetType(), row.kind);
  EXPECT_EQ(proj.GetEllipsoid().a == kA, !row.ownEllipsoid);
  EXPECT_EQ(proj.GetEllipsoid().invF == kInvF, !row.ownEllipsoid);
  if (row.params.empty()) return;
  EXPECT_EQ(proj.GetQParam(), static_cast<int>(row.params.size()));
  for (int i = 0; i < proj.GetQParam(); ++i)
    EXPECT_EQ(proj.GetParam(i, kUnitInternal), row.params.at(static_cast<std::size_t>(i)))
        << "parameter " << i;
}

void ExpectPlain(const TGeoProj& proj) {
  EXPECT_EQ(std::type_index(typeid(proj)), std::type_index(typeid(TGeoProj)));
  EXPECT_EQ(proj.GetType(), 40);
  EXPECT_EQ(proj.GetQParam(), 0);
  EXPECT_EQ(proj.GetEllipsoid().a, 6378137.0) << "the arguments are not applied";
}

TEST(Factory, BuildsEveryRowByNameAndByCode) {
  for (const Case& row : kCases) {
    SCOPED_TRACE(::testing::PrintToString(std::wstring(row.name)));
    ExpectRow(row, *ByName(row.name));
    if (row.code != kNone) ExpectRow(row, *ByType(row.code));
  }
}

TEST(Factory, ListsItsRows) {
  std::vector<std::pair<std::wstring, int>> rows, listed;
  for (const Case& row : kCases) rows.emplace_back(row.name, row.code);
  for (const ProjFactoryRow& row : ProjFactoryRows()) listed.emplace_back(row.name, row.code);
  EXPECT_EQ(listed, rows);
}

TEST(Factory, AnyOtherNameGivesThePlainBase) {
  for (const wchar_t* name :
       {L"UNKNOWN", L"", L"tmerc", L"TMERC ", L"TM", L"RDTRANS", L"ALBERSCONIC"}) {
    SCOPED_TRACE(::testing::PrintToString(std::wstring(name)));
    const auto proj = ByName(name);
    ExpectPlain(*proj);
    double b = 0.5, l = 0.5;
    EXPECT_FALSE(proj->Forward(b, l));
  }
}

TEST(Factory, AnyOtherCodeGivesThePlainBase) {
  for (int code = -3; code <= 45; ++code) {
    bool known = false;
    for (const Case& row : kCases) known = known || (row.code == code && code != kNone);
    if (!known) ExpectPlain(*ByType(code));
  }
  ExpectPlain(*ByType(std::numeric_limits<int>::max()));
  ExpectPlain(*ByType(std::numeric_limits<int>::min()));
}

// Whether a projection exchanges this parameter in degrees under unit code 3, both ways.
bool HonoursDegrees(TGeoProj& proj, int index) {
  constexpr double kProbe = 0.25, kDegrees = kProbe * 57.29577951308232;
  proj.SetParam(kProbe, index, kUnitInternal);
  const bool read = proj.GetParam(index, kUnitDegrees) == kDegrees;
  proj.SetParam(kDegrees, index, kUnitDegrees);
  const bool written = proj.GetParam(index, kUnitInternal) < 2 * kProbe;
  EXPECT_EQ(read, written) << "parameter " << index;
  return read;
}

// The description of a kind and the class that its key builds are two statements about one
// parameter list. Where they differ on purpose:
TEST(Factory, ParametersHaveTheNamesAndKindsThatTheDescriptionsSay) {
  // The azimuth of the central line is exchanged in radians under every code.
  const std::set<std::pair<std::wstring, int>> radians = {{L"OM", 0}};
  // Descriptions that leave out parameters of their class, or declare more.
  const std::map<std::wstring, int> counts = {{L"TMERC_NZ", 6}, {L"TM27", 6}, {L"TMSPHER", 8}};
  // Kinds that the objects do not report; see the factory's table and the descriptions'.
  const std::set<std::wstring> otherKind = {L"TMERC_KMS", L"TMERCSPHER",  L"KMSTRANS", L"TMSPHER",
                                            L"TM_MW",     L"AlbersConic", L"OM_MW"};
  int compared = 0;
  for (const ProjTypeKey& row : BuiltInProjTypes()) {
    const std::wstring key = row.key;
    SCOPED_TRACE(::testing::PrintToString(key));
    TProjectionType kind;
    ASSERT_EQ(kind.Load(row.key), 0);
    const auto proj = ByName(row.key);
    if (proj->GetType() == ProjTypeNone) {
      EXPECT_TRUE(key == L"TM" || key == L"RDTRANS") << "described, but not built";
      continue;
    }
    ++compared;
    EXPECT_EQ(kind.GetType() != proj->GetType(), otherKind.count(key) == 1);
    const auto count = counts.find(key);
    EXPECT_EQ(proj->GetQParam(), count != counts.end() ? count->second : kind.GetQParam());
    for (int i = 0; i < std::min(proj->GetQParam(), kind.GetQParam()); ++i) {
      EXPECT_STREQ(proj->Params()[static_cast<std::size_t>(i)].name, kind.GetParamName(i));
      const bool described = kind.GetParamType(i) == kParamTypeAngle && kind.DoConvertToUnit(i);
      EXPECT_EQ(HonoursDegrees(*proj, i), described && radians.count({key, i}) == 0) << i;
    }
  }
  EXPECT_EQ(compared, 30);
}

// Setting one by one is done twice: Krovak's scale waits for another parameter.
TEST(Factory, ParametersInOneGoMakeTheSameMapAsOneByOne) {
  constexpr double kDegreesOff = 0.25;
  int compared = 0;
  for (const Case& row : kCases) {
    SCOPED_TRACE(::testing::PrintToString(std::wstring(row.name)));
    const auto atOnce = ByName(row.name), singly = ByName(row.name);
    std::vector<double> values;
    for (int i = 0; i < atOnce->GetQParam(); ++i)
      values.push_back(atOnce->GetParam(i, kUnitDegrees) + kDegreesOff * (i + 1));
    atOnce->SetParams(values, kUnitDegrees);
    for (int round = 0; round < 2; ++round)
      for (int i = 0; i < singly->GetQParam(); ++i)
        singly->SetParam(values.at(static_cast<std::size_t>(i)), i, kUnitDegrees);
    for (int i = 0; i < singly->GetQParam(); ++i)
      EXPECT_EQ(atOnce->GetParam(i, kUnitInternal), singly->GetParam(i, kUnitInternal)) << i;
    double b[] = {0.7, 0.7}, l[] = {0.1, 0.1};
    EXPECT_EQ(atOnce->ForwardPoint(b[0], l[0]), singly->ForwardPoint(b[1], l[1]));
    EXPECT_TRUE(std::isfinite(b[0]) ? b[0] == b[1] && l[0] == l[1] : !std::isfinite(b[1]))
        << b[0] << " " << b[1];
    compared += std::isfinite(b[0]) && b[0] != 0.7;
  }
  EXPECT_GT(compared, 20);

  TUTMProj some(kA, kInvF, 0, 1, 0, 0, 0);
  some.SetParams(std::vector<double>{0.5}, kUnitInternal);
  some.SetParams(std::vector<double>(99, 0.25), kUnitInternal);
  EXPECT_EQ(some.GetParam(0, kUnitInternal), 0.25);
}

}  // namespace
}  // namespace zel_cs::geomath
