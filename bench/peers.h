#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#ifdef GEOMATH_HAVE_PROJ
#include <proj.h>
#endif

/// Columns of points that every contender of a row converts, a fixed pseudo-random lattice. The
/// third one is empty where points are pairs.
struct Columns {
  std::vector<double> first, second, third;
};

inline constexpr std::size_t kBenchPoints = 4096;  // fits the second-level cache

/// `kBenchPoints` pairs or triples spread evenly over the box given by its lower and upper corners:
/// the additive recurrence of Roberts (2018), which fills a box without clusters.
template <std::size_t Axes>
Columns SpreadPoints(const double (&low)[Axes], const double (&high)[Axes]) {
  static_assert(Axes == 2 || Axes == 3);
  constexpr double kStep[] = {0.8191725133961645, 0.6710436067037893, 0.5497004779019703};
  Columns columns;
  std::vector<double>* column[] = {&columns.first, &columns.second, &columns.third};
  for (std::size_t axis = 0; axis < Axes; ++axis) {
    double at = 0.5;
    for (std::size_t i = 0; i < kBenchPoints; ++i) {
      at += kStep[axis];
      if (at >= 1) at -= 1;
      column[axis]->push_back(low[axis] + at * (high[axis] - low[axis]));
    }
  }
  return columns;
}

#ifdef GEOMATH_HAVE_PROJ
/// A PROJ transformation in a context of its own.
class ProjPeer {
 public:
  /// Grids that a model names are looked for in `folder`.
  explicit ProjPeer(const char* definition, const std::string& folder = "")
      : context_(proj_context_create()) {
    const char* const paths[] = {folder.c_str(), "/usr/share/proj"};
    if (!folder.empty()) proj_context_set_search_paths(context_, 2, paths);
    pj_ = proj_create(context_, definition);
  }
  ~ProjPeer() {
    proj_destroy(pj_);
    proj_context_destroy(context_);
  }
  ProjPeer(const ProjPeer&) = delete;
  ProjPeer& operator=(const ProjPeer&) = delete;

  bool Good() const { return pj_ != nullptr; }

  /// In place. A projection takes and gives (longitude, latitude) in radians and (east, north).
  void Convert(PJ_DIRECTION direction, double* x, double* y, double* z, std::size_t count) const {
    constexpr std::size_t kStride = sizeof(double);
    proj_trans_generic(pj_, direction, x, kStride, count, y, kStride, count, z, kStride,
                       z ? count : 0, nullptr, 0, 0);
  }
  /// The same for points at one date.
  void ConvertAt(double date, PJ_DIRECTION direction, double* x, double* y, double* z,
                 std::size_t count) const {
    constexpr std::size_t kStride = sizeof(double);
    proj_trans_generic(pj_, direction, x, kStride, count, y, kStride, count, z, kStride, count,
                       &date, 0, 1);
  }
  /// Of a projection, at a position in radians.
  PJ_FACTORS Factors(double lambda, double phi) const {
    return proj_factors(pj_, proj_coord(lambda, phi, 0, 0));
  }

 private:
  PJ_CONTEXT* context_;
  PJ* pj_;
};
#endif
