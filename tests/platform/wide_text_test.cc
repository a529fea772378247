#include "geomath/platform/wide_text.h"

#include <gtest/gtest.h>

#include <cwchar>

namespace zel_cs::geomath {
namespace {

TEST(WideText, CopiesOwnTheirText) {
  WideText first(L"ES");
  WideText second(first);
  EXPECT_STREQ(second.Get(), L"ES");
  EXPECT_NE(second.Get(), first.Get());

  first.Get()[0] = L'W';
  EXPECT_STREQ(second.Get(), L"ES");

  second = first;
  EXPECT_STREQ(second.Get(), L"WS");
  EXPECT_NE(second.Get(), first.Get());
}

TEST(WideText, TakesAPointerIntoItsOwnText) {
  WideText text(L"north-east");
  text.Set(text.Get() + 6);
  EXPECT_STREQ(text.Get(), L"east");

  const WideText& same = text;
  text = same;
  EXPECT_STREQ(text.Get(), L"east");
}

TEST(WideText, NullStaysApartFromEmpty) {
  WideText text;
  EXPECT_EQ(text.Get(), nullptr);
  text.Set(L"");
  EXPECT_STREQ(text.Get(), L"");
  text.Set(nullptr);
  EXPECT_EQ(text.Get(), nullptr);
  EXPECT_EQ(WideText(text).Get(), nullptr);
  EXPECT_EQ(DuplicateWide(nullptr), nullptr);
  FreeWide(nullptr);
}

TEST(CompareWideNoCase, OrdersWithoutRegardToCase) {
  EXPECT_EQ(CompareWideNoCase(L"eN", L"En"), 0);
  EXPECT_EQ(CompareWideNoCase(L"", L""), 0);
  EXPECT_LT(CompareWideNoCase(L"EN", L"ens"), 0);
  EXPECT_GT(CompareWideNoCase(L"ENS", L"en"), 0);
  EXPECT_LT(CompareWideNoCase(L"a", L"B"), 0);
  EXPECT_GT(CompareWideNoCase(L"Z", L"y"), 0);
}

}  // namespace
}  // namespace zel_cs::geomath
