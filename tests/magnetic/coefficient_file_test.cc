#include "geomath/magnetic/coefficient_file.h"

#include <gtest/gtest.h>

#include "tests/magnetic/coefficient_text.h"
#include "tests/support/reference_data.h"

using namespace zel_cs::geomath;

namespace {

TEST(CoefficientFile, ReadsHeaderAndRows) {
  const auto model = ParseCoefficients(CofText());
  ASSERT_TRUE(model);
  EXPECT_EQ(model->modelName, "TEST-1");
  EXPECT_EQ(model->epoch, 2020);
  EXPECT_EQ(model->coefficientFileEndDate, 2025);
  EXPECT_EQ(model->editionDate, 2019 + 343.0 / 365);
  EXPECT_EQ(model->nMax, 12);
  EXPECT_EQ(model->nMaxSecVar, 12);
  const auto builtIn = Wmm2010Model();
  EXPECT_EQ(model->g, builtIn->g);
  EXPECT_EQ(model->h, builtIn->h);
  EXPECT_EQ(model->gDot, builtIn->gDot);
  EXPECT_EQ(model->hDot, builtIn->hDot);
}

TEST(CoefficientFile, BuiltInTablesAreThePublishedFiles) {
  const auto models = BuiltInMagneticModels();
  ASSERT_EQ(models.size(), 4u);
  for (const WMMtype_MagneticModel& builtIn : models) {
    const std::string name = "WMM" + builtIn.modelName.substr(4) + ".COF";
    REQUIRE_REFERENCE_FILE(path, "wmm/" + name);
    SCOPED_TRACE(name);
    const auto model = ReadCoefficientFile(path.string().c_str());
    ASSERT_TRUE(model);
    EXPECT_EQ(model->modelName, builtIn.modelName);
    EXPECT_EQ(model->epoch, builtIn.epoch);
    EXPECT_EQ(model->coefficientFileEndDate, builtIn.coefficientFileEndDate);
    EXPECT_EQ(model->editionDate, builtIn.editionDate);
    EXPECT_EQ(model->g, builtIn.g);
    EXPECT_EQ(model->h, builtIn.h);
    EXPECT_EQ(model->gDot, builtIn.gDot);
    EXPECT_EQ(model->hDot, builtIn.hDot);
  }
}

TEST(CoefficientFile, AnyDegree) {
  for (int degree = 1; degree <= 12; ++degree) {
    std::string text = kCofHeader;
    for (const auto& t : Wmm2010Terms())
      if (t.n <= degree) text += CofRow(t.n, t.m, t.g, t.h, t.gDot, t.hDot);
    const auto model = ParseCoefficients(text + "999999\n");
    ASSERT_TRUE(model) << degree;
    EXPECT_EQ(model->nMax, degree);
    EXPECT_EQ(model->g.size(), std::size_t(degree + 1) * std::size_t(degree + 2) / 2);
  }
}

const std::string kNines = "99999999999\n";

// What is no damage; every text holds just these terms.
TEST(CoefficientFile, FormsThatDoNotMatter) {
  const std::string texts[] = {
      kCofHeader + " 2 2 1 1 1 1\n2 0 0 0 0 0\n 2 1 3 4 5 6\n1 1 0 0 0 0\n 1 0 10 20 30 40\n",
      "\xEF\xBB\xBF" + kCofHeader +
          "1 0 10 20 30 40\r\n1 1 0 0 0 0\r\n2 0 0 0 0 0\r\n2 1 3 4 5 6\r\n2 2 1 1 1 1\r\n",
      "\n\r\n" + kCofHeader +
          "\t1 0 1e1 +20 30. 4D+1\n\n1 1 0 0 0 -0.0\n2 0 0 0 0 0\n2 1 3 4 5 6\n2 2 1 1 1 1\n",
  };
  for (const std::string& text : texts) {
    const auto model = ParseCoefficients(text + kNines + "1 0 7 7 7 7\n");
    ASSERT_TRUE(model) << text;
    EXPECT_EQ(model->g, (std::vector<double>{0, 10, 0, 0, 3, 1})) << text;
    EXPECT_EQ(model->h, (std::vector<double>{0, 20, 0, 0, 4, 1})) << text;
    EXPECT_EQ(model->gDot, (std::vector<double>{0, 30, 0, 0, 5, 1})) << text;
    EXPECT_EQ(model->hDot, (std::vector<double>{0, 40, 0, 0, 6, 1})) << text;
  }
}

// A file whose field would look right and be wrong.
TEST(CoefficientFile, RefusesDamageAndSaysWhere) {
  const std::string first = "1 0 10 20 30 40\n", whole = first + "1 1 1 2 3 4\n";
  const struct {
    std::string rows;
    long line;
    const char* reason;
  } cases[] = {
      {first + "1 1 -29351,8 2 3 4\n" + kNines, 3, "a decimal point"},
      {first + "1 1 1 2 3\n" + kNines, 3, "four numbers"},
      {first + "1 1 1 2 3 4 5\n" + kNines, 3, "four numbers"},
      {first + "1 1 1 x 3 4\n" + kNines, 3, "four numbers"},
      {first + "1 1 nan 2 3 4\n" + kNines, 3, "four numbers"},
      {first + "1 1 1e999 2 3 4\n" + kNines, 3, "four numbers"},
      {first + "1 2 1 2 3 4\n" + kNines, 3, "no term of degree 1 and order 2"},
      {first + "134 2 1 2 3 4\n" + kNines, 3, "no term of degree 134"},
      {first + "letters\n" + kNines, 3, "four numbers"},
      {whole, 3, "the line of nines"},
      {first + kNines, 0, "1 of the 2 terms up to degree 1"},
      {whole + first + kNines, 0, "given twice"},
      {kNines, 0, "no coefficients"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.rows);
    CoefficientFault fault;
    EXPECT_FALSE(ParseCoefficients(kCofHeader + c.rows, &fault));
    EXPECT_EQ(fault.line, c.line);
    EXPECT_NE(fault.reason.find(c.reason), std::string::npos) << fault.reason;
  }
  EXPECT_TRUE(ParseCoefficients(kCofHeader + whole + kNines));
}

// Cut behind any byte, a published file is whole only when nothing but what follows its first line
// of nines is lost.
TEST(CoefficientFile, RefusesEveryTruncation) {
  const std::string text = CofText();
  const std::size_t end = text.find("9999") + 4;
  for (std::size_t length = 0; length <= text.size(); ++length)
    ASSERT_EQ(ParseCoefficients(text.substr(0, length)) != nullptr, length >= end) << length;
}

TEST(CoefficientFile, HeaderForms) {
  const auto named = [](const std::string& header) {
    return ParseCoefficients(header + "\n1 0 1 2 3 4\n1 1 1 2 3 4\n9999\n");
  };
  EXPECT_EQ(named("2020")->modelName, "");
  EXPECT_EQ(named("2020 NAME")->editionDate, 0);
  EXPECT_EQ(named("2020 NAME 13/40/2019")->editionDate, 0);
  EXPECT_EQ(named("2020 " + std::string(5000, 'N'))->modelName.size(), kMaxModelName);
  EXPECT_FALSE(named("WMM-2020 2020.0"));
  EXPECT_FALSE(named("2020,0 WMM-2020"));
  EXPECT_FALSE(named(""));
  EXPECT_FALSE(named("inf NAME"));
}

TEST(CoefficientFile, SecondLayout) {
  std::string text =
      "%SHDF 16695 Geomagnetic Field Model Coefficient File\n"
      "%ModelName: TEST-2\n%ReleaseDate: 2019.5\n%ModelStartDate: 2020.0\n%ModelEndDate: 2023.5\n"
      "%IntStaticDeg: 2\n# n, m, Gnm, Hnm, SV-Gnm, SV-Hnm\n"
      "I,1,0,10,,30,\nI,1,1,,,,\nI,2,0,0\nI,2,1,3,4,5,6\nI,2,2,,,,\nE,1,0,9,9,9,9\n"
      "%ModelName: NEXT\nI,1,1,9,9,9,9\n";
  const auto model = ParseCoefficients(text);
  ASSERT_TRUE(model);
  EXPECT_EQ(model->modelName, "TEST-2");
  EXPECT_EQ(model->editionDate, 2019.5);
  EXPECT_EQ(model->epoch, 2020);
  EXPECT_EQ(model->coefficientFileEndDate, 2023.5);
  EXPECT_EQ(model->g, (std::vector<double>{0, 10, 0, 0, 3, 0}));
  EXPECT_EQ(model->h, (std::vector<double>{0, 0, 0, 0, 4, 0}));
  EXPECT_EQ(model->gDot, (std::vector<double>{0, 30, 0, 0, 5, 0}));
  EXPECT_FALSE(ParseCoefficients("%ModelName: NO-EPOCH\nI,1,0,1,2,3,4\nI,1,1,1,2,3,4\n"));
  EXPECT_FALSE(ParseCoefficients(text.substr(0, text.find("I,2,0"))));  // whole, to degree 1
}

TEST(CoefficientFile, FilesOnly) {
  EXPECT_FALSE(ReadCoefficientFile(nullptr));
  EXPECT_FALSE(ReadCoefficientFile(""));
  EXPECT_FALSE(ReadCoefficientFile("/dev/zero"));
  EXPECT_FALSE(ReadCoefficientFile(std::string(100000, 'x').c_str()));
  const TemporaryFile huge(CofText() + std::string(5 << 20, ' '));
  EXPECT_FALSE(ReadCoefficientFile(huge.Path()));
}

}  // namespace
