#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/conversion/conversion_end.h"
#include "files/system/geo_box.h"
#include "geomath/base/point_dates.h"
#include "geomath/chain/coordinate_chain.h"

namespace geomath_files {

/// Which operation leads from one datum to the other.
struct ConversionWish {
  std::string operation = {};           ///< EPSG code; empty for the best
  std::optional<Position> near = {};    ///< where it is to be good; then one serves all points
  std::vector<std::string> grids = {};  ///< folders with grids, looked into before all others
  std::string beside = {};              ///< a file in whose folder grids are looked for; or empty
  bool one = false;                     ///< one operation serves all points
};

/// What became of a point.
struct ConversionOutcome {
  /// The step that refused it.
  zel_cs::geomath::ChainStep failed = zel_cs::geomath::ChainStep::none;
  std::uint16_t operation = 0;  ///< number in Operations(); 0 where there is none
  bool outside = false;         ///< it lies in the area of none of them

  /// Whether it was converted.
  explicit operator bool() const { return failed == zel_cs::geomath::ChainStep::none; }
};

/// From any coordinate system to any other: projected, geographic, geocentric or compound, of the EPSG
/// registry, of a system file, of WKT or PROJJSON.
///
/// Coordinates come in the order latitude, longitude (radians), height; northing, easting, height; or
/// X, Y, Z, in the units of their systems. Between the datums each point takes the operation that is
/// the most accurate of those whose area it lies in, and the next one where a grid has no value for it;
/// a point in no such area takes the best operation without a grid. Operations that lead there
/// directly go before those that are put together from several.
///
/// A height stays as it is where one of the systems has none, or where both have the same: only two
/// that differ are brought together.
///
/// Const after its construction, and for many threads at once; nothing is allocated or thrown.
class Conversion {
 public:
  /// Each text as ConversionEnd takes it: "EPSG:31467", "EPSG:25832+7837", a file, WKT. Throws
  /// UserError where a system is not known or no operation can be taken.
  Conversion(const std::string& source, const std::string& target, const ConversionWish& wish = {});
  ~Conversion();
  Conversion(const Conversion&) = delete;
  Conversion& operator=(const Conversion&) = delete;

  /// The two systems.
  const ConversionEnd& Source() const;
  const ConversionEnd& Target() const;
  /// Units of plane and heights instead of the systems' own.
  void SetUnits(const GridUnits& units);
  /// Whether heights come out as they go in.
  bool KeepsHeights() const;
  /// Whether points need dates.
  bool NeedsDates() const;

  /// In place. NaN in all three for a point that fails. `outcomes`, where they are given, are one for
  /// each point. Returns the number of points that were converted.
  std::size_t ToTarget(double* a, double* b, double* c, std::size_t count,
                       ConversionOutcome* outcomes = nullptr,
                       zel_cs::geomath::PointDates dates = {}) const;
  /// Back to where ToTarget came from, also where it dropped a height that the operation changes. A
  /// conversion from target to source, whose operation is another one for that, may differ from it by
  /// millimetres there.
  std::size_t ToSource(double* a, double* b, double* c, std::size_t count,
                       ConversionOutcome* outcomes = nullptr,
                       zel_cs::geomath::PointDates dates = {}) const;

  /// The operations that points may take, with their accuracy, best first: "EPSG:1314 OSGB36 to WGS 84
  /// (6), accuracy 2 m". One without a code where both systems are on one datum.
  const std::vector<std::string>& Operations() const;
  /// What the user should know: deprecated systems, heights that stay as they are, better operations
  /// whose files are missing.
  const std::vector<std::string>& Notes() const;
  /// All files that were read.
  std::vector<std::string> Files() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

/// The operations between two systems as text, best first, with what they lack.
std::string ListConversionOperations(const std::string& source, const std::string& target,
                                     const ConversionWish& wish = {});

}  // namespace geomath_files
