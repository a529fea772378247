#include "geomath/base/axis_rotation.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

namespace zel_cs::geomath {
namespace {

struct Probe : AxisRotation {
  using AxisRotation::AxisRotation;
  using AxisRotation::operator=;
  unsigned Code() const { return direction_; }
};

static_assert(std::is_convertible_v<const wchar_t*, AxisRotation>);

struct Case {
  const wchar_t* axes;
  double first, second;  // what the caller sees of 2 north, 3 east
  unsigned code;
};

constexpr Case kCases[] = {
    {L"NE", 2, 3, 0x21},   {L"WN", -3, 2, 0x18},  {L"WS", -3, -2, 0x48}, {L"SW", -2, -3, 0x84},
    {L"SE", -2, 3, 0x24},  {L"EN", 3, 2, 0x12},   {L"ES", 3, -2, 0x42},  {L"NW", 2, -3, 0x81},
    {L"XY", 2, 3, 0x21},   {L"", 2, 3, 0x21},     {L"ENE", 2, 3, 0x21},  {L"en", 3, 2, 0x12},
    {nullptr, 2, 3, 0x21}, {L"Ws", -3, -2, 0x48},
};

void ExpectTurns(const AxisRotation& axes, double first, double second) {
  double a = 2, b = 3;
  axes.Rotate(0, a, b);
  EXPECT_EQ(a, first);
  EXPECT_EQ(b, second);
  for (const unsigned toInternal : {1u, 7u}) {
    a = first;
    b = second;
    axes.Rotate(toInternal, a, b);
    EXPECT_EQ(a, 2);
    EXPECT_EQ(b, 3);
  }
}

TEST(AxisRotation, TurnsEveryAxesStringBothWays) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.axes ? testing::PrintToString(std::wstring(c.axes)) : "null");
    Probe axes(c.axes);
    ExpectTurns(axes, c.first, c.second);
    EXPECT_EQ(axes.Code(), c.code);
    if (c.axes && *c.axes)
      EXPECT_STREQ(axes.GetAxes(), c.axes);
    else
      EXPECT_EQ(axes.GetAxes(), nullptr);

    Probe later(L"WN");
    later.SetAxes(c.axes);
    ExpectTurns(later, c.first, c.second);
    EXPECT_EQ(later.Code(), c.code);
  }
}

TEST(AxisRotation, LeavesEveryBitWithoutRotation) {
  double a = -0.0, b = std::bit_cast<double>(0x7ff4000000000001);  // a signalling NaN
  AxisRotation().Rotate(0, a, b);
  AxisRotation(L"NE").Rotate(1, a, b);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(a), 0x8000000000000000u);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(b), 0x7ff4000000000001u);
}

TEST(AxisRotation, KeepsTheTextWhenSetToNothingOrToItself) {
  Probe axes(L"EN");
  for (int how = 0; how < 3; ++how) {
    axes.SetAxes(L"en");
    axes.SetAxes(how == 0 ? nullptr : how == 1 ? L"" : axes.GetAxes());
    EXPECT_STREQ(axes.GetAxes(), L"en");
    EXPECT_EQ(axes.Code(), 0x21u);
    ExpectTurns(axes, 2, 3);
  }
}

TEST(AxisRotation, TakesAPointerIntoItsStoredText) {
  Probe axes(L"-WS");
  axes.SetAxes(axes.GetAxes() + 1);
  EXPECT_STREQ(axes.GetAxes(), L"WS");
  ExpectTurns(axes, -3, -2);
}

TEST(AxisRotation, CopiesTextMatrixAndCode) {
  auto source = std::make_unique<Probe>(L"SW");
  const Probe copy(*source);
  EXPECT_NE(copy.GetAxes(), source->GetAxes());

  Probe reset(L"SW");
  reset.SetAxes(nullptr);
  const Probe copyOfReset(reset);
  source.reset();

  EXPECT_STREQ(copy.GetAxes(), L"SW");
  EXPECT_EQ(copy.Code(), 0x84u);
  ExpectTurns(copy, -2, -3);
  EXPECT_STREQ(copyOfReset.GetAxes(), L"SW");
  EXPECT_EQ(copyOfReset.Code(), 0x21u);
  ExpectTurns(copyOfReset, 2, 3);
}

TEST(AxisRotation, KeepsAssignmentGoingThroughTheText) {
  Probe reset(L"SW");
  reset.SetAxes(nullptr);
  Probe target(L"EN");
  target = reset;  // its matrix is the identity, its text is not
  EXPECT_STREQ(target.GetAxes(), L"SW");
  EXPECT_EQ(target.Code(), 0x84u);
  ExpectTurns(target, -2, -3);
}

TEST(AxisRotation, KeepsTheTargetsTextWhenTheSourceHasNone) {
  Probe target(L"EN");
  target = Probe();
  EXPECT_STREQ(target.GetAxes(), L"EN");
  EXPECT_EQ(target.Code(), 0x21u);
  ExpectTurns(target, 2, 3);
}

TEST(AxisRotation, KeepsSelfAssignmentAsAReset) {
  Probe axes(L"ES");
  const Probe& same = axes;
  axes = same;
  EXPECT_STREQ(axes.GetAxes(), L"ES");
  EXPECT_EQ(axes.Code(), 0x21u);
}

TEST(AxisRotation, TakesOverAxesAsTheyAre) {
  Probe reset(L"SW");
  reset.SetAxes(nullptr);
  Probe target(L"EN");
  target.CopyAxes(reset);
  EXPECT_STREQ(target.GetAxes(), L"SW");
  EXPECT_EQ(target.Code(), 0x21u);
  target.CopyAxes(Probe());
  EXPECT_EQ(target.GetAxes(), nullptr);
}

}  // namespace
}  // namespace zel_cs::geomath
