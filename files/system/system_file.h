#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "files/models/geoid_file.h"
#include "files/system/axis_pair.h"
#include "files/system/geo_box.h"
#include "files/system/length_unit.h"
#include "files/system/projection_names.h"
#include "files/system/site_errors.h"
#include "files/system/system_shift.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/chain/coordinate_chain.h"
#include "geomath/chain/fixed_height_datum.h"
#include "geomath/datum/datum.h"
#include "geomath/local/grid_to_ground.h"
#include "geomath/local/local_to_grid.h"
#include "geomath/proj/geo_proj.h"

namespace geomath_files {

/// A coordinate system as a file describes it: the objects of a conversion and the chain that
/// joins them. It stays where it was made, since the objects point to each other.
class CoordinateSystem {
 public:
  CoordinateSystem() = default;
  CoordinateSystem(const CoordinateSystem&) = delete;
  CoordinateSystem& operator=(const CoordinateSystem&) = delete;

  /// From global to local coordinates and back.
  const zel_cs::geomath::CoordinateChain& Chain() const { return chain_; }
  /// The ellipsoid of the projection.
  const zel_cs::geomath::Ellipsoid& LocalEllipsoid() const { return local_; }
  /// Null, with an empty name, where a system may do without.
  zel_cs::geomath::TGeoProj* Projection() const { return named_.projection.get(); }
  std::string ProjectionName() const { return named_.kind ? named_.kind->name : ""; }
  /// The same with its kind and parameters; a kind of null where there is none.
  const NamedProjection& Named() const { return named_; }
  /// What the file calls it; empty where it does not.
  const std::string& Name() const { return name_; }
  /// Null where there is none.
  const LoadedGeoid* Geoid() const { return geoid_.get(); }
  /// Those of the section "frame", then those of the list "shifts", in its order.
  const std::vector<SystemShift>& Shifts() const { return shifts_; }
  /// The same for a host that builds a chain of its own of them: this one's must not be run any more.
  std::vector<SystemShift> ReleaseShifts() { return std::move(shifts_); }
  /// The seven parameters, also those at a fixed height, which are no datum of the chain. Null where
  /// there are none.
  const zel_cs::geomath::Datum* SevenParameters() const { return datum_ ? &*datum_ : nullptr; }
  /// The height at which positions go through them, metres.
  std::optional<double> FixedHeight() const {
    return fixedHeight_ ? std::optional(fixedHeight_->Height()) : std::nullopt;
  }
  /// The date, a decimal year, of positions that come without one, before changes of frame and
  /// motions; kNoDate where the file does not say it.
  double Date() const { return date_; }
  /// The coordinate systems of its positions and of its grid, an EPSG code or WKT; empty where
  /// nothing is known, and for a grid that a site or ground moves away.
  const std::string& GeographicCrs() const { return geographicCrs_; }
  const std::string& GridCrs() const { return gridCrs_; }
  /// The uncertainty of its site's parameters; nothing where the file does not state it.
  const std::optional<SiteErrors>& SiteUncertainty() const { return siteErrors_; }
  /// The files that it names and that were read, as paths.
  const std::vector<std::string>& Files() const { return files_; }
  /// Of the local coordinates in files; those of the chain are metres.
  const GridUnits& Units() const { return units_; }
  AxisPair Geographic() const { return geographic_; }
  AxisPair Grid() const { return grid_; }
  /// Where the system is meant to be used; nothing when the file does not say it.
  const std::optional<GeoBox>& Area() const { return area_; }

 private:
  friend class SystemReader;

  std::string name_;
  zel_cs::geomath::Ellipsoid global_, local_;
  std::optional<zel_cs::geomath::Datum> datum_;
  NamedProjection named_;
  std::optional<zel_cs::geomath::FixedHeightDatum> fixedHeight_;
  std::vector<SystemShift> shifts_;
  double date_ = zel_cs::geomath::kNoDate;
  std::unique_ptr<LoadedGeoid> geoid_;
  std::vector<std::string> files_;
  std::string geographicCrs_, gridCrs_;
  std::optional<zel_cs::geomath::LocalToGrid> localization_;
  std::optional<SiteErrors> siteErrors_;
  std::optional<zel_cs::geomath::GridToGround> ground_;
  zel_cs::geomath::CoordinateChain chain_;
  GridUnits units_;
  AxisPair geographic_, grid_;
  std::optional<GeoBox> area_;
};

/// Whether a system must have a projection.
enum class ProjectionNeed { required, optional };

/// Reads a system file (docs/system-file.md), or standard input for "-", whose file names count from
/// the working directory. Throws UserError, naming the file, the key and what would be right, for
/// everything that is wrong with it.
std::unique_ptr<CoordinateSystem> ReadSystemFile(const std::string& path);

/// The text of a system file, or of standard input for "-"; throws UserError when it cannot be read.
std::string ReadSystemText(const std::string& path);

/// The system from text; `name` stands for the file in messages.
std::unique_ptr<CoordinateSystem> ParseSystem(const std::string& text, const std::string& name,
                                              ProjectionNeed need = ProjectionNeed::required);

}  // namespace geomath_files
