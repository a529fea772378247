#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "geomath/export.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

/// The linear distortion δ = k·R/(R + h) − 1 of `count` positions (radians, ellipsoidal heights in
/// metres): by how much a distance in the grid is longer than the one on the ground (Dennis 2016, Ground
/// truth: low distortion map projections; 1e-6 is one part per million). k is the point scale, the root
/// of the areal scale where it differs with the direction, and R the Gaussian mean radius of the
/// position. NaN where the projection fails or the height is NaN. Returns the number of the others.
/// Const and thread-safe.
GEOMATH_API std::size_t LinearDistortion(const TGeoProj& proj, const double* b, const double* l,
                                         const double* h, double* delta, std::size_t count);

/// What a set of distortions, each with its weight, amounts to.
class GEOMATH_API DistortionFigures {
 public:
  /// Distortions that are NaN take no part. Without weights all are 1.
  explicit DistortionFigures(std::span<const double> deltas, std::span<const double> weights = {});

  /// How many take part. All figures are NaN when none does.
  std::size_t Count() const { return sorted_.size(); }
  double Least() const { return least_; }                    ///< smallest δ
  double Greatest() const { return greatest_; }              ///< largest δ
  double Largest() const;                                    ///< largest |δ|
  double Range() const { return greatest_ - least_; }        ///< between the two
  double Mean() const { return mean_; }                      ///< weighted mean of δ
  double RootMeanSquare() const { return rootMeanSquare_; }  ///< weighted
  /// The smallest |δ| that a share of the weight, 0 to 1, does not exceed.
  double Percentile(double share) const;
  /// The share of the weight where |δ| is at most `limit`.
  double ShareWithin(double limit) const;

 private:
  struct Weighted {
    double size, upTo;  // |δ| in rising order, and the weight up to it
  };
  std::vector<Weighted> sorted_;
  double least_, greatest_, mean_, rootMeanSquare_;
};

}  // namespace zel_cs::geomath
