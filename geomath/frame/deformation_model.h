#pragma once

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "geomath/base/ellipsoid.h"
#include "geomath/export.h"
#include "geomath/frame/dated_shift.h"
#include "geomath/shift/shift_grid.h"

namespace zel_cs::geomath {

/// How the displacement of a component depends on the date.
enum class TimeFunctionKind : unsigned char {
  constant,     ///< 1 at all dates
  step,         ///< 0 before the epoch, 1 from it on
  reverseStep,  ///< −1 before the epoch, 0 from it on
  velocity,     ///< years since the epoch
  piecewise,    ///< linear between points; where two have one date, the later counts from it on
  exponential,  ///< a value before the epoch, from it on the way from one value to another
};

/// A piecewise function outside of its points.
enum class BeyondPoints : unsigned char {
  zero,      ///< 0
  constant,  ///< as in the nearest point
  linear,    ///< on the line through the two nearest points
};

/// The factor of a displacement at a date.
struct TimeFunction {
  /// A point of a piecewise function.
  struct Point {
    double date;    ///< decimal year
    double factor;  ///< of the displacement, there
  };

  TimeFunctionKind kind = TimeFunctionKind::constant;    ///< which of the values below count
  double epoch = 0;                                      ///< decimal year
  std::vector<Point> points;                             ///< piecewise, in the order of their dates
  BeyondPoints before = BeyondPoints::zero;              ///< piecewise: before the first point
  BeyondPoints after = BeyondPoints::zero;               ///< piecewise: after the last one
  double beforeFactor = 0;                               ///< exponential: before the epoch
  double initialFactor = 0;                              ///< exponential: at the epoch
  double finalFactor = 0;                                ///< exponential: in the end
  double relaxation = 1;                                 ///< exponential: years to 63 % of the way
  double end = std::numeric_limits<double>::infinity();  ///< exponential: stands still from here

  /// The factor; a date at the epoch or at a point is not before it.
  GEOMATH_API double At(double date) const;
};

/// Latitudes and longitudes, radians, edges included; the longitude may go past the half turn.
struct GeographicExtent {
  double south = 0;  ///< latitude
  double west = 0;   ///< longitude
  double north = 0;  ///< latitude
  double east = 0;   ///< longitude
};

/// How a component is interpolated between its nodes.
enum class DisplacementInterpolation : unsigned char {
  bilinear,            ///< north, east and up each for itself
  geocentricBilinear,  ///< as vectors in space, which keep their directions close to a pole
};

/// One component of a deformation model: what an earthquake or a steady motion adds to a position.
struct DeformationComponent {
  /// Which displacements the nodes hold.
  ShiftComponents displacement = ShiftComponents::horizontal;
  DisplacementInterpolation interpolation = DisplacementInterpolation::bilinear;
  /// Where it applies; elsewhere, and where no part is, it adds nothing.
  GeographicExtent extent;
  TimeFunction time;
  /// Nested grids, radians; the components of a node are north, east and up as in ShiftGrid.
  std::vector<ShiftGridPart> parts;
};

/// How the sum of horizontal displacements is applied.
enum class HorizontalMethod : unsigned char {
  addition,    ///< to latitude and longitude, with the radii of curvature at the point
  geocentric,  ///< as a vector in space
};

/// What a DeformationModel is made of.
struct DeformationModelDefinition {
  Ellipsoid ellipsoid;                                   ///< of the positions
  GeographicExtent extent;                               ///< outside of it the model refuses points
  YearRange years;                                       ///< outside of them it refuses dates
  HorizontalMethod method = HorizontalMethod::addition;  ///< of the sum of displacements
  bool angles = false;        ///< north and east displacements are angles, not lengths
  double horizontalUnit = 1;  ///< metres or radians in one unit of north and east displacements
  double verticalUnit = 1;    ///< metres in one unit of heights
  std::vector<DeformationComponent> components;  ///< which are added
};

/// A deformation model as Land Information New Zealand publishes that of NZGD2000 (format "deformation
/// model master file", version 1.0, specified in the documentation of PROJ): displacements s_c of
/// several components, each in nested grids, times functions of the date,
///     shift(φ, λ, t) = Σ f_c(t)·s_c(φ, λ).
/// Geographic; Forward leads from the position of the model's own epoch to that at the date. Parts,
/// edges and holes are as in ShiftGrid. A component adds nothing outside of its extent and its parts;
/// where it adds something at the date, a hole in them refuses the point.
///
/// Inverse, from the date back, is exact to the rounding of the coordinates. On a crack in the model,
/// where displacements jump, a position may have no origin, and is refused as
/// ShiftStatus::notInvertible.
class GEOMATH_API DeformationModel : public DatedShift {
 public:
  /// Null when the definition is not sound: a component whose parts are not, as in ShiftGrid::Make;
  /// more than kMaxComponents; a time function with a number that is not finite, without points or
  /// whose dates go back; an extent that is turned around; angles with the geocentric method or
  /// interpolation; no ellipsoid; no memory. `reason`, when given, then says which.
  static std::unique_ptr<DeformationModel> Make(DeformationModelDefinition definition,
                                                std::string* reason = nullptr) noexcept;
  ~DeformationModel() override;

  /// Limit of Make.
  static constexpr std::size_t kMaxComponents = 4096;

 private:
  struct Component;
  struct Place;
  struct Sums;
  struct Slopes;

  DeformationModel(const DeformationModelDefinition& definition, std::vector<Component> components);

  void ForwardAt(double* const (&point)[3], const double* dates, std::size_t count,
                 ShiftStatus* status) const override;
  void InverseAt(double* const (&point)[3], const double* dates, std::size_t count,
                 ShiftStatus* status) const override;
  void DifferentiateAt(const double* const (&source)[3], const double* dates, std::size_t count,
                       double* const (&jacobian)[9], ShiftStatus* status) const override;
  void Displace(const double* b, const double* l, const double* dates, std::size_t count,
                Sums& sums, Slopes* slopes, ShiftStatus* status) const;
  void AddComponent(const Component& component, const Place& place, const double* dates, Sums& sums,
                    Slopes* slopes, std::size_t count, ShiftStatus* status) const;
  void ToAngles(const double* b, std::size_t count, Sums& sums, Slopes& slopes) const;
  bool StepBack(const Sums& sums, const Slopes& slopes, std::size_t i, double& b, double& l,
                double& h) const;
  void Apply(double* const (&point)[3], Sums& sums, std::size_t count) const;

  Ellipsoid ellipsoid_;
  GeographicExtent extent_;
  HorizontalMethod method_;
  bool angles_;
  std::vector<Component> components_;
};

}  // namespace zel_cs::geomath
