#pragma once

#include <cstddef>

#include "geomath/base/point_dates.h"
#include "geomath/export.h"

namespace zel_cs::geomath {

/// The coordinates that a shift acts on.
enum class ShiftSpace : unsigned char {
  geographic,  ///< latitude, longitude (radians, north and east positive), height (metres)
  geocentric,  ///< X, Y, Z, metres
  plane,       ///< north, east, height, metres
};

/// What a shift does with time.
enum class ShiftKind : unsigned char {
  timeless,     ///< nothing: a date that is given is not looked at
  frameChange,  ///< it leads from one reference frame to another, at the date of the position
  pointMotion,  ///< it leads from the position at one date to that at another, in one frame
};

/// What became of a point; the first two are results.
enum class ShiftStatus : unsigned char {
  converted,      ///< by the definition of the shift
  extrapolated,   ///< outside the triangles, by the fall-back that their definition prescribes
  input,          ///< refused: a coordinate is not finite
  outside,        ///< refused: outside the grid or the triangles
  hole,           ///< refused: a node of the grid has no value
  notInvertible,  ///< refused, coming back: no point is shifted there
  noDate,         ///< refused: the shift needs the date of the position, and none was given
  otherDate,      ///< refused: the date lies outside the years for which the shift is defined
};

/// Whether the point has a result.
constexpr bool HasResult(ShiftStatus status) { return status <= ShiftStatus::extrapolated; }

/// The status in words for a report: "converted", "outside the grid or the triangles", …
GEOMATH_API const char* ShiftStatusName(ShiftStatus status);

/// What became of one point; true when it has a result.
struct ShiftResult {
  ShiftStatus status = ShiftStatus::converted;  ///< what became of it
  /// Whether the point has a result.
  explicit operator bool() const { return HasResult(status); }
};

/// A transformation between two systems of the same kind of coordinates: a grid or a triangulation
/// of shifts, or one of the small formulas that are published beside them.
///
/// Points are three numbers in the order of Space(): latitude, longitude, height; X, Y, Z; or north,
/// east, height. A shift that leaves a coordinate alone keeps its bits. Longitudes may be any finite
/// angle and keep their turn.
///
/// A shift whose kind is not ShiftKind::timeless needs the date of each position, and refuses one
/// without; the forms without a date are those with none.
///
/// Objects are immutable. Every conversion is const, allocates nothing, throws nothing and may run
/// from many threads at once; one point and many give the same bits, on every instruction set.
class GEOMATH_API CoordinateShift {
 public:
  virtual ~CoordinateShift();

  /// The coordinates that this shift acts on.
  ShiftSpace Space() const { return space_; }
  /// What this shift does with time.
  ShiftKind Kind() const { return kind_; }

  /// In place, from the source to the target system. On failure the arguments are unchanged.
  ShiftResult Forward(double& first, double& second, double& third) const;
  /// In place, from the target to the source system: the point that Forward takes to these
  /// coordinates. On failure the arguments are unchanged.
  ShiftResult Inverse(double& first, double& second, double& third) const;
  /// The same for a position at a date, a decimal year.
  ShiftResult Forward(double& first, double& second, double& third, double date) const;
  ShiftResult Inverse(double& first, double& second, double& third, double date) const;

  /// The derivatives of Forward at a source position, one row for each coordinate of the target, in
  /// the units of the space: those of the formulas to rounding, on a line between cells or triangles
  /// those of the one that Forward takes. A class of a host's has symmetric differences of Forward.
  /// On failure the result is unchanged. `date`, a decimal year, is for those that need one.
  ShiftResult ForwardDerivatives(double first, double second, double third,
                                 double (&jacobian)[3][3], double date = kNoDate) const;
  /// The same at `count` source positions, into columns of the matrices' numbers row by row; those of
  /// a point that is refused mean nothing. `status` holds `count` entries.
  void ForwardDerivativesBatch(PointDates dates, const double* first, const double* second,
                               const double* third, double* const (&jacobian)[9], std::size_t count,
                               ShiftStatus* status) const;

  /// Forward of `count` points in place; the coordinates of point i stand at index i * stride of the
  /// three arrays (1 for three arrays, 3 for interleaved triples). A point that is refused becomes
  /// NaN in all three slots. `status`, when given, holds `count` entries (stride 1) and receives
  /// what became of each point. Returns the number of points that have a result.
  std::size_t ForwardBatch(double* first, double* second, double* third, std::size_t count,
                           std::ptrdiff_t stride = 1, ShiftStatus* status = nullptr) const;
  /// Inverse of `count` points, likewise.
  std::size_t InverseBatch(double* first, double* second, double* third, std::size_t count,
                           std::ptrdiff_t stride = 1, ShiftStatus* status = nullptr) const;
  /// The same for positions at dates.
  std::size_t ForwardDatedBatch(PointDates dates, double* first, double* second, double* third,
                                std::size_t count, std::ptrdiff_t stride = 1,
                                ShiftStatus* status = nullptr) const;
  std::size_t InverseDatedBatch(PointDates dates, double* first, double* second, double* third,
                                std::size_t count, std::ptrdiff_t stride = 1,
                                ShiftStatus* status = nullptr) const;

 protected:
  /// Points that go through a block together, at most.
  static constexpr std::size_t kMaxPoints = 256;

  /// A shift of coordinates of this kind.
  explicit CoordinateShift(ShiftSpace space, ShiftKind kind = ShiftKind::timeless)
      : space_(space), kind_(kind) {}

  /// What ForwardDerivativesBatch runs for at most kMaxPoints points, whose status is
  /// ShiftStatus::converted so far, into matrices that come as identities. Coordinates may be NaN or
  /// infinite. The base goes point by point.
  virtual void DifferentiateBlock(const double* const (&source)[3], const double* dates,
                                  std::size_t count, double* const (&jacobian)[9],
                                  ShiftStatus* status) const;

 private:
  /// Converts at most kMaxPoints points in place, whose status is ShiftStatus::converted so far, and
  /// changes it where it must. Coordinates may be NaN or infinite; what a refused point is left with
  /// does not matter, and a result that is not finite is refused.
  virtual void ForwardBlock(double* const (&point)[3], std::size_t count,
                            ShiftStatus* status) const = 0;
  virtual void InverseBlock(double* const (&point)[3], std::size_t count,
                            ShiftStatus* status) const = 0;

  /// What DifferentiateBlock of the base runs at one position. It takes differences.
  virtual ShiftStatus Differentiate(const double (&source)[3], double date,
                                    double (&jacobian)[3][3]) const;

  /// The same for a shift that needs dates: NaN where there is none.
  virtual void ForwardDatedBlock(double* const (&point)[3], const double* dates, std::size_t count,
                                 ShiftStatus* status) const;
  virtual void InverseDatedBlock(double* const (&point)[3], const double* dates, std::size_t count,
                                 ShiftStatus* status) const;

  enum class Direction : bool { forward, inverse };
  void RunBlock(Direction direction, double* const (&point)[3], PointDates dates, std::size_t count,
                ShiftStatus* status) const;
  ShiftResult RunPoint(Direction direction, PointDates dates, double& first, double& second,
                       double& third) const;
  std::size_t RunBatch(Direction direction, PointDates dates, double* first, double* second,
                       double* third, std::size_t count, std::ptrdiff_t stride,
                       ShiftStatus* status) const;

  ShiftSpace space_;
  ShiftKind kind_;
};

}  // namespace zel_cs::geomath
