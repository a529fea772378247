#pragma once

namespace zel_cs::geomath {

/// A linear unit, known by the number of metres in one of it. A factor of zero is not rejected:
/// FromMetr then gives an infinity or NaN.
class MetricUnit {
 public:
  MetricUnit() = default;
  /// The metres in one unit; without it the metre.
  MetricUnit(double metresPerUnit) : metresPerUnit_(metresPerUnit) {}

  /// This unit to metres.
  double ToMetr(double x) const { return metresPerUnit_ * x; }
  /// Metres to this unit.
  double FromMetr(double x) const { return x / metresPerUnit_; }

 private:
  double metresPerUnit_ = 1.0;
};

}  // namespace zel_cs::geomath
