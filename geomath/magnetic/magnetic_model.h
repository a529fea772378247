#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "geomath/export.h"
#include "geomath/magnetic/wmm2010.h"

namespace zel_cs::geomath {

/// A spherical-harmonic model of the main field and its linear secular change: the record of the
/// World Magnetic Model's software. Coefficients are Schmidt semi-normalised, for the geomagnetic
/// reference radius 6371.2 km, in nT and nT per year.
struct WMMtype_MagneticModel {
  double editionDate = 0;             ///< decimal year of the release, 0 when unknown
  double epoch = 0;                   ///< decimal year that g and h belong to
  std::string modelName;              ///< at most kMaxModelName characters
  std::vector<double> g;              ///< main field, at TermIndex(n, m), element 0 unused
  std::vector<double> h;              ///< likewise
  std::vector<double> gDot;           ///< yearly change of g
  std::vector<double> hDot;           ///< yearly change of h
  int nMax = 0;                       ///< maximum degree
  int nMaxSecVar = 0;                 ///< maximum degree that changes in time
  double coefficientFileEndDate = 0;  ///< decimal year up to which the publisher vouches
};

/// The longest name that a model keeps, characters.
inline constexpr std::size_t kMaxModelName = 1023;

/// The highest degree that is accepted: that of the high-resolution WMM.
inline constexpr int kMaxMagneticDegree = 133;

/// A model lasts this many years after its epoch unless its file says otherwise.
inline constexpr double kModelYears = 5.0;

/// Position of a term in the coefficient arrays: n(n + 1)/2 + m.
constexpr std::size_t TermIndex(int n, int m) {
  return static_cast<std::size_t>(n * (n + 1) / 2 + m);
}

/// The length of the coefficient arrays up to a degree, index 0 included: (n + 1)(n + 2)/2.
constexpr std::size_t TermCount(int degree) { return TermIndex(degree, degree) + 1; }

/// A model of `degree` (0 to kMaxMagneticDegree) with all coefficients 0; null when there is no
/// memory.
GEOMATH_API std::unique_ptr<WMMtype_MagneticModel> AllocateMagneticModel(int degree) noexcept;

/// Stores one term. A term outside 1 ≤ n ≤ nMax, 0 ≤ m ≤ n is passed over and gives false.
GEOMATH_API bool StoreTerm(WMMtype_MagneticModel& model, const GaussTerm& term) noexcept;

/// The built-in World Magnetic Model 2010; null when there is no memory.
GEOMATH_API std::unique_ptr<WMMtype_MagneticModel> Wmm2010Model() noexcept;

/// Models of years that follow each other, in the order of their epochs: what covers more time than
/// one model does. A reference field whose coefficients are linear between its epochs is one model
/// for each pair of them, all of one name.
using MagneticModelSeries = std::vector<WMMtype_MagneticModel>;

/// The one whose years hold the date: each serves from its epoch to the next one's. The first serves
/// earlier dates, too, and the last later ones. `models` must not be empty.
GEOMATH_API const WMMtype_MagneticModel& ModelOfYear(std::span<const WMMtype_MagneticModel> models,
                                                     double decimalYear) noexcept;

/// All models that the library carries: WMM-2010, WMM-2015v2, WMM-2020 and WMM-2025. Throws
/// std::bad_alloc.
GEOMATH_API MagneticModelSeries BuiltInMagneticModels();

/// The one of them that ModelOfYear names; null when there is no memory.
GEOMATH_API std::unique_ptr<WMMtype_MagneticModel> BuiltInMagneticModel(
    double decimalYear) noexcept;

}  // namespace zel_cs::geomath
