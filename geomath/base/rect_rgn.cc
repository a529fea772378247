#include "geomath/base/rect_rgn.h"

#include "geomath/base/angle.h"

using zel_cs::geomath::kTwoPi;

namespace {

bool InRange(double x, double start, double extent) {
  return extent > 0 ? x >= start && x <= start + extent : x <= start && x >= start + extent;
}

}  // namespace

bool TRectRgn::Inside(double B, double L) const {
  double pt[] = {B, L};
  zel_math::TAbstractPoint2<double> shift;
  return Inside(pt, shift);
}

bool TRectRgn::Inside(double* pt, zel_math::TAbstractPoint2<double>& shift) const {
  shift = zel_math::TAbstractPoint2<double>(0.0);
  if (!InRange(pt[0], B0, dB)) return false;
  for (const double turn : {0.0, kTwoPi, -kTwoPi}) {
    if (InRange(pt[1] + turn, L0, dL)) {
      shift[1] = turn;
      return true;
    }
  }
  return false;
}

void TRectRgn::Extention(int k) {
  B0 -= dB / k;
  dB += 2 * dB / k;
  L0 -= dL / k;
  dL += 2 * dL / k;
}
