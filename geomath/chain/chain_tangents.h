#pragma once

#include <array>
#include <vector>

#include "geomath/base/batch.h"
#include "geomath/base/matrix3.h"
#include "geomath/chain/chain_trace.h"
#include "geomath/chain/chain_uncertainty.h"

namespace zel_cs::geomath {

/// The derivatives of a block of points on its way from global to local, and the uncertainty of the
/// steps, carried back to the global side by the inverse of the derivatives so far.
class ChainTangents : public ChainTrace {
 public:
  using Vector = std::array<double, 3>;
  using Covariances = double[6][kBatchBlock];  // xx, xy, xz, yy, yz, zz
  using Symmetric = double* [6];               // columns of a caller, likewise

  /// Errors of a job's extent go to `common`, a vector for each of their sources, when that is given
  /// (for blocks of one point), else to the point's own.
  ChainTangents(const ChainUncertainty& uncertainty, PointDates dates, CovarianceFrame global,
                CovarianceFrame local, std::vector<Vector>* common = nullptr)
      : uncertainty_(uncertainty),
        dates_(dates),
        chain_(*uncertainty.chain_),
        global_(global),
        local_(local),
        common_(common) {}

  /// From here on nobody asks for the local positions.
  void LeaveGrid() { leavesGrid_ = true; }

  bool NeedsGrid() const override { return !leavesGrid_ || uncertainty_.site_; }
  void Start(Points geographic, std::size_t count) override;
  void ToGeocentric(const Ellipsoid& ellipsoid, Points geographic, std::size_t count) override;
  void ToGeographic(const Ellipsoid& ellipsoid, Points geographic, std::size_t count) override;
  void Transform(const Datum& datum, Points local, std::size_t count) override;
  void Shift(const ChainShift& step, ChainStep place, Points before, Points after,
             std::size_t count) override;
  void LowerByGeoid(Points geographic, const double* perLatitude, const double* perLongitude,
                    std::size_t count) override;
  void LowerByShift(const ChainShift& step, Points before, Points after,
                    std::size_t count) override;
  void Arrive(Points geographic, std::size_t count) override;
  std::size_t Project(const TGeoProj& projection, Points geographic, double* north, double* east,
                      std::size_t count) override;
  void ToSite(const LocalToGrid& site, Points grid, std::size_t count) override;
  void ToGround(const GridToGround& ground, std::size_t count) override;
  /// Into the local frame.
  void Finish(Points geographic, std::size_t count) override;

  /// Whether any point was refused that the chain did not refuse.
  bool Refuses() const { return refuses_; }
  /// What refused points that the chain did not; ChainStep::none for the others.
  ChainStep FailedAt(std::size_t i) const { return failed_[i]; }

  /// Covariances of one side to those of the other, in place, with the uncertainty of the steps:
  /// those of `count` points from `first` on.
  void ToLocal(const Symmetric& covariances, std::size_t first, std::size_t count) const;
  void ToGlobal(const Symmetric& covariances, std::size_t first, std::size_t count) const;

  /// The derivatives of a point.
  Matrix3 At(std::size_t i) const;
  /// What the steps add to the covariance of a point of its own, on the global side.
  Matrix3 Added(std::size_t i) const;

 private:
  template <class Conversion>
  void RunAt(const Conversion& conversion, Points geographic, std::size_t count);
  void Fail(std::size_t i, ChainStep step) {
    if (failed_[i] == ChainStep::none) failed_[i] = step;
    refuses_ = true;
  }
  void FailAll(ChainStep step, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) Fail(i, step);
  }
  /// Derivatives of a shift of the chain at its source, in its own direction; may Fail points.
  using Jacobians = double[9][kBatchBlock];
  void ShiftDerivatives(const ChainShift& step, Points before, Points after, std::size_t count,
                        ChainStep place, Jacobians& found);
  /// The standard deviations of a shift at a point in the units of its space; may Fail.
  void ShiftDeviations(const ChainUncertainty::ShiftNoise* noise, const ChainShift& step,
                       Points before, Points after, std::size_t i, ChainStep place,
                       double (&sigma)[3]);
  static bool IsLevel(const Jacobians& jacobians, std::size_t count);
  const ChainUncertainty::ShiftNoise* NoiseOf(const ChainShift& step) const;
  template <class Factors, class... Columns>
  void Scale(const Ellipsoid& ellipsoid, const double* latitudes, std::size_t count,
             Columns*... derivatives) const;
  void Part(std::size_t count);
  void ToRadians(Points geographic, std::size_t count);
  void WritePlane(std::size_t count);
  void Slope(std::size_t count);
  void Mix(std::size_t count);
  template <class Step>
  void Lower(const Step& step, double* perNorth, double* perEast, double* perHeight,
             std::size_t count);
  void Times(const Matrix3& matrix, std::size_t count);
  template <bool kInverse>
  void PropagateBy(const Symmetric& covariances, std::size_t first, std::size_t count) const;
  void StartAdding();
  /// Adds errors whose images in the coordinates so far are these vectors, of standard deviation 1.
  void AddNoise(std::size_t i, const Vector* images, std::size_t count, ErrorExtent extent);
  /// The same of heights that are apart.
  void AddHeightNoise(std::size_t i, double sigma, ErrorExtent extent);
  const Ellipsoid* GlobalEllipsoid() const;
  const Ellipsoid* LocalEllipsoid() const;
  void AddDatumNoise(const Datum& datum, Points local, std::size_t count);
  void AddSiteNoise(const LocalToGrid& site, Points grid, std::size_t count);

  const ChainUncertainty& uncertainty_;
  PointDates dates_;
  const CoordinateChain& chain_;
  CovarianceFrame global_, local_;
  std::vector<Vector>* common_;
  bool leavesGrid_ = false;

  // What of the derivatives is written; the rest is that of the identity.
  enum class Heights : unsigned char {
    level,   // by themselves
    sloped,  // by the plane, too: the third row
    mixed,   // and the plane by heights: all
  };

  double tangent_[9][kBatchBlock];       // row by row
  bool plane_ = false;                   // whether the four of the plane are written
  Heights heights_ = Heights::level;     // and those of heights
  bool inMetres_ = false;                // whether rows of geographic positions are metres there
  double apartHeights_[3][kBatchBlock];  // the row of heights while they are off their positions
  bool apart_ = false;                   // whether they are
  double ellipsoidal_[kBatchBlock];      // heights above the ellipsoid, as they were last
  Covariances added_, apartAdded_;       // on the global side; those of positions that heights left
  double heightVariance_[kBatchBlock];   // of heights that are apart
  std::size_t firstApart_ = 0;           // of `common_`
  bool adds_ = false;
  const Ellipsoid* ellipsoid_ = nullptr;  // of the positions so far
  ChainStep failed_[kBatchBlock];
  bool refuses_ = false;
};

}  // namespace zel_cs::geomath
