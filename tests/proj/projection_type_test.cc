#include "geomath/proj/projection_type.h"

#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <type_traits>

#include "geomath/proj/built_in_projection_types.h"

namespace {

using zel_cs::geomath::BuiltInProjTypes;
using zel_cs::geomath::ProjectionType;

constexpr char kTMerc[] = "Central Meridian,Scale,Lat0,East0,North0";
constexpr char kOblique[] = "AxisAzimuth,Scale,Lon0,Lat0,East0,North0";
constexpr char kConic[] = "SouthLat,NorthLat,Lon0,Lat0,East0,North0";
constexpr char kOrigin[] = "Lat0,Lon0,East0,North0";
constexpr char kScaledOrigin[] = "Lat0,Lon0,Scale,East0,North0";
constexpr char kCounty[] =
    "LonOrigin,LatOrigin,NorthStdP,SouthStdP,Scale,FN,FE,DesElA,DesElB,ElevationShift,"
    "ObliqueAngle,GeoidHeight";

// The names that parameter files carry, in the order of registration, with one letter for the type
// and one for what SpecifyParam says of each parameter.
const struct Kind {
  const wchar_t* key;
  int code, count;
  std::string names;
  const char *types, *specs;
} kKinds[] = {
    {L"TMERC", 0, 5, kTMerc, "asall", "L-BEN"},
    {L"TMERC_KMS", 0, 5, kTMerc, "asall", "L-BEN"},
    {L"TMERC_NZ", 0, 5, kTMerc, "asall", "L-BEN"},
    {L"TMERCSPHER", 0, 5, kTMerc, "asall", "L-BEN"},
    {L"KMSTRANS", 0, 5, kTMerc, "asall", "L-BEN"},
    {L"TM83", 1, 6, "CentralMeridian,Scale,Lat0,East0,North0,Zone number", "asallz", "L-BEN-"},
    {L"OM83", 2, 7, std::string(kOblique) + ",Zone number", "asaallz", "A-LBEN-"},
    {L"LC83", 3, 7, std::string(kConic) + ",Zone number", "aaaallz", "BBLBEN-"},
    {L"LC", 4, 7, std::string(kConic) + ",Scale", "aaaalls", "BBLBEN-"},
    {L"TM27", 6, 11, "L1,L2,L34,L5,L6,Zone number,-,-,-,-,-", "cccccz-----", "-----------"},
    {L"LC27", 7, 11, "L1,L2,L3,L4,L5,L6,L78,L9,L10,L11,Zone number", "ccccccccccz", "-----------"},
    {L"AK01", 8, 12, "A,B,C,D,F,G,H,I,e,epsilon,Lon0,Zone number", "ccccccccccaz", "----------L-"},
    {L"AK29", 9, 3, "C,CM,Zone number", "caz", "-L-"},
    {L"STER", 10, 5, kScaledOrigin, "aasll", "BL-EN"},
    {L"TM", 11, 6, "1-st zone central meridian,Zone width,Scale,East0,North0,Number of zones",
     "aaslln", "L--EN-"},
    {L"AlbersConic", 12, 6, kConic, "aaaall", "BBLBEN"},
    {L"MERCATOR", 14, 4, "Lon0,Lat0,FEast,FNorth", "aall", "LBEN"},
    {L"OM", 15, 6, kOblique, "asaall", "A-LBEN"},
    {L"CASSINI", 17, 5, "Lat0,Lon0,AxisAzimuth,East0,North0", "aaall", "BLAEN"},
    {L"SWISS", 20, 4, "L0,B0,East0,North0", "aall", "LBEN"},
    {L"TMSPHER", 20, 4, "Lat0,Lon0,LatNormal,_k1", "aaas", "BLB-"},
    {L"RSO", 21, 6, kOblique, "asaall", "A-LBEN"},
    {L"COLOMBIA", 22, 4, kOrigin, "aall", "BLEN"},
    {L"LA_MW", 29, 12, kCounty, "aaaaslllllal", "LBBB-NE---A-"},
    {L"OM_MW", 29, 12, kCounty, "aaaaslllllal", "LBBB-NE---A-"},
    {L"TM_MW", 29, 12, kCounty, "aaaaslllllal", "LBBB-NE---A-"},
    {L"RDPROJ", 30, 4, kOrigin, "aall", "BLEN"},
    {L"RDTRANS", 31, 5, kScaledOrigin, "aasll", "BL-EN"},
    {L"DSTER", 32, 5, kScaledOrigin, "aasll", "BL-EN"},
    {L"NZMG", 34, 4, kOrigin, "aall", "BLEN"},
    {L"KROVAK", 37, 8, "Lat0,Lon0,dLon,Uq,S0,Scale,East0,North0", "aaaaasll", "BLLBB-EN"},
    {L"C_S2000", 39, 4, "AxisAzimuth,Scale,Lon0,Lat0", "asaa", "A-LB"},
};

const std::map<int, char> kTypeLetters = {{0, '-'},  {1, 'a'},  {3, 'l'}, {10, 's'},
                                          {20, 'z'}, {21, 'n'}, {22, 'c'}};

TEST(ProjectionTypeTable, DescribesEveryKindInOrder) {
  ASSERT_EQ(BuiltInProjTypes().size(), std::size(kKinds));
  for (std::size_t row = 0; row < std::size(kKinds); ++row) {
    const Kind& kind = kKinds[row];
    SCOPED_TRACE(::testing::PrintToString(std::wstring(kind.key)));
    EXPECT_EQ(std::wstring(BuiltInProjTypes()[row].key), kind.key);

    TProjectionType* loaded = nullptr;
    ASSERT_EQ(TProjectionType::LoadProjType(loaded, kind.key), 0);
    const std::unique_ptr<TProjectionType> handle(loaded);
    EXPECT_EQ(handle->GetType(), kind.code);
    EXPECT_EQ(handle->GetQParam(), kind.count);

    std::string names, types, specs;
    for (int i = 0; i < kind.count; ++i) {
      const char* name = handle->GetParamName(i);
      names += (i ? "," : "") + std::string(name ? name : "-");
      types += kTypeLetters.at(handle->GetParamType(i));
      specs += std::string("-BLAEN").at(static_cast<std::size_t>(handle->SpecifyParam(i)));
    }
    EXPECT_EQ(names, kind.names);
    EXPECT_EQ(types, kind.types);
    EXPECT_EQ(specs, kind.specs);

    for (const int outside : {-1, kind.count, 1 << 30}) {
      EXPECT_EQ(handle->GetParamName(outside), nullptr);
      EXPECT_EQ(handle->GetParamType(outside), 0);
      EXPECT_EQ(handle->SpecifyParam(outside), 0);
      EXPECT_FALSE(handle->DoConvertToUnit(outside));
    }
  }
}

TEST(ProjectionTypeTable, OnlyAnglesAndLengthsConvertAndNoneOf1927) {
  TProjectionType kind;
  EXPECT_FALSE(kind.DoConvertToUnit(0));
  ASSERT_EQ(kind.Load(L"LC83"), 0);
  EXPECT_TRUE(kind.DoConvertToUnit(0));   // SouthLat
  EXPECT_TRUE(kind.DoConvertToUnit(5));   // North0
  EXPECT_FALSE(kind.DoConvertToUnit(6));  // Zone number
  ASSERT_EQ(kind.Load(L"LC"), 0);
  EXPECT_FALSE(kind.DoConvertToUnit(6));  // Scale
  for (const wchar_t* key : {L"TM27", L"LC27", L"AK01", L"AK29"}) {
    ASSERT_EQ(kind.Load(key), 0);
    for (int i = 0; i < kind.GetQParam(); ++i) EXPECT_FALSE(kind.DoConvertToUnit(i));
  }
}

TEST(ProjectionType, ClampsCodeAndCount) {
  char* names[] = {nullptr, nullptr, nullptr};
  struct {
    unsigned int type;
    int count, wantType, wantCount;
  } const cases[] = {{41, 3, 40, 0},  {~0u, 3, 40, 0}, {5, 17, 40, 0},  {5, 0, 40, 0},
                     {5, -2, 40, -2}, {40, 3, 40, 3},  {39, 16, 39, 16}};
  for (const auto& c : cases) {
    ProjectionType kind(c.type, c.count, names);
    EXPECT_EQ(kind.GetType(), c.wantType);
    EXPECT_EQ(kind.GetQParam(), c.wantCount);
  }
}

TEST(ProjectionType, BaseNamesNothing) {
  char name[] = "Scale";
  char* names[] = {name};
  const ProjectionType kind(4, 1, names);
  EXPECT_EQ(kind.GetParamName(0), nullptr);
  EXPECT_EQ(kind.GetParamType(0), 0);
  EXPECT_EQ(kind.SpecifyParam(0), 0);
  EXPECT_TRUE(kind.DoConvertToUnit());
}

TEST(ProjectionType, CopiesOfAHandleShareWhatWasLoaded) {
  auto original = std::make_unique<TProjectionType>();
  ASSERT_EQ(original->Load(L"LC"), 0);
  TProjectionType copy(*original), assigned;
  assigned = *original;
  ASSERT_EQ(original->Load(L"RD"), 1);
  ASSERT_EQ(original->Load(L"RDPROJ"), 0);
  EXPECT_EQ(original->GetQParam(), 4);
  original.reset();
  for (const TProjectionType* handle : {&copy, &assigned}) {
    EXPECT_EQ(handle->GetType(), 4);
    EXPECT_STREQ(handle->GetParamName(6), "Scale");
  }
}

// Creates descriptions of the given count, or none.
class CountLoader : public TProjectionTypeLoader {
 public:
  CountLoader(const wchar_t* key, int count) : TProjectionTypeLoader(key), count_(count) {}
  ProjectionType* Create() override {
    return count_ > 0 ? new ProjectionType(5, count_, nullptr) : nullptr;
  }

 private:
  int count_;
};

TEST(ProjectionTypeRegistry, UnknownKeysGiveOneAndNoHandle) {
  for (const wchar_t* key : {L"C_S", L"", L"lc", L"LC ", L"TMERC_"}) {
    TProjectionType* handle = reinterpret_cast<TProjectionType*>(&handle);
    EXPECT_EQ(TProjectionType::LoadProjType(handle, key), 1);
    EXPECT_EQ(handle, nullptr);
  }
}

TEST(ProjectionTypeRegistry, FirstEntryOfAKeyWins) {
  CountLoader first(L"HOST", 2), second(L"HOST", 3), shadow(L"LC", 1);
  TProjectionTypeLoader& again = second;
  TProjectionType::RegisterProjTypeLoader(L"HOST2", &again);
  TProjectionType kind;
  EXPECT_EQ(kind.Load(L"HOST"), 0);
  EXPECT_EQ(kind.GetQParam(), 2);
  EXPECT_EQ(kind.Load(L"HOST2"), 0);
  EXPECT_EQ(kind.GetQParam(), 3);
  EXPECT_EQ(kind.Load(L"LC"), 0);
  EXPECT_EQ(kind.GetQParam(), 7);
}

TEST(ProjectionTypeRegistry, FailedCreationKeepsWhatWasLoaded) {
  CountLoader broken(L"BROKEN", 0);
  TProjectionType kind;
  EXPECT_EQ(kind.Load(L"BROKEN"), 1);
  EXPECT_EQ(kind.GetType(), 40);
  EXPECT_EQ(kind.GetQParam(), 0);
  ASSERT_EQ(kind.Load(L"LC"), 0);
  EXPECT_EQ(kind.Load(L"BROKEN"), 1);
  EXPECT_STREQ(kind.GetParamName(6), "Scale");
  TProjectionType* handle = &kind;
  EXPECT_EQ(TProjectionType::LoadProjType(handle, L"BROKEN"), 1);
  EXPECT_EQ(handle, nullptr);
}

// Made from its key alone, or without one for whoever registers it.
class PlainLoader : public TProjectionTypeLoader {
 public:
  using TProjectionTypeLoader::TProjectionTypeLoader;
  PlainLoader() = default;
  ProjectionType* Create() override { return new ProjectionType(5, 2, nullptr); }
};

static_assert(std::is_convertible_v<CZelStringT<wchar_t>, PlainLoader>);

TEST(ProjectionTypeRegistry, ADestroyedLoaderLeavesTheRegistry) {
  TProjectionType kind;
  {
    const CountLoader passing(L"PASSING", 2);
    PlainLoader keyless;
    TProjectionType::RegisterProjTypeLoader(L"KEYLESS", &keyless);
    EXPECT_EQ(kind.Load(L"KEYLESS"), 0);
  }
  EXPECT_EQ(kind.Load(L"PASSING"), 1);
  EXPECT_EQ(kind.Load(L"KEYLESS"), 1);
}

TEST(ProjectionTypeRegistry, RefusesNoLoader) {
  TProjectionType::RegisterProjTypeLoader(L"NONE", nullptr);
  const CountLoader behind(L"NONE", 2);
  TProjectionType kind;
  EXPECT_EQ(kind.Load(L"NONE"), 0);
}

}  // namespace
