#include "geomath/simd/instruction_set.h"

#include <gtest/gtest.h>

using namespace zel_cs::geomath::simd;

TEST(InstructionSet, ForcingTheBaselineAndBack) {
  const InstructionSet best = ActiveInstructionSet();
  EXPECT_EQ(ForceInstructionSet(InstructionSet::baseline), best);
  EXPECT_EQ(ActiveInstructionSet(), InstructionSet::baseline);
  const auto chosen = Choose(
      +[] { return 1; }, +[] { return 2; });
  EXPECT_EQ(chosen(), 1);
  EXPECT_EQ(ForceInstructionSet(best), InstructionSet::baseline);
  EXPECT_EQ(ActiveInstructionSet(), best);
}
