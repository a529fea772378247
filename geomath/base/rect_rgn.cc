#include "geomath/base/rect_rgn.h"

#include "geomath/base/rect_bounds.h"

bool TRectRgn::Inside(double B, double L) const {
  double turn;
  return zel_cs::geomath::RectBounds(*this).Inside(B, L, turn);
}

bool TRectRgn::Inside(double* pt, zel_math::TAbstractPoint2<double>& shift) const {
  shift = zel_math::TAbstractPoint2<double>(0.0);
  double turn;
  const bool inside = zel_cs::geomath::RectBounds(*this).Inside(pt[0], pt[1], turn);
  if (inside) shift[1] = turn;
  return inside;
}

void TRectRgn::Extention(int k) {
  B0 -= dB / k;
  dB += 2 * dB / k;
  L0 -= dL / k;
  dL += 2 * dL / k;
}
