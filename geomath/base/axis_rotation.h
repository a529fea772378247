#pragma once

#include "geomath/export.h"
#include "geomath/platform/wide_text.h"
#include "geomath/platform/zel_math.h"

namespace zel_cs::geomath {

/// The direction code of north and east, as AxisRotation keeps it.
inline constexpr unsigned char kNorthEastDirection = 0x21;

/// In which order and with which signs a caller gives the two horizontal coordinates of a point.
/// Inside the library the first points north and the second east; a caller may work with easting
/// first, with west-positive longitudes, and so on.
///
/// Axes are named by two letters, the direction of the caller's first and second coordinate:
/// "WN", "WS", "SW", "SE", "EN", "ES", "NW", in any letter case. Every other text, "NE" among
/// them, means north and east. Nothing fails. Const operations are safe from many threads.
class GEOMATH_API AxisRotation {
 public:
  /// North and east, no text.
  AxisRotation();
  /// SetAxes with a text; null means none.
  AxisRotation(const wchar_t* axes);
  /// The same text (a copy of its own), matrix and direction code.
  AxisRotation(const AxisRotation& other);
  /// SetAxes with the other's text: the text is copied, matrix and code are recomputed from it.
  /// Kept: a source without text, or this object itself, only resets the matrix to the identity.
  AxisRotation& operator=(const AxisRotation& other);
  virtual ~AxisRotation();

  /// Converts a pair in place: `dir` 0 from internal to the caller's axes, any other value from
  /// the caller's to internal.
  virtual void Rotate(unsigned int dir, double& a, double& b) const;

  /// Sets the axes by name. The matrix is reset first; null, an empty text or the very pointer
  /// that GetAxes returns then leave the stored text as it is, so that SetAxes(GetAxes()) resets
  /// to north and east without forgetting the text.
  virtual void SetAxes(const wchar_t* axes);

  /// The stored text, owned by this object, or null when none was ever set.
  virtual const wchar_t* GetAxes() const;

  /// Whether Rotate leaves every pair as it is.
  bool IsIdentity() const { return isIdentity_; }

  /// Takes over text, matrix and direction code as they are, without recomputing anything.
  void CopyAxes(const AxisRotation& other);

 protected:
  /// Packs a 2 × 2 matrix row by row.
  TAbstractPoint<double, 4> SetROT(double m0, double m1, double m2, double m3);

  /// Bit set: bits 0 to 3 say where the caller's first coordinate comes from (+north, +east,
  /// −north, −east), bits 4 to 7 the same for the second. kNorthEastDirection for north
  /// and east.
  unsigned char direction_;

 private:
  void SetMatrix(const TAbstractPoint<double, 4>& matrix);

  bool isIdentity_ = true;
  WideText axes_;
  TAbstractPoint<double, 4> rotation_;
  TAbstractPoint<double, 4> reference_;  // the identity
};

}  // namespace zel_cs::geomath
