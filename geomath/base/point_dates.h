#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

namespace zel_cs::geomath {

/// The date of a point that has none.
inline constexpr double kNoDate = std::numeric_limits<double>::quiet_NaN();

/// The dates of the points of a batch, decimal years (DecimalYear turns a calendar date into one;
/// kNoDate is none): one for all, or one for each.
class PointDates {
 public:
  /// No point has a date.
  PointDates() = default;
  /// All points have this one.
  explicit PointDates(double year) : all_(year) {}
  /// Point i has years[i]; not copied.
  explicit PointDates(const double* years) : each_(years) {}

  /// The date of point i.
  double operator[](std::size_t i) const { return each_ ? each_[i] : all_; }
  /// The dates of the first `count` points.
  void Copy(double* dates, std::size_t count) const {
    if (each_)
      std::copy_n(each_, count, dates);
    else
      std::fill_n(dates, count, all_);
  }
  /// The dates of the points from `first` on.
  PointDates From(std::size_t first) const {
    PointDates rest = *this;
    if (each_) rest.each_ += first;
    return rest;
  }

 private:
  double all_ = kNoDate;
  const double* each_ = nullptr;
};

}  // namespace zel_cs::geomath
