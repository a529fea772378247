#pragma once

#include <cstddef>
#include <span>

#include "geomath/base/angle.h"
#include "geomath/base/axis_rotation.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/export.h"
#include "geomath/platform/zel_memory.h"
#include "geomath/proj/point_factors.h"
#include "geomath/proj/projection_codes.h"

namespace zel_cs::geomath {

/// Unit code of GetParam and SetParam that exchanges angles in decimal degrees; every other code
/// means radians. Lengths are metres and factors plain numbers whatever the code.
inline constexpr unsigned int kUnitDegrees = 3;
/// The code that callers use for radians and metres.
inline constexpr unsigned int kUnitInternal = 2;

class FormulaView;
struct ParamRow;

/// The base of every map projection: the ellipsoid, the axis descriptors of grid and geographic
/// coordinates (the grid one is the AxisRotation base), kind and parameter count, and the scale and
/// convergence of the last point. On its own it is the invalid projection: kind 40, every
/// conversion fails.
///
/// Angles are radians and lengths metres; a pair is (latitude, longitude) or (northing, easting)
/// unless axes are set. Nothing throws. Forward, Inverse and the scale queries store the factors of
/// the last point, so that one object must not run them from two threads at once; ForwardPoint,
/// InversePoint and the batches are const, store nothing, allocate nothing and may run from many.
class GEOMATH_API TGeoProj : public AxisRotation, public OnHostHeap {
 public:
  /// Kind 40, no parameters, WGS84; scale and convergence 2147483647.0, "not yet computed".
  TGeoProj();
  /// Scale 1, convergence 0. A kind above 40 or more than 16 parameters give kind 40 and no
  /// parameters; without parameters the kind is 40. `flag` is carried along unread.
  TGeoProj(unsigned int type, int paramCount, double a, double invF, bool flag);
  /// Copies every member.
  TGeoProj(const TGeoProj& other);
  /// Copies every member, the axes as they are (nothing is recomputed from their texts).
  TGeoProj& operator=(const TGeoProj& other);
  ~TGeoProj() override;

  /// In place, the caller's geographic axes to the caller's grid axes. False when the projection
  /// fails; the pair has then been rotated to internal axes and may hold partial results.
  virtual bool Forward(double& b, double& l);
  /// In place, the caller's grid axes to the caller's geographic axes; failure as in Forward.
  virtual bool Inverse(double& n, double& e);

  /// Point scale factor and convergence (radians) of the last point that was converted, or the
  /// constructed values where the class computes none.
  virtual double GetScale() const;
  virtual double GetConvergence() const;

  /// Parameters by index 0 … GetQParam() − 1 in the order of the class. Unit code 3 exchanges
  /// angles in decimal degrees, every other code (callers use 2) in radians; lengths are metres
  /// and factors plain numbers. An index outside reads 0.0 and writes nothing.
  virtual void SetParam(double value, int index, unsigned int unit);
  virtual double GetParam(int index, unsigned int unit) const;
  /// The parameters 0 … values.size() − 1 in one go, which derives everything again once, from all
  /// of them; values beyond the last parameter are not read. A host's class that overrides SetParam
  /// is run by it, value by value.
  void SetParams(std::span<const double> values, unsigned int unit);
  /// The rows that the two go by (geomath/proj/param_table.h); none in the base.
  virtual std::span<const ParamRow> Params() const;

  /// Centre of the domain and its half extents, radians. False, arguments untouched, where the
  /// class has none.
  virtual bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const;

  /// Replaces the ellipsoid (metres, inverse flattening) unless it is fixed.
  virtual void SetEllipsoid(double a, double invF);

  /// False northing and easting, metres.
  virtual double FNorth() const;
  virtual double FEast() const;

  /// |b| ≤ π and |l| ≤ 4π. Kept: the bounds are this loose.
  virtual bool IsAngleCoordValid(double b, double l);
  /// Height scale 1 + h/6371000 at height h, metres.
  virtual double GetHScale(double h);
  /// The factor that carries a grid distance at (n, e) to the ground at height h: height scale
  /// over point scale. False when the point scale cannot be had (k is then 1), or when it is below
  /// 1e-20 and h is not 0 (k then holds it).
  virtual bool GetAvgGridScale(double& k, double n, double e, double h);
  /// The same at (b, l).
  virtual bool GetAvgBLHScale(double& k, double b, double l, double h);
  /// Point scale factor at a grid position. False with k = 1 when the point does not convert both
  /// ways or its angles are not valid.
  virtual bool GetNEScale(double& k, double n, double e);
  /// Point scale factor at a geographic position; failure likewise.
  virtual bool GetBLScale(double& k, double b, double l);

  /// While fixed, SetEllipsoid does nothing.
  virtual void SetEllipsoidFixed(bool fixed);
  virtual bool IsEllipsoidFixed();

  /// Axis orientation, as in AxisRotation: of the grid pair (NE) and the geographic pair (BL).
  virtual void RotateNE(unsigned int dir, double& n, double& e) const;
  virtual void RotateBL(unsigned int dir, double& b, double& l) const;
  virtual void SetNEAxes(const wchar_t* axes);
  virtual void SetBLAxes(const wchar_t* axes);
  /// Direction code of the grid axes.
  virtual unsigned char GetNEDir();

  /// The projection itself on internal axes, in place: radians to metres, and back. These run the
  /// const forms and store the factors.
  virtual bool _Forward(double& b, double& l);
  virtual bool _Inverse(double& n, double& e);

  /// The const, thread-safe form of _Forward: in place on internal axes; `factors`, when given,
  /// receives what _Forward would have stored. False where the class's comment says so. The base,
  /// and a host's class that overrides _Forward without this, always fails here.
  virtual bool ForwardPoint(double& b, double& l, PointFactors* factors = nullptr) const;
  /// The const, thread-safe form of _Inverse; _Inverse and InversePoint likewise.
  virtual bool InversePoint(double& n, double& e, PointFactors* factors = nullptr) const;

  /// The derivatives of ForwardPoint at a position (radians, internal axes): those of the class's own
  /// formulas, to rounding, or of the conformal map with the scale and the convergence that it
  /// computes. False, the result untouched, where ForwardPoint fails, at latitudes of ±π/2, on figures
  /// flatter than 1/100, and in a class that has neither. Const and thread-safe.
  bool ForwardDerivatives(double b, double l, GridDerivatives& derivatives) const;
  /// ForwardDerivatives of `count` positions: latitudes, longitudes and two columns that are not read
  /// become the members of GridDerivatives, in their order; NaN in all where it fails. Returns the
  /// number of the others. The bits are those of the single call.
  std::size_t ForwardDerivativesBatch(double* b, double* l, double* northL, double* eastL,
                                      std::size_t count) const;
  /// Both ForwardPoint and ForwardDerivatives of `count` positions, in fewer operations: latitudes and
  /// longitudes (radians) become northings and eastings (metres) in place, and the members of
  /// GridDerivatives, in their order, go into four columns. A point where one of them fails is NaN in
  /// all; returns the number of the others.
  std::size_t ForwardWithDerivativesBatch(double* b, double* l, double* const (&derivatives)[4],
                                          std::size_t count) const;

  /// Whether RotateNE or RotateBL may change a pair: the axes are others than north and east, or a
  /// host's class turns them.
  bool TurnsAxes() const;
  /// RotateNE and RotateBL of `count` pairs in place.
  void RotateNEBatch(unsigned int dir, double* n, double* e, std::size_t count) const;
  void RotateBLBatch(unsigned int dir, double* b, double* l, std::size_t count) const;

  /// Forward of `count` points in place, axes included; point i stands at index i * stride of both
  /// arrays (stride 1 for two arrays, 2 for interleaved pairs). A point that fails, or whose result
  /// is not finite, becomes NaN in both slots. Returns the number of points converted.
  /// A host's class that overrides ForwardPoint, RotateBL or RotateNE is run by them; one that
  /// overrides Forward or _Forward without ForwardPoint has no const form: no point is converted.
  std::size_t ForwardBatch(double* first, double* second, std::size_t count,
                           std::ptrdiff_t stride = 1) const;
  /// Inverse of `count` points, likewise.
  std::size_t InverseBatch(double* first, double* second, std::size_t count,
                           std::ptrdiff_t stride = 1) const;

  /// Takes over another projection's kind, parameter count, factors, ellipsoid, flag, axes texts
  /// and parameter values; this object's ellipsoid-fixed flag stays. Meant for two objects
  /// of one class. False for null; true without any change for this object itself.
  bool CopyGeoProj(const TGeoProj* src);

  /// Parameter count, kind and ellipsoid of the projection.
  int GetQParam() const { return paramCount_; }
  ProjType GetType() { return type_; }  // for callers that point to a member that is not const
  ProjType GetType() const { return type_; }
  const Ellipsoid& GetEllipsoid() const { return ell_; }

  /// The axes texts, owned by this object, or null.
  wchar_t* GetNEAxes() const;
  wchar_t* GetBLAxes() const;

  /// Angle conversions; "DMS" means plain decimal degrees.
  double DMSToRad(double degrees) const;
  double RadToDMS(double radians) const;
  double GradToDMS(double x) const;  ///< returns its argument
  double SecToRad(double arcSeconds) const;

 protected:
  /// Scale 1, convergence 0; a class with these rows, of which the count is kept.
  TGeoProj(ProjType type, std::span<const ParamRow> params, double a, double invF);

  /// What the setter of a parameter does: everything is derived again.
  void Set(double& field, double value);

  /// Derives again what a class keeps of its parameters and the ellipsoid. SetEllipsoid calls it;
  /// constructors and setters of a class with derived constants do too.
  virtual void Prepare();

  /// What ForwardPoint and InversePoint of the library's classes run: their own mathematics, which
  /// fails as the class's comment says. `factors` may be null.
  virtual bool ProjectPoint(double& b, double& l, PointFactors* factors) const;
  virtual bool UnprojectPoint(double& n, double& e, PointFactors* factors) const;

  /// The prepared constants of a class whose formulas have a column kernel; empty in the base. It
  /// stays valid until the object changes.
  virtual FormulaView Formulas() const;

  /// ForwardPoint and InversePoint for a block of columns in place; a point that fails gets a
  /// coordinate that is not finite. These run the kernel of Formulas(), or the single-point form
  /// for each point.
  virtual void ForwardBlock(double* b, double* l, std::size_t count) const;
  virtual void InverseBlock(double* n, double* e, std::size_t count) const;

  /// What ForwardDerivatives runs: the derivatives of ProjectPoint, those of Formulas() or of the
  /// conformal map with the class's own scale and convergence.
  virtual bool Differentiate(double b, double l, GridDerivatives& derivatives) const;
  /// Differentiate for a block of positions, the first two of the columns, in place; a point that
  /// fails gets a first derivative that is not finite. The base calls Differentiate for each.
  virtual void DifferentiateBlock(double* const (&columns)[4], std::size_t count) const;

  Ellipsoid ell_;       ///< as SetEllipsoid left it
  double scale_;        ///< point scale of the last point
  double convergence_;  ///< of the last point, radians
  int paramCount_;      ///< of the class
  ProjType type_;       ///< its kind

 private:
  const ParamRow* FindParam(int index) const;
  void StoreParam(const ParamRow& row, double value, unsigned int unit);
  bool DifferentiateConformal(double b, double l, GridDerivatives& derivatives) const;

  bool flag_;
  bool ellipsoidFixed_ = false;
  AxisRotation geographicAxes_;
};

}  // namespace zel_cs::geomath
