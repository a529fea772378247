#include "geomath/base/grid_rgn.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(GridRgn, CountsTheRoundedStepsAndOne) {
  struct Case {
    double extent, step;
    int nodes;
  };
  constexpr Case kCases[] = {
      {1.0, 0.25, 5}, {0.99, 0.25, 5}, {0.85, 0.25, 4}, {0, 0.25, 1},
      {1.0, 0, 0},    {-1, -0.25, 5},  {-1, 0.25, -2},  {-0.5, 1, 1},
  };
  for (const Case& c : kCases) {
    const TGridRgn rows(TRectRgn(0, c.extent, 0, 7), c.step, 1);
    const TGridRgn columns(TRectRgn(0, 7, 0, c.extent), 1, c.step);
    EXPECT_EQ(rows.GetLatDim(), c.nodes) << c.extent << '/' << c.step;
    EXPECT_EQ(columns.GetLonDim(), c.nodes) << c.extent << '/' << c.step;
    EXPECT_EQ(rows.GetFullDim(), c.nodes * 8);
  }
}

TEST(GridRgn, HasNoNodesWhenTheCountLeavesTheIntegers) {
  EXPECT_EQ(TGridRgn(TRectRgn(0, 1, 0, 1), 1e-12, 0.5).GetLatDim(), 0);
  EXPECT_EQ(TGridRgn(TRectRgn(0, -1, 0, 1), 1e-12, 0.5).GetLatDim(), 0);
  EXPECT_EQ(TGridRgn(TRectRgn(0, kInf, 0, 1), 1, 0.5).GetLatDim(), 0);
  EXPECT_EQ(TGridRgn(TRectRgn(0, kInf, 0, 1), kInf, 0.5).GetFullDim(), 0);
  EXPECT_EQ(TGridRgn(TRectRgn(0, 1, 0, 1), 1e-5, 1e-5).GetFullDim(), 0);  // 100001² nodes
  EXPECT_EQ(TGridRgn().GetFullDim(), 0);
}

}  // namespace
