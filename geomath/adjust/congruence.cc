#include "geomath/adjust/congruence.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "geomath/adjust/quantiles.h"
#include "geomath/base/matrix3.h"

namespace zel_cs::geomath {
namespace {

constexpr int kCoordinates = 3;

Matrix3 Of(const double (&covariance)[3][3]) {
  Matrix3 matrix;
  std::copy_n(&covariance[0][0], 9, &matrix.m[0][0]);
  return matrix;
}

// Of one point against what the stable ones make of it.
struct Discrepancy {
  double shift[3];
  double chiSquare;
};

Discrepancy Compare(const EpochPoint& point, const double (&expected)[3],
                    const Matrix3& covariance) {
  Discrepancy found{};
  const Matrix3 weight = covariance.Inverse();
  for (int r = 0; r < kCoordinates; ++r) found.shift[r] = point.second[r] - expected[r];
  for (int r = 0; r < kCoordinates; ++r)
    for (int c = 0; c < kCoordinates; ++c)
      found.chiSquare += found.shift[r] * weight.m[r][c] * found.shift[c];
  return found;
}

// The first epoch carried to the second by the stable points, without one of them where that is asked.
class Epochs {
 public:
  Epochs(const std::vector<EpochPoint>& points, SiteModel model) : points_(points), model_(model) {}

  bool Hold(const std::vector<bool>& stable) {
    adjustment_.reset();
    if (model_ == SiteModel::none) return true;
    std::vector<AdjustmentPoint> control;
    for (std::size_t i = 0; i < points_.size(); ++i) {
      if (!stable[i]) continue;
      AdjustmentPoint p;
      std::copy_n(points_[i].first, 3, p.grid);
      std::copy_n(points_[i].second, 3, p.local);
      std::copy_n(&points_[i].firstCovariance[0][0], 9, &p.gridCovariance[0][0]);
      std::copy_n(&points_[i].secondCovariance[0][0], 9, &p.localCovariance[0][0]);
      control.push_back(p);
    }
    AdjustmentOptions options;
    options.model = model_;
    options.heights = HeightModel::shift;
    options.sigmaKnown = true;
    adjustment_ = SiteAdjustment::Solve(control, options);
    return adjustment_.has_value();
  }

  // Of a point that did not take part.
  Discrepancy Against(std::size_t i) const {
    const EpochPoint& p = points_[i];
    const Matrix3 first = Of(p.firstCovariance);
    Matrix3 sum = Of(p.secondCovariance), turn = Matrix3::Identity();
    double expected[] = {p.first[0], p.first[1], p.first[2]};
    if (adjustment_) {
      const SitePrediction predicted = adjustment_->Predict(p.first);
      std::copy_n(predicted.local, 3, expected);
      for (int c = 0; c < kCoordinates; ++c) {  // by differences of a map that is all but linear
        constexpr double kStep = 1;
        double beside[] = {p.first[0], p.first[1], p.first[2]};
        beside[c] += kStep;
        const SitePrediction there = adjustment_->Predict(beside);
        for (int r = 0; r < kCoordinates; ++r)
          turn.m[r][c] = (there.local[r] - predicted.local[r]) / kStep;
      }
      for (int r = 0; r < kCoordinates; ++r)
        for (int c = 0; c < kCoordinates; ++c) sum.m[r][c] += predicted.covariance[r][c];
    }
    const Matrix3 carried = turn * first * turn.Transposed();
    for (int r = 0; r < kCoordinates; ++r)
      for (int c = 0; c < kCoordinates; ++c) sum.m[r][c] += carried.m[r][c];
    return Compare(p, expected, sum);
  }

  // vᵀPv of the stable points and its degrees of freedom.
  double SumOfSquares(const std::vector<bool>& stable) const {
    if (adjustment_)
      return adjustment_->Positions().sumOfSquares + adjustment_->Heights().sumOfSquares;
    double sum = 0;
    for (std::size_t i = 0; i < points_.size(); ++i)
      if (stable[i]) sum += Against(i).chiSquare;
    return sum;
  }
  int Freedom(const std::vector<bool>& stable) const {
    if (adjustment_) return adjustment_->Positions().Freedom() + adjustment_->Heights().Freedom();
    return kCoordinates * static_cast<int>(std::count(stable.begin(), stable.end(), true));
  }

 private:
  const std::vector<EpochPoint>& points_;
  SiteModel model_;
  std::optional<SiteAdjustment> adjustment_;
};

bool AreSound(const std::vector<EpochPoint>& points) {
  return std::all_of(points.begin(), points.end(), [](const EpochPoint& p) {
    Matrix3 sum = Of(p.firstCovariance);
    double all = 0;
    for (int r = 0; r < kCoordinates; ++r) {
      all += p.first[r] + p.second[r];
      for (int c = 0; c < kCoordinates; ++c) sum.m[r][c] += p.secondCovariance[r][c];
    }
    const Matrix3 inverse = sum.Inverse();
    return std::isfinite(all) && inverse.m[0][0] > 0 && inverse.m[1][1] > 0 && inverse.m[2][2] > 0;
  });
}

}  // namespace

std::vector<PointMovement> FindMovements(const std::vector<EpochPoint>& points, SiteModel model,
                                         double alpha) {
  std::vector<bool> stable(points.size(), true);
  Epochs epochs(points, model);
  if (points.empty() || !AreSound(points) || !epochs.Hold(stable)) return {};
  // While the stable points disagree: out with the one without which they agree best.
  while (epochs.Freedom(stable) > 0 &&
         epochs.SumOfSquares(stable) > ChiSquareQuantile(1 - alpha, epochs.Freedom(stable))) {
    std::size_t worst = points.size();
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < points.size(); ++i) {
      if (!stable[i]) continue;
      stable[i] = false;
      if (epochs.Hold(stable) && epochs.SumOfSquares(stable) < least) {
        least = epochs.SumOfSquares(stable);
        worst = i;
      }
      stable[i] = true;
    }
    if (worst == points.size()) return {};
    stable[worst] = false;
    epochs.Hold(stable);
  }
  std::vector<PointMovement> found;
  for (std::size_t i = 0; i < points.size(); ++i) {
    Epochs others(points, model);
    std::vector<bool> held = stable;
    held[i] = false;
    if (!others.Hold(held)) return {};
    const Discrepancy at = others.Against(i);
    PointMovement movement{};
    std::copy_n(at.shift, 3, movement.shift);
    movement.ratio = at.chiSquare / kCoordinates;
    movement.probability = 1 - ChiSquareProbability(at.chiSquare, kCoordinates);
    movement.moved = !stable[i];
    found.push_back(movement);
  }
  return found;
}

}  // namespace zel_cs::geomath
