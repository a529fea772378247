#include "geomath/proj/methods/kms_conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "geomath/proj/methods/kms_proj_tm.h"
#include "geomath/proj/methods/kms_trans_proj.h"
#include "tests/proj/methods/worked_example.h"

namespace zel_cs::geomath {
namespace {

using Steps = std::vector<std::pair<int, int>>;  // system and direction; system 0: preparation

Steps steps;
int failingSystem = -1;

// A shift of latitudes, and for system s the map (a, b) → (2a + s, b − s).
int Shift(double& lat, double&, int direction) {
  steps.emplace_back(0, direction);
  if (failingSystem == 0) return 5;
  lat += direction * 1e-3;
  return 0;
}

int Affine(double a, double b, double& outA, double& outB, int system, int direction) {
  steps.emplace_back(system, direction);
  if (failingSystem == system) return 7;
  outA = direction > 0 ? 2 * a + system : (a - system) / 2;
  outB = b - direction * system;
  return 0;
}

class KmsConversionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    steps.clear();
    failingSystem = -1;
    SetKmsConversion({&Shift, &Affine});
  }
  void TearDown() override { SetKmsConversion({}); }

  static constexpr double kPhi = 0.97, kLambda = 0.18;
  TDenmarkTMProj tm_{6378388, 297, 0.157, 0.9996, 0, 500000, 0};
  TKMSProjTM projTM_{6378388, 297, 0.157, 0.9996, 0, 500000, 0};
  TKMSTransProj trans_{6378388, 297, 0.157, 0.9996, 0, 500000, 0, 115};

  // Forward gives (north, east) exactly, by `forward`; the inverse returns, by the same steps
  // backwards in the other direction.
  void ExpectChain(TGeoProj& proj, double north, double east, const Steps& forward) {
    double b = kPhi, l = kLambda;
    ASSERT_TRUE(proj.Forward(b, l));
    EXPECT_EQ(b, north);
    EXPECT_EQ(l, east);
    EXPECT_EQ(steps, forward);
    steps.clear();
    ASSERT_TRUE(proj.Inverse(b, l));
    EXPECT_NEAR(b, kPhi, 1e-12);
    EXPECT_NEAR(l, kLambda, 1e-12);
    Steps backward;
    for (auto i = forward.rbegin(); i != forward.rend(); ++i)
      backward.emplace_back(i->first, -i->second);
    EXPECT_EQ(steps, backward);
    steps.clear();
  }
};

TEST_F(KmsConversionTest, ProjTMPreparesAndProjects) {
  double n = kPhi + 1e-3, e = kLambda;
  ASSERT_TRUE(tm_.Forward(n, e));
  ExpectChain(projTM_, n, e, {{0, 1}});
  projTM_.Mode(true);
  ExpectChain(projTM_, 2 * (kPhi + 1e-3) + 117, kLambda - 117, {{0, 1}, {117, 1}});
}

TEST_F(KmsConversionTest, BatchesGoThroughTheHostsFunctions) {
  for (TGeoProj* proj : {static_cast<TGeoProj*>(&projTM_), static_cast<TGeoProj*>(&trans_)}) {
    double n = kPhi, e = kLambda, b = kPhi, l = kLambda;
    ASSERT_TRUE(proj->Forward(n, e));
    ASSERT_EQ(proj->ForwardBatch(&b, &l, 1), 1u);
    EXPECT_EQ(b, n);
    EXPECT_EQ(l, e);
    ASSERT_TRUE(proj->Inverse(n, e));
    ASSERT_EQ(proj->InverseBatch(&b, &l, 1), 1u);
    EXPECT_EQ(b, n);
    EXPECT_EQ(l, e);
  }
}

// Refuses every fifth thousandth of a radian, and every fifth kilometre.
int ShiftSome(double& lat, double& lon, int direction) {
  return static_cast<int>(lat * 1e3) % 5 == 0 ? 1 : Shift(lat, lon, direction);
}
int AffineSome(double a, double b, double& outA, double& outB, int system, int direction) {
  const bool refused = std::abs(a) > 10 && static_cast<int>(b / 1e3) % 5 == 0;
  return refused ? 1 : Affine(a, b, outA, outB, system, direction);
}

// Blocks go through each step together: the bits and the failures of single points, among them those
// beyond the limit of the projection.
TEST_F(KmsConversionTest, BatchesAreTheSinglePoints) {
  SetKmsConversion({&ShiftSome, &AffineSome});
  TKMSTransProj own(trans_);
  own.SystemCode(98);
  TKMSProjTM direct(projTM_);
  direct.Mode(true);
  for (const TGeoProj* proj :
       {static_cast<const TGeoProj*>(&projTM_), static_cast<const TGeoProj*>(&direct),
        static_cast<const TGeoProj*>(&trans_), static_cast<const TGeoProj*>(&own)}) {
    std::vector<double> b, l;
    for (int i = 0; i < 700; ++i) {
      b.push_back(0.9 + 1e-4 * i);
      l.push_back(i % 50 == 0 ? 1.3 : 0.1 + 2e-4 * i);
    }
    for (const bool forward : {true, false}) {
      std::vector<double> first = b, second = l;
      if (forward)
        proj->ForwardBatch(first.data(), second.data(), first.size());
      else
        proj->InverseBatch(first.data(), second.data(), first.size());
      int failed = 0;
      for (std::size_t i = 0; i < b.size(); ++i) {
        const bool done = forward ? proj->ForwardPoint(b[i], l[i]) : proj->InversePoint(b[i], l[i]);
        failed += !done;
        EXPECT_EQ(std::isnan(first[i]), !done) << i;
        if (!done) continue;
        EXPECT_EQ(first[i], b[i]);
        EXPECT_EQ(second[i], l[i]);
      }
      EXPECT_GT(failed, 50);
      EXPECT_LT(failed, 650);
    }
  }
}

TEST_F(KmsConversionTest, TransGoesThroughTheIntermediateSystem) {
  double n = kPhi + 1e-3, e = kLambda;
  ASSERT_TRUE(tm_.Forward(n, e));
  ExpectChain(trans_, 2 * ((n - 117) / 2) + 115, e + 117 - 115, {{0, 1}, {117, -1}, {115, 1}});
}

TEST_F(KmsConversionTest, TransIntoItsOwnSystemSkipsThePreparation) {
  double n = kPhi, e = kLambda;
  ASSERT_TRUE(tm_.Forward(n, e));
  trans_.SystemCode(98);
  ExpectChain(trans_, 2 * n + 98, e - 98, {{98, 1}});
}

TEST_F(KmsConversionTest, EveryFailingStepFailsBothWays) {
  projTM_.Mode(true);
  for (const auto& [proj, systems] :
       {std::pair<TGeoProj*, std::vector<int>>{&projTM_, {0, 117}}, {&trans_, {0, 117, 115}}}) {
    for (int system : systems) {
      failingSystem = -1;
      double n = kPhi, e = kLambda, b = kPhi, l = kLambda;
      ASSERT_TRUE(proj->Forward(n, e));
      failingSystem = system;
      EXPECT_FALSE(proj->Forward(b, l)) << system;
      EXPECT_FALSE(proj->Inverse(n, e)) << system;
    }
  }
}

// Each argument is restored alone, and the previous pair comes back.
TEST_F(KmsConversionTest, SetterExchangesAndRestores) {
  const KmsConversion previous = SetKmsConversion({nullptr, &Affine});
  EXPECT_EQ(previous.prepare, &Shift);
  EXPECT_EQ(previous.convert, &Affine);
  double lat = 0.5, lon = 0.25, outA = 1, outB = 2;
  EXPECT_EQ(KmsPrepare(lat, lon, 1), 0);
  EXPECT_EQ(lat, 0.5);
  SetKmsConversion({&Shift, nullptr});
  EXPECT_NE(KmsConvert(8, 9, outA, outB, 117, 1), 0);
  EXPECT_EQ(outA, 1);
  EXPECT_EQ(outB, 2);
  EXPECT_EQ(KmsConvert(8, 9, outA, outB, 98, -1), 0);
  EXPECT_EQ(outA, 8);
  EXPECT_EQ(outB, 9);
}

TEST_F(KmsConversionTest, DefaultsAreThePlainProjection) {
  SetKmsConversion({});
  double n = kPhi, e = kLambda;
  ASSERT_TRUE(tm_.Forward(n, e));
  TKMSTransProj own(trans_);
  own.SystemCode(98);
  for (TGeoProj* proj : {static_cast<TGeoProj*>(&projTM_), static_cast<TGeoProj*>(&own)}) {
    double b = kPhi, l = kLambda;
    ASSERT_TRUE(proj->Forward(b, l));
    EXPECT_EQ(b, n);
    EXPECT_EQ(l, e);
    EXPECT_EQ(proj->GetType(), ProjTypeDenmarkTM);
    EXPECT_EQ(proj->GetQParam(), 5);
    // Derivatives in columns are those of the plain projection; a host's functions have none.
    double ours[4][2] = {{kPhi, kPhi + 0.01}, {kLambda, kLambda + 0.01}}, plain[4][2];
    std::copy_n(&ours[0][0], 4, &plain[0][0]);
    EXPECT_EQ(proj->ForwardDerivativesBatch(ours[0], ours[1], ours[2], ours[3], 2), 2u);
    EXPECT_EQ(tm_.ForwardDerivativesBatch(plain[0], plain[1], plain[2], plain[3], 2), 2u);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(ours[i / 2][i % 2], plain[i / 2][i % 2]);
    SetKmsConversion({&Shift, &Affine});
    ours[0][0] = kPhi;
    ours[1][0] = kLambda;
    EXPECT_EQ(proj->ForwardDerivativesBatch(ours[0], ours[1], ours[2], ours[3], 1), 0u);
    SetKmsConversion({});
  }
  projTM_.Mode(true);
  double b = kPhi, l = kLambda;
  EXPECT_FALSE(projTM_.Forward(b, l));
  EXPECT_FALSE(trans_.Forward(b = kPhi, l = kLambda));
}

TEST_F(KmsConversionTest, KeepsTheNorthWestDirectionCode) {
  EXPECT_EQ(trans_.GetNEDir(), 0x81);
  EXPECT_EQ(projTM_.GetNEDir(), 0x21);
  double n = 1, e = 2;
  trans_.RotateNE(0, n, e);  // the converter delivers the pair; nothing is turned
  EXPECT_EQ(e, 2);
  trans_.SetNEAxes(L"EN");
  EXPECT_EQ(trans_.GetNEDir(), 0x81);
  trans_.RotateNE(0, n, e);
  EXPECT_EQ(n, 2);
  TKMSTransProj copy;
  ASSERT_TRUE(copy.CopyGeoProj(&trans_));
  EXPECT_EQ(copy.GetNEDir(), 0x81);
  tm_.SetNEAxes(L"EN");
  EXPECT_EQ(tm_.GetNEDir(), 0x12);
}

}  // namespace
}  // namespace zel_cs::geomath
