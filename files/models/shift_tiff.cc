#include "files/models/shift_tiff.h"

#include <cpl_vsi.h>
#include <fmt/format.h>
#include <gdal_priv.h>
#include <ogr_spatialref.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <span>
#include <utility>
#include <vector>

#include "files/gdal/ogr.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "geomath/frame/velocity_grid.h"
#include "geomath/shift/shift_grid.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

constexpr double kRadPerSecond = kRadPerDeg / 3600;

enum class Quantity { angle, length, velocity };
using enum Quantity;

const char* NameOf(Quantity quantity) {
  constexpr const char* kNames[] = {"angle", "length", "velocity"};
  return kNames[static_cast<std::size_t>(quantity)];
}

// The unit of samples that name none, for each quantity.
constexpr const char* kUsualUnits[] = {"arc-second", "metre", "millimetres per year"};

struct Unit {
  const char* name;
  Quantity quantity;
  double size;  // radians, metres, metres a year
};
constexpr Unit kUnits[] = {{"arc-second", angle, kRadPerSecond},
                           {"arcsec", angle, kRadPerSecond},
                           {"degree", angle, kRadPerDeg},
                           {"radian", angle, 1},
                           {"metre", length, 1},
                           {"meter", length, 1},
                           {"m", length, 1},
                           {"decimetre", length, 0.1},
                           {"centimetre", length, 0.01},
                           {"cm", length, 0.01},
                           {"millimetre", length, 0.001},
                           {"mm", length, 0.001},
                           {"millimetres per year", velocity, 0.001},
                           {"millimetre per year", velocity, 0.001},
                           {"mm/year", velocity, 0.001},
                           {"mm/yr", velocity, 0.001},
                           {"metres per year", velocity, 1},
                           {"metre per year", velocity, 1},
                           {"m/year", velocity, 1},
                           {"m/yr", velocity, 1}};

// What a sample holds. Names are compared folded, so that "easting_offset" is "easting offset".
struct Role {
  std::vector<const char*> names;
  Quantity quantity;
  double sign = 1;
  const char* unit = nullptr;  // of samples that name none, where it is not the usual one
};

// What a TYPE is made of: components in the order of the library.
struct Layout {
  const char* type;
  ShiftSpace space;
  ShiftComponents components;
  std::vector<Role> roles;
  std::vector<int> bands;  // of the roles in a file without descriptions, from 0
};

const Role kLatitude{{"latitude_offset"}, angle}, kLongitude{{"longitude_offset"}, angle};
const Role kHeight{{"ellipsoidal_height_offset"}, length};

const Layout kLayouts[] = {
    {"HORIZONTAL_OFFSET",
     ShiftSpace::geographic,
     ShiftComponents::horizontal,
     {kLatitude, kLongitude},
     {0, 1}},
    {"HORIZONTAL_OFFSET",
     ShiftSpace::plane,
     ShiftComponents::horizontal,
     {{{"northing_offset", "northing_shift"}, length},
      {{"easting_offset", "easting_shift"}, length}},
     {1, 0}},
    {"GEOGRAPHIC_3D_OFFSET",
     ShiftSpace::geographic,
     ShiftComponents::horizontalAndVertical,
     {kLatitude, kLongitude, kHeight},
     {0, 1, 2}},
    {"ELLIPSOIDAL_HEIGHT_OFFSET",
     ShiftSpace::geographic,
     ShiftComponents::vertical,
     {kHeight},
     {0}},
    {"VERTICAL_OFFSET_GEOGRAPHIC_TO_VERTICAL",
     ShiftSpace::geographic,
     ShiftComponents::vertical,
     {{{"geoid_undulation"}, length, -1}},
     {0}},
    {"VERTICAL_OFFSET_VERTICAL_TO_VERTICAL",
     ShiftSpace::geographic,
     ShiftComponents::vertical,
     {{{"vertical_offset"}, length}},
     {0}},
    {"GEOCENTRIC_TRANSLATION",
     ShiftSpace::geocentric,
     ShiftComponents::horizontalAndVertical,
     {{{"x_translation"}, length}, {{"y_translation"}, length}, {{"z_translation"}, length}},
     {0, 1, 2}},
    {"VELOCITY",
     ShiftSpace::geographic,
     ShiftComponents::horizontalAndVertical,
     {{{"north_velocity"}, velocity}, {{"east_velocity"}, velocity}, {{"up_velocity"}, velocity}},
     {1, 0, 2}},
};

// Of a grid of a deformation model, which a file is known to be.
Layout LayoutOf(const DisplacementSamples& samples) {
  const Quantity horizontal = samples.angles ? angle : length;
  const Role north{{"north_offset"}, horizontal, 1, samples.angles ? "degree" : nullptr};
  Role east = north;
  east.names = {"east_offset"};
  const Role up{{"vertical_offset"}, length};
  Layout layout{"", ShiftSpace::geographic, samples.components, {north, east, up}, {1, 0, 2}};
  if (samples.components == ShiftComponents::horizontal) {
    layout.roles.pop_back();
  } else if (samples.components == ShiftComponents::vertical) {
    layout.roles = {up};
    layout.bands = {0};
  }
  return layout;
}

// The bytes as a file that GDAL opens, without a neighbour that it could look for.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& bytes) {
    static std::atomic<unsigned> count{0};
    path_ = fmt::format("/vsimem/geomath_shift_{}/grid.tif", ++count);
    auto* data = reinterpret_cast<GByte*>(const_cast<char*>(bytes.data()));  // only read
    VSIFCloseL(VSIFileFromMemBuffer(path_.c_str(), data, bytes.size(), FALSE));
  }
  ~MemoryFile() { VSIUnlink(path_.c_str()); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  GDALDatasetUniquePtr Open(int page) const {
    constexpr const char* kDrivers[] = {"GTiff", nullptr};
    const std::string name = page == 1 ? path_ : fmt::format("GTIFF_DIR:{}:{}", page, path_);
    return GDALDatasetUniquePtr(
        GDALDataset::Open(name.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, kDrivers));
  }

 private:
  std::string path_;
};

class TiffReader {
 public:
  // With a layout, the file is known to have it.
  TiffReader(const std::string& bytes, const ShiftChoice& choice, const Layout* layout = nullptr)
      : choice_(choice), file_(bytes), layout_(layout) {}

  std::unique_ptr<CoordinateShift> Read() {
    PrepareOgr();
    const GDALDatasetUniquePtr first = OpenPage();
    ReadHead(*first);
    ReadParts(*first);
    return Make(*first);
  }

  std::vector<ShiftGridPart> ReadDisplacements() {
    PrepareOgr();
    const GDALDatasetUniquePtr first = OpenPage();
    type_ = TextOf(*first, "TYPE");
    if (const OGRSpatialReference* system = first->GetSpatialRef(); system && system->IsProjected())
      Refuse("is on a projection; displacements are at latitudes and longitudes");
    ReadParts(*first);
    RefuseOffsets();
    return std::move(parts_);
  }

 private:
  struct Nesting {
    std::string parent;
    double north, east;
  };

  void ReadParts(GDALDataset& first) {
    ReadPart(first);
    const int pages = CSLCount(first.GetMetadata("SUBDATASETS")) / 2;  // a name and a description
    if (pages > ShiftGrid::kMaxParts) Refuse("has more grids than any file of shifts");
    while (page_ < pages) {
      ++page_;
      const GDALDatasetUniquePtr next = OpenPage();
      if (const std::string type = TextOf(*next, "TYPE"); !type.empty() && type != type_)
        Refuse(fmt::format("is of the TYPE \"{}\", the first grid is not", Printable(type)));
      ReadPart(*next);
    }
    Nest();
  }

  [[noreturn]] void Refuse(const std::string& reason) const {
    throw UserError(fmt::format("{}: directory {}: {}", choice_.file, page_, reason));
  }

  static std::string TextOf(GDALMajorObject& object, const char* key) {
    const char* text = object.GetMetadataItem(key);
    return text ? text : "";
  }

  GDALDatasetUniquePtr OpenPage() const {
    GDALDatasetUniquePtr page = file_.Open(page_);
    if (!page || page->GetRasterCount() < 1) Refuse("cannot be read" + OgrComplaint());
    return page;
  }

  // What holds for the whole file.
  void ReadHead(GDALDataset& first) {
    type_ = TextOf(first, "TYPE");
    const OGRSpatialReference* system = first.GetSpatialRef();
    const bool plane = system ? system->IsProjected() : FindBand(first, kLayouts[1].roles[0]) > 0;
    for (const Layout& layout : kLayouts) {
      const bool typed =
          type_.empty() ? FindBand(first, layout.roles[0]) > 0 : layout.type == type_;
      const bool placed = layout.components == ShiftComponents::vertical ||
                          plane == (layout.space == ShiftSpace::plane);
      if (typed && placed) {
        layout_ = &layout;
        break;
      }
    }
    if (!layout_)
      Refuse(type_.empty()
                 ? "says neither by its TYPE nor by its samples what it holds"
                 : fmt::format("is of the TYPE \"{}\", which is no shift", Printable(type_)));
    space_ = plane ? ShiftSpace::plane : layout_->space;
    if (system && plane && system->GetLinearUnits() != 1)
      Refuse("is on a projection in another unit than the metre");
    const std::string method = TextOf(first, "interpolation_method");
    if (!method.empty() && method != "bilinear" && method != "biquadratic")
      Refuse(
          fmt::format("has the interpolation_method \"{}\"; \"bilinear\" and \"biquadratic\" are "
                      "known",
                      Printable(method)));
    biquadratic_ = method == "biquadratic";
  }

  // The band of a role from 1 on, 0 where no description is one of its names.
  static int FindBand(GDALDataset& page, const Role& role, const char* suffix = "") {
    for (int band = 1; band <= page.GetRasterCount(); ++band) {
      const std::string description = FoldName(page.GetRasterBand(band)->GetDescription());
      for (const char* name : role.names)
        if (description == FoldName(std::string(name) + suffix)) return band;
    }
    return 0;
  }

  static bool IsDescribed(GDALDataset& page) {
    for (GDALRasterBand* band : page.GetBands())
      if (*band->GetDescription()) return true;
    return false;
  }

  void ReadPart(GDALDataset& page) {
    ShiftGridPart part;
    const std::string name = TextOf(page, "grid_name");
    part.name = name.empty() ? fmt::format("directory {}", page_) : Printable(name);
    const bool northFirst = PlaceNodes(page, part);
    const std::size_t components = layout_->roles.size();
    std::array<int, 3> bands{}, accuracies{};
    for (std::size_t k = 0; k < components; ++k) {
      const Role& role = layout_->roles[k];
      bands[k] = IsDescribed(page) ? FindBand(page, role) : layout_->bands[k] + 1;
      accuracies[k] = FindBand(page, role, "_accuracy");
      if (bands[k] < 1 || bands[k] > page.GetRasterCount())
        Refuse(fmt::format("has no sample \"{}\"", role.names[0]));
    }
    part.values = ReadNodes(page, std::span(bands).first(components), northFirst, true);
    const std::span<const int> stated = std::span(accuracies).first(components);
    if (std::find(stated.begin(), stated.end(), 0) == stated.end())
      part.accuracies = ReadNodes(page, stated, northFirst, false);
    nesting_.push_back({TextOf(page, "parent_grid_name"),
                        part.south + (part.rows - 1) * part.northStep,
                        part.west + (part.columns - 1) * part.eastStep});
    names_.push_back(name);
    parts_.push_back(std::move(part));
  }

  // Nodes are the centres of pixels. Whether the first row is the northernmost.
  bool PlaceNodes(GDALDataset& page, ShiftGridPart& part) const {
    double t[6];
    if (page.GetGeoTransform(t) != CE_None || t[2] != 0 || t[4] != 0 || !(t[1] > 0) || t[5] == 0)
      Refuse("the grid has no position, or is rotated");
    const double unit = space_ == ShiftSpace::plane ? 1 : kRadPerDeg;
    part.columns = page.GetRasterXSize();
    part.rows = page.GetRasterYSize();
    constexpr double kMostNodes = 2e8;  // of a part; the largest published grids have a tenth
    if (static_cast<double>(part.columns) * part.rows > kMostNodes)
      Refuse(fmt::format("{} x {} nodes are more than any grid of shifts has", part.columns,
                         part.rows));
    const double first = t[3] + t[5] / 2;
    const bool northFirst = t[5] < 0;
    part.northStep = std::abs(t[5]) * unit;
    part.eastStep = t[1] * unit;
    part.south = (northFirst ? first + (part.rows - 1) * t[5] : first) * unit;
    part.west = (t[0] + t[1] / 2) * unit;
    return northFirst;
  }

  // The nodes of some bands side by side, rows from the south.
  std::vector<float> ReadNodes(GDALDataset& page, std::span<const int> bands, bool northFirst,
                               bool shifts) {
    const int columns = page.GetRasterXSize(), rows = page.GetRasterYSize();
    const auto width = static_cast<std::size_t>(columns);
    std::vector<float> nodes(width * static_cast<std::size_t>(rows) * bands.size());
    std::vector<double> line(width);
    for (std::size_t k = 0; k < bands.size(); ++k) {
      GDALRasterBand& band = *page.GetRasterBand(bands[k]);
      const Scaling scaling = ScalingOf(band, layout_->roles[k], shifts);
      if (shifts) KeepOffset(band, k, scaling.unit);
      for (int row = 0; row < rows; ++row) {
        if (band.RasterIO(GF_Read, 0, northFirst ? rows - 1 - row : row, columns, 1, line.data(),
                          columns, 1, GDT_Float64, 0, 0) != CE_None)
          Refuse("cannot be read to its end" + OgrComplaint());
        float* node = &nodes[static_cast<std::size_t>(row) * width * bands.size() + k];
        for (std::size_t i = 0; i < width; ++i, node += bands.size())
          *node = scaling.Apply(line[i]);
      }
    }
    return nodes;
  }

  struct Scaling {
    double scale = 1, offset = 0, unit = 1;
    std::optional<double> hole;
    float Apply(double raw) const {
      if ((hole && raw == *hole) || !std::isfinite(raw))
        return std::numeric_limits<float>::quiet_NaN();
      return static_cast<float>((raw * scale + offset) * unit);
    }
  };

  Scaling ScalingOf(GDALRasterBand& band, const Role& role, bool shift) const {
    Scaling s;
    int marked = 0, scaled = 0, shifted = 0;
    const double noData = band.GetNoDataValue(&marked);
    if (marked && band.GetRasterDataType() == GDT_Float32)
      s.hole = static_cast<float>(noData);
    else if (marked)
      s.hole = noData;
    const double scale = band.GetScale(&scaled), offset = band.GetOffset(&shifted);
    if (scaled) s.scale = scale;
    if (shifted) s.offset = offset;
    if (s.scale == 0 || !std::isfinite(s.scale) || !std::isfinite(s.offset))
      Refuse(fmt::format("a sample has the scale {} and the offset {}", s.scale, s.offset));
    if (!shift) return s;
    s.unit = role.sign * UnitOf(band, role, s.scale != 1);
    const std::string positive = TextOf(band, "positive_value");
    if (!positive.empty() && positive != "east" && positive != "west" && positive != "north")
      Refuse(fmt::format("has the positive_value \"{}\"", Printable(positive)));
    if (positive == "west") s.unit = -s.unit;
    return s;
  }

  // A geodetic TIFF states the unit of scaled values; of another file nobody knows whether the unit
  // is that of the values before or behind the scale.
  double UnitOf(GDALRasterBand& band, const Role& role, bool scaled) const {
    std::string name = band.GetUnitType();
    if (type_.empty() && scaled && choice_.unit.empty())
      Refuse(
          fmt::format("is no geodetic TIFF (no TYPE) and has scaled values: say their \"unit\" "
                      "(\"metre\") behind the scale; the file says \"{}\"",
                      Printable(name)));
    if (type_.empty() && !choice_.unit.empty()) name = choice_.unit;
    if (name.empty())
      name = role.unit ? role.unit : kUsualUnits[static_cast<std::size_t>(role.quantity)];
    for (const Unit& unit : kUnits)
      if (SameName(unit.name, name) && unit.quantity == role.quantity) return unit.size;
    Refuse(fmt::format("has the unit \"{}\", which is no {} that is known", Printable(name),
                       NameOf(role.quantity)));
  }

  // What is added to every shifted coordinate, the same in all grids.
  void KeepOffset(GDALRasterBand& band, std::size_t component, double unit) {
    const std::string text = TextOf(band, "constant_offset");
    double offset = 0;
    if (!text.empty()) {
      char* end = nullptr;
      offset = CPLStrtod(text.c_str(), &end) * unit;
      if (*end || !std::isfinite(offset))
        Refuse(fmt::format("has the constant_offset \"{}\"", Printable(text)));
    }
    if (page_ > 1 && offset != offset_[component])
      Refuse("has another constant_offset than the first grid");
    offset_[component] = offset;
  }

  void RefuseOffsets() {
    page_ = 1;
    if (offset_ != std::array<double, 3>{})
      Refuse("has a constant_offset, which only shifts of coordinates have");
  }

  void Nest() {
    for (page_ = 1; page_ <= static_cast<int>(parts_.size()); ++page_) {
      std::size_t at = Index(), steps = 0;
      for (std::size_t parent; (parent = ParentOf(at)) != parts_.size(); at = parent)
        if (++steps > parts_.size()) Refuse("is its own parent");
      parts_[Index()].level = static_cast<int>(steps);
    }
  }

  std::size_t Index() const { return static_cast<std::size_t>(page_) - 1; }

  // Its number, or that of parts where there is none.
  std::size_t ParentOf(std::size_t child) const {
    const std::string& name = nesting_[child].parent;
    if (!name.empty()) {
      for (std::size_t i = 0; i < names_.size(); ++i)
        if (names_[i] == name) return i;
      Refuse(fmt::format("its parent \"{}\" is not in the file", Printable(name)));
    }
    std::size_t smallest = parts_.size();
    for (std::size_t i = 0; i < parts_.size(); ++i)
      if (Surface(i) > Surface(child) * (1 + kRounding) && Contains(i, child) &&
          (smallest == parts_.size() || Surface(i) < Surface(smallest)))
        smallest = i;
    return smallest;
  }

  static constexpr double kRounding = 1e-6;  // of extents, in steps and as a part of a surface

  double Surface(std::size_t i) const {
    return (nesting_[i].north - parts_[i].south) * (nesting_[i].east - parts_[i].west);
  }

  bool Contains(std::size_t outer, std::size_t inner) const {
    const ShiftGridPart &o = parts_[outer], &p = parts_[inner];
    const double dn = kRounding * o.northStep, de = kRounding * o.eastStep;
    return p.south >= o.south - dn && p.west >= o.west - de &&
           nesting_[inner].north <= nesting_[outer].north + dn &&
           nesting_[inner].east <= nesting_[outer].east + de;
  }

  std::unique_ptr<CoordinateShift> Make(GDALDataset& first) {
    std::string reason;
    std::unique_ptr<CoordinateShift> made;
    if (layout_->roles[0].quantity == velocity) {
      made = VelocityGrid::Make(Velocities(first), &reason);
    } else if (space_ == ShiftSpace::geocentric) {
      made = GeocentricShiftGrid::Make(Geocentric(first), &reason);
    } else {
      ShiftGridDefinition definition;
      definition.space = space_;
      definition.components = layout_->components;
      definition.interpolation =
          biquadratic_ ? ShiftInterpolation::biquadratic : ShiftInterpolation::bilinear;
      definition.northOffset = offset_[0];
      definition.eastOffset = offset_[1];
      definition.parts = std::move(parts_);
      made = ShiftGrid::Make(std::move(definition), &reason);
    }
    if (!made) throw UserError(fmt::format("{}: {}", choice_.file, reason));
    return made;
  }

  // The system of the file is that of the positions at which it is looked up.
  Ellipsoid EllipsoidIn(GDALDataset& first) {
    page_ = 1;
    const OGRSpatialReference* system = first.GetSpatialRef();
    if (!system) Refuse("does not say on which ellipsoid its positions are");
    return MakeEllipsoid(system->GetSemiMajor(), system->GetInvFlattening());
  }

  VelocityGridDefinition Velocities(GDALDataset& first) {
    if (!choice_.epoch)
      throw UserError(choice_.file +
                      ": velocities lead from the positions at one date: say it by \"epoch\"");
    RefuseOffsets();
    VelocityGridDefinition definition;
    definition.ellipsoid = EllipsoidIn(first);
    definition.unit = 1;
    definition.epoch = *choice_.epoch;
    definition.parts = std::move(parts_);
    return definition;
  }

  GeocentricShiftGridDefinition Geocentric(GDALDataset& first) {
    const Ellipsoid ellipsoid = EllipsoidIn(first);
    if (!choice_.position)
      throw UserError(choice_.file +
                      ": translations are looked up at a position: say whether it is that of the "
                      "\"source\" or of the \"target\"");
    GeocentricShiftGridDefinition definition;
    definition.ellipsoid = ellipsoid;
    definition.position = *choice_.position;
    definition.parts = std::move(parts_);
    return definition;
  }

  const ShiftChoice& choice_;
  MemoryFile file_;
  const Layout* layout_;
  int page_ = 1;
  std::string type_;
  ShiftSpace space_ = ShiftSpace::geographic;
  bool biquadratic_ = false;
  std::array<double, 3> offset_{};
  std::vector<ShiftGridPart> parts_;
  std::vector<std::string> names_;  // as stored
  std::vector<Nesting> nesting_;
};

}  // namespace

std::unique_ptr<CoordinateShift> ParseShiftTiff(const std::string& bytes,
                                                const ShiftChoice& choice) {
  return TiffReader(bytes, choice).Read();
}

std::vector<ShiftGridPart> ParseDisplacementTiff(const std::string& bytes, const std::string& file,
                                                 const DisplacementSamples& samples) {
  const Layout layout = LayoutOf(samples);
  return TiffReader(bytes, {.file = file}, &layout).ReadDisplacements();
}

}  // namespace geomath_files
