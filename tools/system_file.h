#pragma once

#include <memory>
#include <optional>
#include <string>

#include "geomath/base/ellipsoid.h"
#include "geomath/chain/coordinate_chain.h"
#include "geomath/datum/datum.h"
#include "geomath/proj/geo_proj.h"
#include "tools/geoid_file.h"

namespace geomath_tools {

/// Where the north-south coordinate of a pair stands in the caller's axes, as a column of its own:
/// the chain takes pairs in the order of the axes text, files hold columns with names.
struct AxisPair {
  bool northFirst = true;
};

/// A coordinate system as a file describes it: the objects of a conversion and the chain that
/// joins them. It stays where it was made, since the objects point to each other.
class CoordinateSystem {
 public:
  CoordinateSystem() = default;
  CoordinateSystem(const CoordinateSystem&) = delete;
  CoordinateSystem& operator=(const CoordinateSystem&) = delete;

  const zel_cs::geomath::CoordinateChain& Chain() const { return chain_; }
  AxisPair Geographic() const { return geographic_; }
  AxisPair Grid() const { return grid_; }

 private:
  friend class SystemReader;

  zel_cs::geomath::Ellipsoid global_, local_;
  std::optional<zel_cs::geomath::Datum> datum_;
  std::unique_ptr<zel_cs::geomath::TGeoProj> projection_;
  std::unique_ptr<LoadedGeoid> geoid_;
  zel_cs::geomath::CoordinateChain chain_;
  AxisPair geographic_, grid_;
};

/// Reads a system file (docs/system-file.md). Throws UserError, naming the file, the key and what
/// would be right, for everything that is wrong with it.
std::unique_ptr<CoordinateSystem> ReadSystemFile(const std::string& path);

/// The same from text; `name` stands for the file in messages.
std::unique_ptr<CoordinateSystem> ParseSystem(const std::string& text, const std::string& name);

}  // namespace geomath_tools
