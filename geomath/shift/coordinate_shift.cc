#include "geomath/shift/coordinate_shift.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "geomath/base/batch.h"

namespace zel_cs::geomath {
namespace {

constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Refuses the points with a result so far that are not finite, which become NaN. Returns whether there
// are any.
bool RefuseNonFinite(double* const (&point)[3], std::size_t count, ShiftStatus* status) {
  if (MarkFailures(point, count) == count) return false;
  for (std::size_t i = 0; i < count; ++i)
    if (std::isnan(point[0][i]) && HasResult(status[i])) status[i] = ShiftStatus::input;
  return true;
}

}  // namespace

CoordinateShift::~CoordinateShift() = default;

const char* ShiftStatusName(ShiftStatus status) {
  static constexpr const char* names[] = {
      "converted",
      "extrapolated from the nearest triangle",
      "not finite",
      "outside the grid or the triangles",
      "in a hole of the grid",
      "without a point that is shifted there",
      "without a date",
      "at a date outside the years of the model",
  };
  static_assert(std::size(names) == static_cast<std::size_t>(ShiftStatus::otherDate) + 1);
  const auto index = static_cast<std::size_t>(status);
  return index < std::size(names) ? names[index] : "of unknown status";
}

ShiftResult CoordinateShift::ForwardDerivatives(double first, double second, double third,
                                                double (&jacobian)[3][3], double date) const {
  double found[9];
  double* const columns[] = {found,     found + 1, found + 2, found + 3, found + 4,
                             found + 5, found + 6, found + 7, found + 8};
  ShiftStatus status;
  ForwardDerivativesBatch(PointDates(date), &first, &second, &third, columns, 1, &status);
  if (HasResult(status)) std::copy_n(found, 9, &jacobian[0][0]);
  return {status};
}

void CoordinateShift::ForwardDerivativesBatch(PointDates dates, const double* first,
                                              const double* second, const double* third,
                                              double* const (&jacobian)[9], std::size_t count,
                                              ShiftStatus* status) const {
  double years[kBatchBlock];
  std::fill_n(status, count, ShiftStatus::converted);
  for (std::size_t start = 0; start < count; start += kBatchBlock) {
    const std::size_t n = std::min(kBatchBlock, count - start);
    const double* const source[] = {first + start, second + start, third + start};
    double* columns[9];
    for (std::size_t k = 0; k < 9; ++k) {
      columns[k] = jacobian[k] + start;
      std::fill_n(columns[k], n, k % 4 == 0 ? 1.0 : 0.0);
    }
    dates.From(start).Copy(years, n);
    DifferentiateBlock(source, years, n, columns, status + start);
    for (const double* column : source) {
      if (AllWithin(column, n, kLargest)) continue;
      for (std::size_t i = 0; i < n; ++i)
        if (!std::isfinite(column[i])) status[start + i] = ShiftStatus::input;
    }
  }
}

void CoordinateShift::DifferentiateBlock(const double* const (&source)[3], const double* dates,
                                         std::size_t count, double* const (&jacobian)[9],
                                         ShiftStatus* status) const {
  for (std::size_t i = 0; i < count; ++i) {
    double found[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    status[i] = Differentiate({source[0][i], source[1][i], source[2][i]}, dates[i], found);
    for (std::size_t k = 0; k < 9; ++k) jacobian[k][i] = found[k / 3][k % 3];
  }
}

ShiftStatus CoordinateShift::Differentiate(const double (&source)[3], double date,
                                           double (&jacobian)[3][3]) const {
  constexpr double kHalfStep = 10;               // metres
  constexpr double kHalfStepAngle = 10 / 6.4e6;  // the same on the Earth
  for (int c = 0; c < 3; ++c) {
    const double step = space_ == ShiftSpace::geographic && c < 2 ? kHalfStepAngle : kHalfStep;
    double low[] = {source[0], source[1], source[2]}, high[] = {source[0], source[1], source[2]};
    low[c] -= step;
    high[c] += step;
    const double width = high[c] - low[c];
    const ShiftStatus below = Forward(low[0], low[1], low[2], date).status;
    const ShiftStatus above = Forward(high[0], high[1], high[2], date).status;
    if (!HasResult(below)) return below;
    if (!HasResult(above)) return above;
    for (int r = 0; r < 3; ++r) jacobian[r][c] = (high[r] - low[r]) / width;
  }
  return ShiftStatus::converted;
}

void CoordinateShift::ForwardDatedBlock(double* const (&point)[3], const double*, std::size_t count,
                                        ShiftStatus* status) const {
  ForwardBlock(point, count, status);
}

void CoordinateShift::InverseDatedBlock(double* const (&point)[3], const double*, std::size_t count,
                                        ShiftStatus* status) const {
  InverseBlock(point, count, status);
}

void CoordinateShift::RunBlock(Direction direction, double* const (&point)[3], PointDates dates,
                               std::size_t count, ShiftStatus* status) const {
  const bool forward = direction == Direction::forward;
  if (kind_ == ShiftKind::timeless)
    return forward ? ForwardBlock(point, count, status) : InverseBlock(point, count, status);
  double years[kBatchBlock];
  dates.Copy(years, count);
  return forward ? ForwardDatedBlock(point, years, count, status)
                 : InverseDatedBlock(point, years, count, status);
}

// A point alone, as RunBatch would convert it.
ShiftResult CoordinateShift::RunPoint(Direction direction, PointDates dates, double& first,
                                      double& second, double& third) const {
  double x = first, y = second, z = third;
  const auto finite = [&] { return std::isfinite(x) && std::isfinite(y) && std::isfinite(z); };
  if (!finite()) return {ShiftStatus::input};
  ShiftResult result{ShiftStatus::converted};
  RunBlock(direction, {&x, &y, &z}, dates, 1, &result.status);
  if (!HasResult(result.status)) return result;
  if (!finite()) return {ShiftStatus::input};
  first = x;
  second = y;
  third = z;
  return result;
}

std::size_t CoordinateShift::RunBatch(Direction direction, PointDates dates, double* first,
                                      double* second, double* third, std::size_t count,
                                      std::ptrdiff_t stride, ShiftStatus* status) const {
  static_assert(kMaxPoints == kBatchBlock);
  if (count == 0) return 0;
  StridedPoints<3> points({first, second, third}, stride);
  std::size_t converted = 0;
  for (std::size_t start = 0; start < count; start += kBatchBlock) {
    const std::size_t n = std::min(kBatchBlock, count - start);
    auto& point = points.Load(start, n);
    ShiftStatus became[kBatchBlock];
    std::fill_n(became, n, ShiftStatus::converted);
    bool refused[kBatchBlock];
    const bool anyRefused = MarkFailures(point, n) < n;
    for (std::size_t i = 0; anyRefused && i < n; ++i) refused[i] = std::isnan(point[0][i]);
    RunBlock(direction, point, dates.From(start), n, became);
    for (std::size_t i = 0; anyRefused && i < n; ++i)
      if (refused[i]) became[i] = ShiftStatus::input;

    auto worst = ShiftStatus::converted;  // those without a result are the largest
    for (std::size_t i = 0; i < n; ++i) worst = std::max(worst, became[i]);
    bool failed = !HasResult(worst);
    for (std::size_t i = 0; failed && i < n; ++i)
      if (!HasResult(became[i])) point[0][i] = point[1][i] = point[2][i] = kNaN;
    failed |= RefuseNonFinite(point, n, became);
    converted +=
        failed ? static_cast<std::size_t>(std::count_if(became, became + n, HasResult)) : n;
    points.Store(start, n);
    if (status) status = std::copy_n(became, n, status);
  }
  return converted;
}

ShiftResult CoordinateShift::Forward(double& first, double& second, double& third) const {
  return RunPoint(Direction::forward, PointDates(), first, second, third);
}

ShiftResult CoordinateShift::Inverse(double& first, double& second, double& third) const {
  return RunPoint(Direction::inverse, PointDates(), first, second, third);
}

ShiftResult CoordinateShift::Forward(double& first, double& second, double& third,
                                     double date) const {
  return RunPoint(Direction::forward, PointDates(date), first, second, third);
}

ShiftResult CoordinateShift::Inverse(double& first, double& second, double& third,
                                     double date) const {
  return RunPoint(Direction::inverse, PointDates(date), first, second, third);
}

std::size_t CoordinateShift::ForwardBatch(double* first, double* second, double* third,
                                          std::size_t count, std::ptrdiff_t stride,
                                          ShiftStatus* status) const {
  return RunBatch(Direction::forward, PointDates(), first, second, third, count, stride, status);
}

std::size_t CoordinateShift::InverseBatch(double* first, double* second, double* third,
                                          std::size_t count, std::ptrdiff_t stride,
                                          ShiftStatus* status) const {
  return RunBatch(Direction::inverse, PointDates(), first, second, third, count, stride, status);
}

std::size_t CoordinateShift::ForwardDatedBatch(PointDates dates, double* first, double* second,
                                               double* third, std::size_t count,
                                               std::ptrdiff_t stride, ShiftStatus* status) const {
  return RunBatch(Direction::forward, dates, first, second, third, count, stride, status);
}

std::size_t CoordinateShift::InverseDatedBatch(PointDates dates, double* first, double* second,
                                               double* third, std::size_t count,
                                               std::ptrdiff_t stride, ShiftStatus* status) const {
  return RunBatch(Direction::inverse, dates, first, second, third, count, stride, status);
}

}  // namespace zel_cs::geomath
