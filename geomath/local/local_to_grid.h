#pragma once

#include <cstddef>
#include <memory>

#include "geomath/export.h"
#include "geomath/platform/in_place.h"
#include "geomath/platform/wide_text.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct PlaneRotation;
struct SiteParameters;

/// Applies a site calibration: converts between the plane coordinates of a projection (the grid)
/// and a local site system, and, through a projection of its own, between geodetic coordinates and
/// the local system.
///
///     local N = s·(cos θ·N − sin θ·E) + tN      local H = H + h0 + aN·N + aE·E
///     local E = s·(sin θ·N + cos θ·E) + tE
///
/// Metres and radians. `what` names the parts asked for: 1 horizontal, 2 height, 3 both. Parts that
/// are not computed come out as DBL_MAX.
///
/// ToLocal, ToGrid and the batches store nothing and may run on one object from many threads at
/// once; Forward and Inverse store the factors of the last point in the projection.
class GEOMATH_API LocalToGrid {
 public:
  /// Values of `mode`, and of `what` in the conversions.
  static constexpr unsigned char kNotSetUp = 0, kHorizontal = 1, kVertical = 2, kBoth = 3;

  /// Identity parameters, not set up (mode 0), stereographic projection on WGS84.
  LocalToGrid();
  /// Copies are deep: the copy owns a projection of its own.
  LocalToGrid(const LocalToGrid& other);
  /// Copies are deep.
  LocalToGrid& operator=(const LocalToGrid& other);
  ~LocalToGrid();

  /// Replaces the projection by a stereographic one at the origin (metres, inverse flattening).
  void SetSterProj(double a, double invf);
  /// Replaces the projection by one of `proj`'s kind, parameters, ellipsoid and axes; null does
  /// nothing. Kept: the new projection is the class that _GetProjByType builds for the kind, a
  /// TUTMProj for every kind 0, and one that converts nothing for kinds without a class there.
  void SetProj(TGeoProj* proj);
  /// Sets the ellipsoid of the projection.
  void SetEllipsoid(double a, double invf);

  /// Latitude and longitude of origin; unit 1 means degrees, any other radians. Also written to
  /// the projection as its parameter 0 and 1.
  void SetLat0(double value, unsigned int unit);
  void SetLon0(double value, unsigned int unit);

  /// 0 tN, 1 tE, 2 s, 3 θ; other indices are ignored and read 0.0. The unit is not used.
  void SetPlaneParam(double value, int index, unsigned int unit);
  double GetPlaneParam(int index, unsigned int unit) const;
  /// 0 h0, 1 aN, 2 aE (metres per metre of grid coordinate); likewise.
  void SetHeightParam(double value, int index, unsigned int unit);
  double GetHeightParam(int index, unsigned int unit) const;

  /// Parameters of the projection, as TGeoProj.
  void SetParam(double value, int index, unsigned int unit);
  double GetParam(int index, unsigned int unit) const;

  /// Name of a geoid model that belongs to the site, owned; null when there is none.
  void SetGeoidName(const wchar_t* name);
  const wchar_t* GetGeoidName() const { return geoidName_.Get(); }

  /// The projection, owned by this object.
  const TGeoProj* GetProjection() const { return projection_.get(); }
  /// Grid position of the origin, metres; 0 when the projection cannot give it.
  double OriginN() const { return originN_; }
  double OriginE() const { return originE_; }

  /// In place, grid to local. False, arguments unchanged, when the mode or `what` is 0.
  bool ToLocal(double& N, double& E, double& H, unsigned int what) const;
  /// In place, local to grid. Also false in mode 2. Kept: heights alone cannot be taken back.
  bool ToGrid(double& N, double& E, double& H, unsigned int what) const;
  /// In place, geodetic (radians, metres) to local, and back. False as ToLocal and ToGrid, and when
  /// the projection fails; coordinates may then hold a partial result. Kept: the pair that a
  /// projection with grid axes gives goes to ToLocal as it stands, in the order of those axes;
  /// CoordinateChain converts in north and east and turns the result.
  bool Forward(double& lat, double& lon, double& H, unsigned char what);
  bool Inverse(double& N, double& E, double& H, unsigned char what);

  /// The same for `count` points in place; point i stands at index i * stride. A point that fails,
  /// or whose result is not finite, becomes NaN in all slots. Returns the points converted.
  std::size_t ToLocalBatch(double* N, double* E, double* H, std::size_t count, unsigned int what,
                           std::ptrdiff_t stride = 1) const;
  std::size_t ToGridBatch(double* N, double* E, double* H, std::size_t count, unsigned int what,
                          std::ptrdiff_t stride = 1) const;
  std::size_t ForwardBatch(double* lat, double* lon, double* H, std::size_t count,
                           unsigned int what, std::ptrdiff_t stride = 1) const;
  std::size_t InverseBatch(double* N, double* E, double* H, std::size_t count, unsigned int what,
                           std::ptrdiff_t stride = 1) const;

  /// Which parts are valid: 0 none, 1 horizontal, 2 vertical, 3 both. Set by the owner.
  unsigned char mode = kNotSetUp;

 private:
  void ReplaceProjection(std::unique_ptr<TGeoProj> projection);
  void UpdateOrigin();
  void SetOriginParam(double value, int index);

  // What a conversion gives: nothing when it fails.
  struct Outcome {
    bool ok = false, plane = false, height = false;
  };
  Outcome OutcomeToLocal(unsigned int what) const;
  Outcome OutcomeToGrid(unsigned int what) const;
  SiteParameters Parameters() const;

  std::unique_ptr<TGeoProj> projection_;
  double planeParams_[4] = {0, 0, 1.0, 0};  // tN, tE, s, θ
  double heightParams_[3] = {0, 0, 0};      // h0, aN, aE
  InPlace<PlaneRotation, 2> rotation_;      // of θ
  double lat0_ = 0, lon0_ = 0;
  double originN_ = 0, originE_ = 0;
  WideText geoidName_;
};

}  // namespace zel_cs::geomath
