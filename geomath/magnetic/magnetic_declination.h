#pragma once

#include "geomath/export.h"
#include "geomath/magnetic/magnetic_field.h"
#include "geomath/magnetic/magnetic_model.h"
#include "geomath/platform/system_time.h"
#include "geomath/platform/zel_vector.h"

namespace zel_cs::geomath {

/// Magnetic declination, inclination and total intensity at a point and date, by the World Magnetic
/// Model: that of a coefficient file when the object names one that can be read, else the built-in
/// WMM-2010 (Kept: whatever the date is; MagneticField takes the built-in model of the date). For many
/// points at one date MagneticField does the same work far faster.
///
/// Construction is safe from several threads; objects may be used from several threads at once.
class GEOMATH_API TMagneticDeclination {
 public:
  /// The built-in model.
  TMagneticDeclination() : TMagneticDeclination(nullptr) {}
  /// `path` of a coefficient file (see ReadCoefficientFile) may be null. It is not copied: it must
  /// outlive the object and its copies, which share the pointer. The file is read anew by every
  /// computation.
  TMagneticDeclination(const char* path);

  /// `lat` and `lon` in degrees, `height` in kilometres above the WGS84 ellipsoid, of `date` year,
  /// month and day. Results: declination and inclination in degrees, total intensity in nT; each is
  /// computed in double precision and rounded once.
  ///
  /// A file that cannot be read, or is damaged, gives way to the built-in model without a message.
  /// Messages, all from "MagneticDeclination": line 88 with an empty text when the built-in model is
  /// used for a year after 2015 (Kept: not for 2015 itself, which the model ends with the beginning
  /// of); line 124 with an empty text when the calendar has no such date, whose year is then taken
  /// as it is. Month 0 means the year as it is, without a message.
  /// The computation goes on after either. False, with the results untouched, only when there is
  /// no memory; the message then says so.
  bool computeMagneticDeclination(const float& lat, const float& lon, const float& height,
                                  const SYSTEMTIME& date, float& decl, float& incl, float& total);

 private:
  void initDefaultMagneticModelVector();
  bool loadDefaultMagModels(WMMtype_MagneticModel** out) const;
  /// The built-in model at its epoch, prepared by the first computation that needs it. Throws
  /// std::bad_alloc; the next computation then tries again.
  const MagneticField& builtInField() const;

  const char* path_;

  /// WMM-2010, one row of n, m, g, h, ġ, ḣ a term. Filled by the first object.
  static zel_vector<zel_vector<double>> defaultMagModel_;
  static bool defaultMagModelInitialized_;
};

}  // namespace zel_cs::geomath
