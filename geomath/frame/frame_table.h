#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "geomath/export.h"
#include "geomath/frame/time_dependent_similarity.h"

namespace zel_cs::geomath {

/// Geocentric reference frames between which parameters are published.
enum class ReferenceFrame : unsigned char {
  itrf88,
  itrf89,
  itrf90,
  itrf91,
  itrf92,
  itrf93,
  itrf94,
  itrf96,
  itrf97,
  itrf2000,
  itrf2005,
  itrf2008,  ///< also IGS08 and IGb08, in which GNSS products were given
  itrf2014,  ///< also IGS14 and IGb14
  itrf2020,  ///< also IGS20
  etrf89,
  etrf90,
  etrf91,
  etrf92,
  etrf93,
  etrf94,
  etrf96,
  etrf97,
  etrf2000,
  etrf2005,
  etrf2014,
  etrf2020,
  gda94,
  gda2020,
  nad83CsrsV2,
  nad83CsrsV3,
  nad83CsrsV4,
  nad83CsrsV5,
  nad83CsrsV6,
  nad83CsrsV7,
  nad83CsrsV8,
  nad83_2011,
  nad83Pa11,
  nad83Ma11,
  natrf2022,
};

/// The usual name: "ITRF2014", "NAD83(CSRS)v8", …
GEOMATH_API const char* FrameName(ReferenceFrame frame);
/// The frame of a usual name, letter for letter; nothing when it has no such frame.
GEOMATH_API std::optional<ReferenceFrame> FrameNamed(std::string_view name);

/// A published set of parameters, as printed: millimetres, milliarc-seconds, parts per billion, and
/// what they grow by in a year; they hold at the epoch, a decimal year.
struct FrameTransformation {
  ReferenceFrame source;   ///< from which the set leads
  ReferenceFrame target;   ///< to which it leads
  RotationSense sense;     ///< of the rotations
  double shift[3];         ///< mm
  double rotation[3];      ///< mas
  double scale;            ///< ppb
  double shiftRate[3];     ///< mm a year
  double rotationRate[3];  ///< mas a year
  double scaleRate;        ///< ppb a year
  double epoch;            ///< 0 in a set that does not change with time
  const char* code;  ///< of the set in a registry, or the publication that no registry here has

  /// Whether the set is the same at all dates.
  bool IsTimeless() const { return epoch == 0; }
  /// In metres, arc-seconds and as a factor.
  GEOMATH_API TimeDependentParameters Parameters() const;
};

/// All published sets, the newest source frame first, one for a pair of frames.
GEOMATH_API std::span<const FrameTransformation> FrameTransformations();

/// One step from frame to frame.
struct FrameStep {
  const FrameTransformation* transformation;  ///< of FrameTransformations
  bool inverse;                               ///< from its target to its source
};

/// The fewest published steps from one frame to another; among as many those through the newest
/// frame. Empty when the frames are the same, or not connected.
GEOMATH_API std::vector<FrameStep> FrameSteps(ReferenceFrame from, ReferenceFrame to);

/// The models of the motions of tectonic plates.
enum class PlateModel : unsigned char {
  itrf2014,  ///< Altamimi et al. 2017, Geophysical Journal International 209, doi:10.1093/gji/ggx136
  itrf2020,  ///< Altamimi et al. 2023, Geophysical Research Letters 50, doi:10.1029/2023GL106373
};

/// A plate of a model, by the four letters that the model gives it.
struct TectonicPlate {
  const char* name;    ///< four letters
  double velocity[3];  ///< milliarc-seconds a year about X, Y, Z: an AngularVelocity
};

/// The plates of a model, in the order of their names.
GEOMATH_API std::span<const TectonicPlate> Plates(PlateModel model);

/// The rate of the origin that belongs to the ITRF2020 model, metres a year, for those who want
/// velocities without a rest. Maps and the model itself go without.
inline constexpr double kItrf2020OriginRate[] = {0.00037, 0.00035, 0.00074};

}  // namespace zel_cs::geomath
