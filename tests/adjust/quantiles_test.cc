#include "geomath/adjust/quantiles.h"

#include <gtest/gtest.h>

#include <cmath>

namespace zel_cs::geomath {
namespace {

constexpr double kRelative = 1e-11;

// mpmath, 40 digits.
TEST(Quantiles, AreThoseOfFortyDigits) {
  const auto near = [](double found, double wanted) {
    EXPECT_NEAR(found / wanted, 1, kRelative) << wanted;
  };
  near(StudentQuantile(0.975, 1), 12.706204736174705);
  near(StudentQuantile(0.975, 2), 4.3026527297494639);
  near(StudentQuantile(0.975, 7), 2.3646242515927853);
  near(StudentQuantile(0.9995, 3), 12.923978636687483);
  near(StudentQuantile(0.025, 98), -1.9844674545084818);
  near(StudentQuantile(0.6, 2.5), 0.28145951274854766);
  near(ChiSquareQuantile(0.95, 1), 3.841458820694126);
  near(ChiSquareQuantile(0.95, 2), 5.991464547107982);
  near(ChiSquareQuantile(0.999, 10), 29.588298445074419);
  near(ChiSquareQuantile(0.025, 40), 24.433039170807888);
  near(ChiSquareQuantile(0.5, 199), 198.33373183841685);
  near(FisherQuantile(0.95, 2, 2), 19.0);
  near(FisherQuantile(0.95, 1, 6), 5.9873776072737037);
  near(FisherQuantile(0.99, 2, 97), 4.8308925345419421);
  near(FisherQuantile(0.05, 3, 5), 0.11094524590339281);
  near(NormalQuantile(0.9995), 3.2905267314918948);
  near(NormalQuantile(0.025), -1.9599639845400542);
  near(TauCritical(0.05, 6, 2), 1.4140924032663344);
  near(TauCritical(0.05, 24, 20), 2.8295802813046917);
  near(TauCritical(0.001, 100, 96), 4.2316720955392148);
}

TEST(Quantiles, InvertTheirProbabilities) {
  for (const double f : {0.5, 1.0, 2.0, 9.0, 250.0})
    for (const double p : {1e-6, 0.01, 0.3, 0.5, 0.9, 0.9999}) {
      EXPECT_NEAR(StudentProbability(StudentQuantile(p, f), f), p, 1e-12) << f;
      EXPECT_NEAR(ChiSquareProbability(ChiSquareQuantile(p, f), f), p, 1e-12) << f;
      EXPECT_NEAR(FisherProbability(FisherQuantile(p, f, 3), f, 3), p, 1e-12) << f;
      EXPECT_NEAR(NormalProbability(NormalQuantile(p)), p, 1e-12);
    }
  EXPECT_EQ(TauCritical(0.05, 6, 1), 1);
  for (const double bad :
       {StudentQuantile(1.5, 3), StudentQuantile(0.5, 0), FisherQuantile(0, 1, 1),
        ChiSquareQuantile(0.5, -1), TauCritical(0.05, 4, 0)})
    EXPECT_TRUE(std::isnan(bad));
}

}  // namespace
}  // namespace zel_cs::geomath
