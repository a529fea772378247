#include "geomath/geoid/grid/kriging.h"

namespace zel_cs::geomath {
namespace {

// What FoldMirrored takes from the four numbers of an axis.
constexpr double kFold[4][4] = {{1, 0, 0, 1}, {0, 1, 1, 0}, {0, 1, -1, 0}, {1, 0, 0, -1}};

// Number i of symmetry s as a pattern on the nodes, row by row; its square sums to 4.
double Pattern(std::size_t s, std::size_t i, std::size_t node) {
  const std::size_t row = MirroredKriging::At(s / 2, i / 2),
                    column = MirroredKriging::At(s % 2, i % 2);
  return kFold[row][node / 4] * kFold[column][node % 4];
}

}  // namespace

// The patterns are orthogonal: P is the sum over them of patternᵢ·(patternᵢᵀ·P·patternⱼ)·patternⱼᵀ/16,
// and patterns of different symmetry meet nothing in P.
MirroredKriging::MirroredKriging(const OrdinaryKriging& kriging) : forms{}, mean{} {
  constexpr std::size_t kNodes = OrdinaryKriging::kNodes;
  constexpr double kSquare = 4;
  for (std::size_t i = 0; i < 4; ++i)
    for (std::size_t p = 0; p < kNodes; ++p) {
      mean[i] += Pattern(0, i, p) * kriging.Inverse(p, kNodes) / kSquare;
      for (std::size_t s = 0; s < 4; ++s)
        for (std::size_t j = 0; j < 4; ++j)
          for (std::size_t q = 0; q < kNodes; ++q)
            forms[s][i][j] +=
                Pattern(s, i, p) * kriging.Inverse(p, q) * Pattern(s, j, q) / (kSquare * kSquare);
    }
}

}  // namespace zel_cs::geomath
