#include "geomath/platform/zel_string.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <set>

namespace {

TEST(ZelString, ComparesWithRegardToCase) {
  const CZelStringT<wchar_t> name(L"TMERC");
  EXPECT_EQ(name.Compare(L"TMERC"), 0);
  EXPECT_NE(name.Compare(L"tmerc"), 0);
  EXPECT_LT(name.Compare(L"UTM"), 0);
  EXPECT_GT(name.Compare(L"TM"), 0);
}

TEST(ZelString, TakesNullForEmpty) {
  const CZelStringT<wchar_t> none(nullptr);
  EXPECT_EQ(none.Compare(L""), 0);
  EXPECT_EQ(none.Compare(nullptr), 0);
  EXPECT_EQ(CZelStringT<wchar_t>().Compare(L""), 0);
  EXPECT_GT(CZelStringT<wchar_t>(L"a").Compare(nullptr), 0);
}

TEST(ZelString, OperatorsCompareTheTextNotTheAddress) {
  const CZelStringT<wchar_t> name(L"TMERC"), same(L"TMERC"), later(L"UTM");
  const wchar_t text[] = L"TMERC";
  wchar_t writable[] = L"TMERC";
  EXPECT_TRUE(name == same && name == text && text == name && name == writable);
  EXPECT_FALSE(name != same || name != text || text != name);
  EXPECT_TRUE(name != later && name != L"tmerc" && name < later && L"UTM" > name);
  EXPECT_TRUE(name <= same && name >= text);
  EXPECT_TRUE(CZelStringT<wchar_t>() == nullptr);
  EXPECT_EQ((std::set<CZelStringT<wchar_t>>{name, same, later}).size(), 2u);
}

TEST(ZelString, CopiesItsText) {
  CZelStringT<wchar_t> first(L"RD");
  const CZelStringT<wchar_t> second = first;
  first = L"KROVAK";
  EXPECT_STREQ(second, L"RD");
  EXPECT_STREQ(first, L"KROVAK");
}

}  // namespace
