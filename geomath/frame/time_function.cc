#include <algorithm>

#include "geomath/frame/deformation_model.h"
#include "geomath/simd/scalar.h"

namespace zel_cs::geomath {
namespace {

using Point = TimeFunction::Point;

// On the line through two points; a jump has the factor of its first point before it and of its
// second one behind.
double OnLine(const Point& a, const Point& b, double date, double atJump) {
  if (a.date == b.date) return atJump;
  return a.factor + (date - a.date) / (b.date - a.date) * (b.factor - a.factor);
}

double Piecewise(const TimeFunction& f, double date) {
  const std::vector<Point>& points = f.points;
  const Point &first = points.front(), &last = points.back();
  const std::size_t count = points.size();
  if (date < first.date) {
    if (f.before == BeyondPoints::zero) return 0;
    if (f.before == BeyondPoints::constant || count == 1) return first.factor;
    return OnLine(first, points[1], date, first.factor);
  }
  if (date >= last.date) {
    if (f.after == BeyondPoints::zero) return 0;
    if (f.after == BeyondPoints::constant || count == 1) return last.factor;
    return OnLine(points[count - 2], last, date, last.factor);
  }
  const auto behind = std::upper_bound(points.begin(), points.end(), date,
                                       [](double d, const Point& p) { return d < p.date; });
  return OnLine(*(behind - 1), *behind, date, behind->factor);
}

double Exponential(const TimeFunction& f, double date) {
  if (date < f.epoch) return f.beforeFactor;
  const double years = std::min(date, f.end) - f.epoch;
  return f.initialFactor - (f.finalFactor - f.initialFactor) * Expm1(-years / f.relaxation);
}

}  // namespace

double TimeFunction::At(double date) const {
  switch (kind) {
    case TimeFunctionKind::constant:
      return 1;
    case TimeFunctionKind::step:
      return date < epoch ? 0 : 1;
    case TimeFunctionKind::reverseStep:
      return date < epoch ? -1 : 0;
    case TimeFunctionKind::velocity:
      return date - epoch;
    case TimeFunctionKind::piecewise:
      return points.empty() ? 0 : Piecewise(*this, date);
    default:
      return Exponential(*this, date);
  }
}

}  // namespace zel_cs::geomath
