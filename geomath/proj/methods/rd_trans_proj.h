#pragma once

#include "geomath/proj/methods/double_ster_proj.h"

namespace zel_cs::geomath {

/// The oblique stereographic projection followed by a correction of the plane coordinates, which is
/// how the official Dutch procedure (RDNAPTRANS) reaches its grid: there the correction, up to
/// 0.25 m, comes from a published grid of data that a host may hold.
///
/// Chosen: the correction is a plain function of the uncorrected pair, held per object; without one
/// the class is TDoubleSter, but that a latitude beyond a pole fails. Scale and convergence are those
/// of the projection.
class GEOMATH_API TRDTransProj : public TDoubleSter {
 public:
  /// Writes the correction, metres, at the uncorrected northing and easting. It must not throw,
  /// and must be safe from many threads when the batches are.
  using Correction = void (*)(double n, double e, double& dn, double& de);

  /// WGS84, all parameters 0, scale 1.
  TRDTransProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TRDTransProj(double a, double invF, double lat0, double lon0, double scale, double fEast,
               double fNorth);

  /// Null means none. CopyGeoProj leaves the correction as it is.
  void SetCorrection(Correction correction) { correction_ = correction; }
  Correction GetCorrection() const { return correction_; }

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  /// Three fixed-point rounds, each as good as the correction varies slowly (1e-5 m per m or less
  /// leaves 1e-15 of it).
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  bool Differentiate(double b, double l, GridDerivatives& derivatives) const override;
  // A correction is the host's function, which takes one point at a time.
  FormulaView Formulas() const override;

 private:
  Correction correction_ = nullptr;
};

}  // namespace zel_cs::geomath
