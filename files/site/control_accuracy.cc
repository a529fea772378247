// How good control points are. The JavaScript package, whose points come without, has no such columns
// and a form of its own of SiteSolution::TakeCovariances.

#include <fmt/format.h>

#include <cmath>

#include "files/site/site_solution.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/chain/chain_uncertainty.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

constexpr std::size_t kGlobalAccuracy = 6;  // of kAccuracyColumns, where they begin
constexpr std::size_t kPairs[][2] = {{0, 1}, {0, 2}, {1, 2}};  // of the correlations

}  // namespace

std::string AccuracyProblem(const ControlPoint& point) {
  for (std::size_t first : {std::size_t{0}, kGlobalAccuracy}) {
    const auto* const values = &point.accuracy[first];
    const auto* const names = kAccuracyColumns + first;
    for (std::size_t k = 0; k < 3; ++k) {
      if (values[k] && !(*values[k] > 0 && std::isfinite(*values[k])))
        return fmt::format("{}: a standard deviation is above 0", names[k]);
      const auto& correlation = values[3 + k];
      if (!correlation) continue;
      if (!(std::abs(*correlation) <= 1))
        return fmt::format("{}: a correlation lies between -1 and 1", names[3 + k]);
      if (!values[kPairs[k][0]] || !values[kPairs[k][1]])
        return fmt::format("{} wants {} and {}", names[3 + k], names[kPairs[k][0]],
                           names[kPairs[k][1]]);
    }
    if (values[0].has_value() != values[1].has_value())
      return fmt::format("{} and {} go together", names[0], names[1]);
    const double ne = values[3].value_or(0), nh = values[4].value_or(0), eh = values[5].value_or(0);
    constexpr double kRounding = 1e-9;
    if (!(1 + 2 * ne * nh * eh - ne * ne - nh * nh - eh * eh >= -kRounding))
      return fmt::format("{}, {} and {} contradict each other", names[3], names[4], names[5]);
  }
  return "";
}

PointCovariance CovarianceOf(const ControlPoint& point, bool global) {
  const auto* const values = &point.accuracy[global ? kGlobalAccuracy : 0];
  PointCovariance covariance;
  auto& c = covariance.of;
  for (std::size_t k = 0; k < 3; ++k) c[k][k] = values[k].value_or(0) * values[k].value_or(0);
  for (std::size_t k = 0; k < 3; ++k) {
    const auto [row, column] = kPairs[k];
    c[row][column] = c[column][row] =
        values[3 + k].value_or(0) * values[row].value_or(0) * values[column].value_or(0);
  }
  return covariance;
}

void SiteSolution::TakeCovariances(CoordinateChain& chain, const AxisPair& geographic,
                                   double date) {
  chain.SetProjection(solver_->GetBaseProjection());
  const ChainUncertainty uncertainty(chain);
  for (const ControlPoint& point : control_) {
    PointCovariance covariance = CovarianceOf(point, true);
    auto& c = covariance.of;
    const bool plane = c[0][0] > 0, height = c[2][2] > 0;
    if (HasPosition(point.given) && (plane || height)) {
      double b = point.given.globalN * geographic.northSign * kRadPerDeg;
      double l = point.given.globalE * geographic.eastSign * kRadPerDeg, h = point.given.globalH;
      if (const ChainResult result = uncertainty.ToLocal(b, l, h, c, CovarianceFrame::northEastUp,
                                                         CovarianceFrame::northEastUp, date);
          !result)
        throw UserError(fmt::format("point {}: {} cannot carry its covariance", point.name,
                                    ChainStepName(result.failedAt)));
      // A part that nothing is said of stays without: the ellipsoids' normals differ a little.
      for (int k = 0; k < 3; ++k)
        if (k == 2 ? !height : !plane)
          for (int other = 0; other < 3; ++other) c[k][other] = c[other][k] = 0;
    }
    gridCovariances_.push_back(covariance);
  }
}

}  // namespace geomath_files
