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
  EXPECT_EQ(CountMissingTerms(*model), 0);
  const auto builtIn = Wmm2010Model();
  EXPECT_EQ(model->g, builtIn->g);
  EXPECT_EQ(model->h, builtIn->h);
  EXPECT_EQ(model->gDot, builtIn->gDot);
  EXPECT_EQ(model->hDot, builtIn->hDot);
}

TEST(CoefficientFile, BuiltInTableIsThePublishedFile) {
  REQUIRE_REFERENCE_FILE(path, "wmm/WMM2010.COF");
  const auto model = ReadCoefficientFile(path.string().c_str());
  const auto builtIn = Wmm2010Model();
  ASSERT_TRUE(model);
  EXPECT_EQ(model->modelName, builtIn->modelName);
  EXPECT_EQ(model->epoch, builtIn->epoch);
  EXPECT_EQ(model->coefficientFileEndDate, builtIn->coefficientFileEndDate);
  EXPECT_EQ(model->g, builtIn->g);
  EXPECT_EQ(model->h, builtIn->h);
  EXPECT_EQ(model->gDot, builtIn->gDot);
  EXPECT_EQ(model->hDot, builtIn->hDot);
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
    EXPECT_EQ(CountMissingTerms(*model), 0);
  }
}

// Everything that the published reader shrugs at; the text then holds just the terms below.
TEST(CoefficientFile, TolerantForms) {
  const std::string rows[] = {
      " 2 1 3 4 5 6\n 1 0 10 20 30 40\n",             // any order, no line of nines
      "1 0 10 20 30 40\r\n2 1 3 4 5 6\r\n",           // carriage returns
      "\t1 0 1e1 +20 30. 40 comment\n\n2 1 3 4 5 6",  // spacing, signs, blank line, no end
      "1 0 10 20 30 40\n2 3 9 9 9 9\n2 -1 9 9 9 9\n0 0 9 9 9 9\n-2 -2 9 9 9 9\n2 1 3 4 5 6\n",
      "1 0 10 20 30 40\nletters\n2 2 1 x 3 4\n2 1 3 4 5 6\n2 0 1 2 3\n2 2 nan 1 1 1\n",
      "1 0 10 20 30 40\n2 1 3 4 5 6\n9999999999\n1 0 7 7 7 7\n",  // nothing counts after the nines
      "1 0 1 1 1 1\n2 1 3 4 5 6\n1 0 10 20 30 40\n",  // the last of two rows of one term
  };
  for (const std::string& text : rows) {
    const auto model = ParseCoefficients(kCofHeader + text);
    ASSERT_TRUE(model) << text;
    EXPECT_EQ(model->g, (std::vector<double>{0, 10, 0, 0, 3, 0})) << text;
    EXPECT_EQ(model->h, (std::vector<double>{0, 20, 0, 0, 4, 0})) << text;
    EXPECT_EQ(model->gDot, (std::vector<double>{0, 30, 0, 0, 5, 0})) << text;
    EXPECT_EQ(model->hDot, (std::vector<double>{0, 40, 0, 0, 6, 0})) << text;
    EXPECT_EQ(CountMissingTerms(*model), 3) << text;
  }
}

TEST(CoefficientFile, HeaderForms) {
  const auto named = [](const std::string& header) {
    return ParseCoefficients(header + "\n1 0 1 2 3 4\n");
  };
  EXPECT_EQ(named("2020")->modelName, "");
  EXPECT_EQ(named("2020 NAME")->editionDate, 0);
  EXPECT_EQ(named("2020 NAME 13/40/2019")->editionDate, 0);
  EXPECT_EQ(named("2020 " + std::string(5000, 'N'))->modelName.size(), kMaxModelName);
  EXPECT_FALSE(named("WMM-2020 2020.0"));
  EXPECT_FALSE(named(""));
  EXPECT_FALSE(named("inf NAME"));
}

TEST(CoefficientFile, SecondLayout) {
  std::string text =
      "%SHDF 16695 Geomagnetic Field Model Coefficient File\n"
      "%ModelName: TEST-2\n%ReleaseDate: 2019.5\n%ModelStartDate: 2020.0\n%ModelEndDate: 2023.5\n"
      "%IntStaticDeg: 2\n# n, m, Gnm, Hnm, SV-Gnm, SV-Hnm\n"
      "I,1,0,10,,30,\nI,2,1,3,4,5,6\nE,1,0,9,9,9,9\n%ModelName: NEXT\nI,1,1,9,9,9,9\n";
  const auto model = ParseCoefficients(text);
  ASSERT_TRUE(model);
  EXPECT_EQ(model->modelName, "TEST-2");
  EXPECT_EQ(model->editionDate, 2019.5);
  EXPECT_EQ(model->epoch, 2020);
  EXPECT_EQ(model->coefficientFileEndDate, 2023.5);
  EXPECT_EQ(model->g, (std::vector<double>{0, 10, 0, 0, 3, 0}));
  EXPECT_EQ(model->h, (std::vector<double>{0, 0, 0, 0, 4, 0}));
  EXPECT_EQ(model->gDot, (std::vector<double>{0, 30, 0, 0, 5, 0}));
  EXPECT_FALSE(ParseCoefficients("%ModelName: NO-EPOCH\nI,1,0,1,2,3,4\n"));
}

TEST(CoefficientFile, HighestDegree) {
  const auto row = [](long n) { return std::to_string(n) + " 0 1 1 1 1\n"; };
  EXPECT_TRUE(ParseCoefficients(kCofHeader + row(kMaxMagneticDegree)));
  EXPECT_FALSE(ParseCoefficients(kCofHeader + row(1) + row(kMaxMagneticDegree + 1)));
  EXPECT_FALSE(ParseCoefficients(kCofHeader + row(1) + row(2147483647)));
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
