#include "geomath/simd/instruction_set.h"

#include <gtest/gtest.h>

#include <type_traits>

using namespace zel_cs::geomath::simd;

TEST(InstructionSet, ForcingEachSetAndBack) {
  const InstructionSet best = ActiveInstructionSet();
  const auto nameFor = [](auto target) -> const char* {
    if (std::is_same_v<decltype(target), Avx512>) return "avx512";
    return std::is_same_v<decltype(target), Avx2> ? "avx2" : "baseline";
  };
  EXPECT_EQ(ForceInstructionSet(InstructionSet::baseline), best);
  EXPECT_EQ(ActiveInstructionSet(), InstructionSet::baseline);
  EXPECT_STREQ(ForActiveSet(nameFor), "baseline");

  // A set that the machine lacks is the best that it has.
  EXPECT_EQ(ForceInstructionSet(InstructionSet::avx512), InstructionSet::baseline);
  EXPECT_EQ(ActiveInstructionSet(), best);
}
