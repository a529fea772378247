#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "geomath/export.h"
#include "geomath/magnetic/magnetic_model.h"

namespace zel_cs::geomath {

/// The elements of the geomagnetic field at a point, or how much they change in a year.
struct MagneticElements {
  double x;              ///< towards geodetic north, nT
  double y;              ///< towards geodetic east, nT
  double z;              ///< down, nT
  double h;              ///< horizontal intensity, nT
  double f;              ///< total intensity, nT
  double declination;    ///< from geodetic north to magnetic north, east positive, degrees
  double inclination;    ///< below the horizon positive, degrees
  double gridVariation;  ///< from grid north to magnetic north, east positive, degrees
};

/// The field and its yearly change (nT and degrees per year).
struct MagneticPoint {
  MagneticElements field;         ///< at the date
  MagneticElements yearlyChange;  ///< of each element
};

/// One standard deviation of the elements that a model's publisher states for its years; it covers
/// what no such model contains (crust, disturbances), so it dwarfs any error of computation.
struct MagneticUncertainty {
  /// nT.
  double x, y, z, h, f;
  /// Degrees.
  double declination, inclination;
};

struct MagneticErrorModel;
namespace magnetic {
struct Series;
}  // namespace magnetic

/// How far a compass can be relied upon: the horizontal intensity that turns its needle is sound, or
/// so weak that the publishers of the model advise caution or none.
enum class CompassZone {
  sound,     ///< from kCautionZone up, or not a number
  caution,   ///< below kCautionZone: the "caution zone"
  blackout,  ///< below kBlackoutZone: the "blackout zone" around the magnetic poles
};

/// The horizontal intensities at which the zones end, nT (Chulliat et al. 2020, section 1.8).
inline constexpr double kCautionZone = 6000, kBlackoutZone = 2000;

/// The zone of a horizontal intensity, nT.
constexpr CompassZone CompassZoneOf(double h) {
  if (h < kBlackoutZone) return CompassZone::blackout;
  return h < kCautionZone ? CompassZone::caution : CompassZone::sound;
}

/// One term of the sums, as MagneticField keeps it: what multiplies cos mλ and sin mλ in the field,
/// nT, and in its yearly change, nT per year. Coefficients are in Gauss normalisation.
struct MagneticTerm {
  double recursion;  ///< K(n + 1, m) of the Legendre recursion
  double value[4];   ///< g, h, ġ, ḣ of (n, m)
  double radial[4];  ///< −(n + 1) times these
  double slope[4];   ///< n − m + 1 times those of (n, m − 1); 0 when m is 0
};

/// The field of one model at one date (Chulliat et al. 2020, The US/UK World Magnetic Model for
/// 2020-2025: Technical Report, section 1.2, equations 4 to 19).
///
/// Construction adjusts the coefficients to the date; it allocates and throws std::bad_alloc when
/// there is no memory. Evaluation allocates nothing, throws nothing, is const and may run on one
/// object from many threads. It holds its own copy of the figures: the model may go away.
///
/// Latitude and longitude are geodetic, in degrees (any number of turns of longitude), the height
/// is in kilometres above the WGS84 ellipsoid. Results agree with an evaluation in higher
/// precision to 1e-9 nT, and a point gets the same bits from each of the functions, beside any
/// other points and on any machine. North at a pole is along the meridian of the given longitude.
/// The declination is ill-conditioned near a magnetic pole; exactly there, where h is 0, it is 0
/// and the changes of h, declination and grid variation are not a number. A coordinate that is no
/// finite number gives elements that are not a number, as does a height of about minus the radius
/// of the Earth.
///
/// Grid north, for the grid variation, is that of the UPS grid at latitudes from ±55° to the poles
/// (where the convergence is the longitude, with the sign of the hemisphere), and that of the UTM
/// zone of the point in between.
class GEOMATH_API MagneticField {
 public:
  /// The model at a decimal year (see DecimalYear). Dates outside the model's years extrapolate.
  MagneticField(const WMMtype_MagneticModel& model, double decimalYear);

  /// The built-in model of that year (see BuiltInMagneticModel).
  explicit MagneticField(double decimalYear);

  /// The field at a point and its yearly change.
  MagneticPoint At(double latitude, double longitude, double height) const noexcept;

  /// The same at another date, a decimal year: the yearly change of x, y and z is constant in time.
  MagneticPoint At(double latitude, double longitude, double height,
                   double decimalYear) const noexcept;

  /// `count` points of one latitude and height, whose sums over the degrees are formed once: the
  /// fastest form. Returns how many of the results are numbers.
  std::size_t AtRow(double latitude, double height, const double* longitudes, std::size_t count,
                    MagneticPoint* results) const noexcept;

  /// `count` points, several at a time. Consecutive points of one latitude and height are taken
  /// together as AtRow does. Returns how many of the results are numbers.
  std::size_t AtBatch(const double* latitudes, const double* longitudes, const double* heights,
                      std::size_t count, MagneticPoint* results) const noexcept;

  /// The date that the coefficients were adjusted to.
  double DecimalYear() const { return decimalYear_; }

  /// Whether the date lies in the years that the model was made for, both ends included.
  bool InModelYears() const { return inModelYears_; }

  /// The stated uncertainty of the model at a point with horizontal intensity `h` (nT), after the
  /// model's name: WMM-2015, WMM-2015v2, WMM-2020, WMM-2025 and WMMHR-2025. Nothing for other
  /// models. That of the declination (degrees) grows as 1/h, without limit.
  std::optional<MagneticUncertainty> Uncertainty(double h) const noexcept;

 private:
  magnetic::Series SeriesAt(double decimalYear) const noexcept;
  std::size_t EvaluateRow(double decimalYear, double latitude, double height,
                          const double* longitudes, std::size_t count,
                          MagneticPoint* results) const noexcept;

  double decimalYear_;
  bool inModelYears_;
  int degree_;
  const MagneticErrorModel* errors_;  // null when nothing is published
  std::vector<MagneticTerm> terms_;   // m = 0 … degree, within it n = m … degree
};

}  // namespace zel_cs::geomath
