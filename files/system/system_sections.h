#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "files/system/axis_pair.h"
#include "files/system/json_section.h"
#include "files/system/projection_names.h"
#include "files/system/site_errors.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/datum/datum.h"
#include "geomath/frame/frame_table.h"
#include "geomath/local/grid_to_ground.h"
#include "geomath/local/local_to_grid.h"
#include "geomath/proj/geo_proj.h"

/// The sections of a system file (docs/system-file.md) that stand for themselves, for the reader of
/// whole files and for callers that have the same values from elsewhere. Everything wrong with a
/// section throws UserError, naming the key and what would be right.
namespace geomath_files {

/// Keys of an ellipsoid: a name, or a and one of the other two.
inline constexpr std::string_view kEllipsoidKeys[] = {"ellipsoid", "a", "invF", "b"};
zel_cs::geomath::Ellipsoid ReadEllipsoid(const JsonSection& section);

inline constexpr std::string_view kDatumKeys[] = {"dX", "dY", "dZ",  "rX",
                                                  "rY", "rZ", "ppm", "rotation"};
/// The datum on `local`, which it keeps a pointer to.
zel_cs::geomath::Datum ReadDatum(const JsonSection& section, zel_cs::geomath::Ellipsoid* local);

/// A section whose keys depend on its name: where it stands, and how its keys are matched.
struct ProjectionSection {
  std::string file, path;
  const nlohmann::json& object;
  KeySpelling spelling;
};
/// The projection on the ellipsoid of semi-major axis `a` (metres) and inverse flattening `invF`.
NamedProjection ReadProjection(const ProjectionSection& source, double a, double invF);

/// The directions of a pair's coordinates, as AxisRotation knows them.
struct AxisText {
  const char* text;  ///< "NE", "SW", …
  AxisPair pair;
};
/// The axes at a key; null when it is absent.
const AxisText* ReadAxisPair(const JsonSection& section, std::string_view key);

/// The axes of a text that stands for some; north and east for every other.
AxisPair AxisPairOf(const std::string& text);

/// Parameters of the section "localization": the plane parameters of LocalToGrid in index order
/// (metres, scale, radians), then its height parameters.
inline constexpr int kPlaneKeys = 4, kHeightKeys = 3;
inline const std::string kLocalizationKeys[] = {"shiftN", "shiftE", "scale", "rotation",
                                                "shiftH", "slopeN", "slopeE"};
/// The key that stands in place of "rotation": degrees, as all angles of a file but that one are.
inline const std::string kRotationDegrees = "rotationDegrees";

/// The site calibration. A part, horizontal or vertical, is given whole or not at all.
zel_cs::geomath::LocalToGrid ReadLocalization(const JsonSection& section);
/// The section of a site calibration, with its rotation in degrees.
nlohmann::ordered_json LocalizationSection(const zel_cs::geomath::LocalToGrid& site);

/// The uncertainty of a site calibration, in its section.
inline const std::string kSiteErrorsKey = "covariance";
inline constexpr std::string_view kSiteErrorsKeys[] = {"pivotN", "pivotE", "plane", "height"};
/// The section of that name, and what writes it.
SiteErrors ReadSiteErrors(const JsonSection& section);
nlohmann::ordered_json SiteErrorsSection(const SiteErrors& errors);
/// All keys that the section may have.
std::vector<std::string_view> LocalizationKeys();

/// Keys of a ground system: a scale, or the two that it is derived from; the others may be absent.
inline constexpr std::string_view kGroundKeys[] = {"scale",    "height",  "gridScaleFactor",
                                                   "rotation", "originN", "originE",
                                                   "offsetN",  "offsetE", "enabled"};
zel_cs::geomath::GridToGround ReadGround(const JsonSection& section);

/// A date as a decimal year: a number, or a text that ParseDate takes.
double ReadDate(const JsonSection& section, std::string_view key);
/// A frame of the library's table by its name.
zel_cs::geomath::ReferenceFrame ReadFrameName(const JsonSection& section, std::string_view key);
/// What is said of a name that is none of a frame, and which there are.
std::string UnknownFrame(const std::string& name);

/// One of the known words at a key; empty when it is absent.
std::string ReadWord(const JsonSection& section, std::string_view key,
                     std::span<const std::string_view> known);
inline std::string ReadWord(const JsonSection& section, std::string_view key,
                            std::initializer_list<std::string_view> known) {
  return ReadWord(section, key, std::span(known.begin(), known.size()));
}

}  // namespace geomath_files
