#include "geomath/proj/table_proj.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "geomath/proj/methods/utm_proj.h"

namespace zel_cs::geomath {
namespace {

// Swaps the pair; counts its living objects.
class SwapMath : public TTableProjMath {
 public:
  using TTableProjMath::TTableProjMath;
  explicit SwapMath(int& living) : living_(&living) { ++living; }
  ~SwapMath() override {
    if (living_) --*living_;
  }
  bool Forward(double& b, double& l) override {
    std::swap(b, l);
    return true;
  }
  bool Inverse(double&, double&) override { return false; }

 private:
  int* living_ = nullptr;
};

// Creates a projection that bears the loader's name and its argument count as datum name, or none.
class NamedLoader : public TTableProjLoader {
 public:
  NamedLoader(const wchar_t* name, bool works) : TTableProjLoader(name), works_(works) {}
  TTableProj* Create(int argc, const wchar_t** argv) override {
    return works_ ? new TTableProj(nullptr, nullptr, GetName(), nullptr, argc ? argv[0] : nullptr)
                  : nullptr;
  }

 private:
  bool works_;
};

// Made from its name alone.
class PlainLoader : public TTableProjLoader {
 public:
  using TTableProjLoader::TTableProjLoader;
  TTableProj* Create(int, const wchar_t**) override { return nullptr; }
};
static_assert(std::is_convertible_v<CZelStringT<wchar_t>, PlainLoader>);

TEST(TableProj, WithoutMathematicsConvertsNothing) {
  TTableProj proj;
  double x = 1, y = 2;
  EXPECT_FALSE(proj.Forward(x, y));
  EXPECT_FALSE(proj.Inverse(x, y));
  EXPECT_EQ(x, 1);
  EXPECT_EQ(y, 2);
  float grid[1];
  TUTMProj utm;
  proj.SetDataN(grid);
  proj.SetDataE(grid);
  proj.SetGeoProj(&utm);
  EXPECT_EQ(proj.GetDataN(), nullptr);
  EXPECT_EQ(proj.GetDataE(), nullptr);
  EXPECT_EQ(proj.GetGeoProj(), nullptr);
  EXPECT_EQ(proj.GetID(), nullptr);
  EXPECT_EQ(proj.GetDatumName(), nullptr);
}

TEST(TableProj, HandsGridsToItsMathematicsAndConvertsByIt) {
  float n[1], e[1], other[1];
  TUTMProj utm;
  TTableProj proj(n, e, L"id", new SwapMath(other, other, 3, 4, &utm), L"datum");
  EXPECT_EQ(proj.GetDataN(), n);
  EXPECT_EQ(proj.GetDataE(), e);
  EXPECT_EQ(proj.GetGeoProj(), &utm);
  EXPECT_EQ(proj.GetTableProjMath()->FirstSize(), 3);
  EXPECT_EQ(proj.GetTableProjMath()->SecondSize(), 4);
  proj.SetDataE(other);
  EXPECT_EQ(proj.GetTableProjMath()->GetDataE(), other);
  double x = 1, y = 2;
  EXPECT_TRUE(proj.Forward(x, y));
  EXPECT_EQ(x, 2);
  EXPECT_FALSE(proj.Inverse(x, y));
}

TEST(TableProj, OwnsItsMathematics) {
  int living = 0;
  {
    TTableProj proj(nullptr, nullptr, nullptr, new SwapMath(living), nullptr);
    proj.SetTableProjMath(proj.GetTableProjMath());
    EXPECT_EQ(living, 1);
    proj.SetTableProjMath(new SwapMath(living));
    EXPECT_EQ(living, 1);
    proj.SetTableProjMath(nullptr);
    EXPECT_EQ(living, 0);
    proj.SetTableProjMath(new SwapMath(living));
  }
  EXPECT_EQ(living, 0);
  static_assert(!std::is_copy_constructible_v<TTableProj> &&
                !std::is_copy_assignable_v<TTableProj>);
}

TEST(TableProj, OwnsCopiesOfItsTexts) {
  wchar_t text[] = L"alpha";
  TTableProj proj(nullptr, nullptr, text, nullptr, text);
  text[0] = L'x';
  EXPECT_STREQ(proj.GetID(), L"alpha");
  EXPECT_STREQ(proj.GetDatumName(), L"alpha");
  proj.SetID(proj.GetID() + 2);  // from inside the stored text
  EXPECT_STREQ(proj.GetID(), L"pha");
  proj.SetDatumName(nullptr);
  EXPECT_EQ(proj.GetDatumName(), nullptr);
}

TEST(TableProj, KeepsLooseAngleLimitsAndRefusesEveryGridPair) {
  constexpr double kLat = 3.141592653589793, kLon = 12.566370614359172;
  TTableProj proj;
  EXPECT_TRUE(proj.IsAngleCoordValid(kLat, -kLon));
  EXPECT_FALSE(proj.IsAngleCoordValid(std::nextafter(-kLat, -4), 0));
  EXPECT_FALSE(proj.IsAngleCoordValid(0, std::nextafter(kLon, 13)));
  EXPECT_FALSE(proj.IsAngleCoordValid(std::numeric_limits<double>::quiet_NaN(), 0));
  EXPECT_FALSE(proj.IsGridCoordValid(0, 0));
  EXPECT_EQ(proj.GetNEDir(), 0x21);
}

TEST(TableProjBounds, AreStrictAndReadInConstructorOrder) {
  TTableProjBounds bounds(1, 2, 3, 4);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(bounds[i], i + 1);
  EXPECT_TRUE(bounds.Inside(2, 3));
  for (const auto& [x, y] : {std::pair{1.0, 3.0}, {3.0, 3.0}, {2.0, 2.0}, {2.0, 4.0}})
    EXPECT_FALSE(bounds.Inside(x, y)) << x << ' ' << y;
  EXPECT_FALSE(bounds.Inside(std::numeric_limits<double>::quiet_NaN(), 3));
  static_cast<double*>(bounds)[0] = 2.5;
  EXPECT_FALSE(bounds.Inside(2, 3));
  EXPECT_FALSE(TTableProjBounds().Inside(0, 0));
}

TEST(TableProjMath, CopiesEveryField) {
  float n[1], e[1];
  TUTMProj utm;
  SwapMath math(n, e, 3, 4, &utm);
  math.AngleBounds() = {1, 2, 3, 4};
  math.GridBounds() = {5, 6, 7, 8};
  const SwapMath copy(math);
  SwapMath assigned;
  EXPECT_EQ(assigned.GetDataN(), nullptr);
  EXPECT_EQ(assigned.AngleBounds()[3], 0);
  assigned = math;
  for (const SwapMath* m : {&copy, static_cast<const SwapMath*>(&assigned)}) {
    EXPECT_EQ(m->GetDataN(), n);
    EXPECT_EQ(m->GetDataE(), e);
    EXPECT_EQ(m->GetGeoProj(), &utm);
    EXPECT_EQ(m->FirstSize(), 3);
    EXPECT_EQ(m->SecondSize(), 4);
    EXPECT_EQ(m->AngleBounds()[0], 1);
    EXPECT_EQ(m->GridBounds()[3], 8);
  }
}

TEST(TableProjRegistry, FindsTheFirstOfANameAndForgetsALoaderAltogether) {
  ASSERT_EQ(TTableProj::Size(), 0);
  NamedLoader a(L"a", true), b(L"b", true), broken(L"broken", false);
  EXPECT_EQ(TTableProj::Size(), 0) << "a loader registers only when told to";
  TTableProj::RegisterTableProjLoader(L"GRID", &a);
  TTableProj::RegisterTableProjLoader(L"GRID", &b);
  TTableProj::RegisterTableProjLoader(L"OTHER", &a);
  TTableProj::RegisterTableProjLoader(broken.GetName(), &broken);
  EXPECT_EQ(TTableProj::Size(), 4);

  const wchar_t* arguments[] = {L"argument"};
  TTableProj* out = nullptr;
  ASSERT_EQ(TTableProj::LoadTableProj(out, L"GRID", 1, arguments), 0);
  EXPECT_STREQ(out->GetID(), L"a");
  EXPECT_STREQ(out->GetDatumName(), L"argument");
  const std::unique_ptr<TTableProj> loaded(out);

  EXPECT_EQ(TTableProj::LoadTableProj(out, L"grid", 0, nullptr), 1);
  EXPECT_EQ(out, loaded.get()) << "an unknown name leaves the pointer";
  EXPECT_EQ(TTableProj::LoadTableProj(out, L"broken", 0, nullptr), 1);
  EXPECT_EQ(out, nullptr);

  const std::unique_ptr<TTableProj> second(TTableProj::GetAt(1));
  EXPECT_STREQ(second->GetID(), L"b");
  EXPECT_EQ(second->GetDatumName(), nullptr);
  EXPECT_EQ(TTableProj::GetAt(3), nullptr);

  TTableProj::UnRegisterTableProjLoader(&a);
  EXPECT_EQ(TTableProj::Size(), 2);
  EXPECT_EQ(TTableProj::LoadTableProj(out, L"OTHER", 0, nullptr), 1);
}

TEST(TableProjRegistry, ForgetsADestroyedLoaderAndRefusesNone) {
  const int before = TTableProj::Size();
  {
    NamedLoader passing(L"passing", true);
    TTableProj::RegisterTableProjLoader(L"PASSING", &passing);
    EXPECT_EQ(TTableProj::Size(), before + 1);
  }
  TTableProj::RegisterTableProjLoader(L"NONE", nullptr);
  EXPECT_EQ(TTableProj::Size(), before);
  TTableProj* out = nullptr;
  EXPECT_EQ(TTableProj::LoadTableProj(out, L"NONE", 0, nullptr), 1);
}

TEST(TableProjRegistry, AnEntryThatDoesNotExistThrows) {
  for (const int i : {-1, TTableProj::Size(), std::numeric_limits<int>::max()}) {
    try {
      TTableProj::GetAt(i);
      FAIL() << "no exception for " << i;
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "invalid vector<T> subscript");
    }
  }
}

}  // namespace
}  // namespace zel_cs::geomath
