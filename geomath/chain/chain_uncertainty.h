#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "geomath/chain/coordinate_chain.h"
#include "geomath/export.h"
#include "geomath/local/site_covariance.h"
#include "geomath/shift/shift_grid.h"

namespace zel_cs::geomath {

class ChainTangents;

/// The coordinates that a covariance matrix is of. Rows and columns stand in the order of the name,
/// whatever axes the coordinates of the points have.
enum class CovarianceFrame : unsigned char {
  northEastUp,  ///< metres at the point; in a grid its northing, easting and height
  geocentric,   ///< X, Y, Z, metres
  geographic,   ///< latitude, longitude (radians) and height (metres)
};

/// Whether an uncertainty is one error for all points of a job, or drawn anew for each.
enum class ErrorExtent : unsigned char {
  point,  ///< independent from point to point
  job,    ///< the same error everywhere: what two points differ by does not suffer from it
};

/// The covariance of the seven parameters of a Datum, in the order and units in which it has them:
/// shift (metres), rotation (arc-seconds), scale (dimensionless).
struct DatumCovariance {
  double of[7][7] = {};  ///< symmetric
};

/// Carries the covariance of a position through a CoordinateChain, with the derivatives of every step
/// at the point and the uncertainty of the steps themselves (the law of propagation of variances:
/// Mikhail 1976, chapter 4): C' = J·C·Jᵀ + Σ Jₖ·Cₖ·Jₖᵀ, Jₖ the derivatives of what follows step k.
///
/// Derivatives are those of the steps' formulas: of projections by TGeoProj::ForwardDerivatives, of
/// shifts by CoordinateShift::ForwardDerivatives, of a geoid by GeoidHeight::HeightsAndSlopes. The way
/// back takes the inverse matrices at the same point.
///
/// Holds pointers to the chain and to what is set, which the caller keeps alive. Until something is
/// set the steps are exact. Dates are those of CoordinateChain, exact too. Conversions are const,
/// throw nothing and may run from many threads; those of points and batches allocate nothing.
class GEOMATH_API ChainUncertainty {
 public:
  /// `chain` may change later.
  explicit ChainUncertainty(const CoordinateChain& chain) : chain_(&chain) {}

  /// The standard deviation of each geocentric coordinate behind the datum, metres: an accuracy that a
  /// registry states. Replaces a covariance, and is replaced by one. False, nothing set, when it is
  /// negative or not finite.
  bool SetDatum(double sigma, ErrorExtent extent = ErrorExtent::job);
  /// The covariance of the parameters. False when it is none: not symmetric, not finite, or negative
  /// in some direction.
  bool SetDatum(const DatumCovariance& covariance, ErrorExtent extent = ErrorExtent::job);
  /// The standard deviation of geoid heights, metres: one for all, or a model of it, null for none.
  bool SetGeoid(double sigma, ErrorExtent extent = ErrorExtent::point);
  void SetGeoid(const GeoidHeight* sigmas, ErrorExtent extent = ErrorExtent::point);
  /// That of a site calibration.
  static bool IsCovariance(const SiteCovariance& covariance);
  bool SetSite(const SiteCovariance& covariance, ErrorExtent extent = ErrorExtent::job);
  /// The standard deviations of a shift of the chain, metres: north, east and up, or X, Y and Z of
  /// geocentric ones. Replaces what was set for it.
  bool SetShift(const CoordinateShift& shift, double first, double second, double third,
                ErrorExtent extent = ErrorExtent::point);
  /// Those that the nodes of a shift grid have, in these units (metres in one unit of the file). False
  /// without accuracies, or with a unit that is not positive. A point without a value there, or with a
  /// negative one, fails.
  bool SetShiftNodes(const ShiftGrid& grid, double horizontalUnit, double verticalUnit,
                     ErrorExtent extent = ErrorExtent::point);

  /// As CoordinateChain, with the covariance of the point in frame `from`, which becomes that of the
  /// result in frame `to`. On failure all arguments are unchanged. ChainStep::input also stands for a
  /// matrix that is no covariance (as in SetDatum). In a grid and behind it there is northEastUp
  /// alone, and where heights are above a geoid no geocentric frame; a frame that there is not, fails
  /// as ChainStep::input, one in metres without an ellipsoid as ChainStep::globalEllipsoid. Where the
  /// projection has no derivatives the point fails there.
  ChainResult ToLocal(double& b, double& l, double& h, double (&covariance)[3][3],
                      CovarianceFrame from = CovarianceFrame::northEastUp,
                      CovarianceFrame to = CovarianceFrame::northEastUp,
                      double date = kNoDate) const;
  ChainResult ToGlobal(double& n, double& e, double& h, double (&covariance)[3][3],
                       CovarianceFrame from = CovarianceFrame::northEastUp,
                       CovarianceFrame to = CovarianceFrame::northEastUp,
                       double date = kNoDate) const;

  /// The same for `count` points in place, coordinates as in CoordinateChain's batches; the covariance
  /// of point i are the nine numbers at covariances[9 * i]. A point that fails is NaN everywhere.
  std::size_t ToLocalBatch(double* b, double* l, double* h, double* covariances, std::size_t count,
                           std::ptrdiff_t stride = 1, ChainStep* failedAt = nullptr,
                           CovarianceFrame from = CovarianceFrame::northEastUp,
                           CovarianceFrame to = CovarianceFrame::northEastUp,
                           PointDates dates = {}) const;
  std::size_t ToGlobalBatch(double* n, double* e, double* h, double* covariances, std::size_t count,
                            std::ptrdiff_t stride = 1, ChainStep* failedAt = nullptr,
                            CovarianceFrame from = CovarianceFrame::northEastUp,
                            CovarianceFrame to = CovarianceFrame::northEastUp,
                            PointDates dates = {}) const;

  /// The joint covariance of `count` points, 3·count rows row by row, in place: what points share goes
  /// on being shared, and errors of a job's extent become shared. Coordinates as above, stride 1. On
  /// failure of any point all arguments are unchanged. Throws std::bad_alloc.
  ChainResult JointToLocal(double* b, double* l, double* h, double* joint, std::size_t count,
                           CovarianceFrame from = CovarianceFrame::northEastUp,
                           CovarianceFrame to = CovarianceFrame::northEastUp,
                           PointDates dates = {}) const;

  /// The derivatives of the way to local at a global position (of the caller's axes): rows are the
  /// local coordinates in frame `to`, columns the global ones in frame `from`.
  ChainResult Derivatives(double b, double l, double h, double (&jacobian)[3][3],
                          CovarianceFrame from = CovarianceFrame::northEastUp,
                          CovarianceFrame to = CovarianceFrame::northEastUp,
                          double date = kNoDate) const;

 private:
  friend class ChainTangents;
  /// C = factor·factorᵀ.
  template <int N>
  struct Noise {
    double factor[N][N];
    ErrorExtent extent;
  };
  struct GeoidNoise {
    double sigma;
    const GeoidHeight* sigmas;
    ErrorExtent extent;
  };
  struct SiteNoise {
    double pivotN, pivotE;
    Noise<4> plane;
    Noise<3> height;
  };
  struct ShiftNoise {
    const CoordinateShift* shift;
    double sigma[3];
    const ShiftGrid* nodes;
    double units[2];
    ErrorExtent extent;
  };
  struct Manner {
    CovarianceFrame from, to;
    PointDates dates;
  };

  void Replace(const ShiftNoise& noise);
  bool HasFrames(CovarianceFrame global, CovarianceFrame local) const;
  void Trace(bool toLocal, double* const (&columns)[3], PointDates dates, std::size_t count,
             ChainStep* failed, ChainTangents& tangents) const;
  void Carry(bool toLocal, double* covariances, std::size_t count, ChainStep* failed,
             const ChainTangents& tangents) const;
  void RunBlock(bool toLocal, double* const (&points)[3], double* covariances, std::size_t count,
                ChainStep* failed, Manner manner) const;
  std::size_t RunBatch(bool toLocal, double* x, double* y, double* h, double* covariances,
                       std::size_t count, std::ptrdiff_t stride, ChainStep* failedAt,
                       Manner manner) const;
  ChainResult RunPoint(bool toLocal, double& x, double& y, double& h, double (&covariance)[3][3],
                       Manner manner) const;

  const CoordinateChain* chain_;
  std::optional<double> datumSigma_;
  ErrorExtent datumExtent_ = ErrorExtent::job;
  std::optional<Noise<7>> datum_;
  std::optional<GeoidNoise> geoid_;
  std::optional<SiteNoise> site_;
  std::vector<ShiftNoise> shifts_;
};

}  // namespace zel_cs::geomath
