#include "files/design/ground.h"

#include <fmt/format.h>
#include <gdal_priv.h>
#include <ogr_geometry.h>
#include <ogr_spatialref.h>
#include <ogrsf_frmts.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "files/gdal/ogr.h"
#include "files/models/geoid_file.h"
#include "files/points/layer_crs.h"
#include "files/points/point_columns.h"
#include "files/points/point_source.h"
#include "files/system/length_unit.h"
#include "files/words/name_match.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kMostPixels = 2e6;  // of a raster that are read
constexpr const char* kWgs84 = "EPSG:4326";

using Change = std::unique_ptr<OGRCoordinateTransformation>;
using Reference = std::unique_ptr<OGRSpatialReference>;

Reference TraditionalOrder(const OGRSpatialReference& system) {
  Reference copy(system.Clone());
  copy->SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  return copy;
}

Change ChangeBetween(const std::string& name, const OGRSpatialReference& from,
                     const OGRSpatialReference& to) {
  Change change(OGRCreateCoordinateTransformation(&from, &to));
  if (!change)
    throw UserError(fmt::format("{}: its positions cannot be brought to those of the heights{}",
                                name, OgrComplaint()));
  return change;
}

// The rows of a raster's first band, with their places.
class HeightRaster {
 public:
  explicit HeightRaster(const std::string& path) : path_(path), raster_(OpenHeightFile(path)) {
    if (!raster_ || raster_->GetRasterCount() < 1)
      throw UserError(path + ": is no raster that can be read" + OgrComplaint());
    if (raster_->GetGeoTransform(t_) != CE_None || t_[1] * t_[5] - t_[2] * t_[4] == 0)
      throw UserError(path + ": the raster has no position");
    band_ = raster_->GetRasterBand(1);
    int marked = 0, scaled = 0, shifted = 0;
    noData_ = band_->GetNoDataValue(&marked);
    if (!marked) noData_ = kNaN;
    const double scale = band_->GetScale(&scaled), offset = band_->GetOffset(&shifted);
    if (scaled) scale_ = scale;
    if (shifted) offset_ = offset;
    line_.resize(static_cast<std::size_t>(Columns()));
  }

  int Rows() const { return raster_->GetRasterYSize(); }
  int Columns() const { return raster_->GetRasterXSize(); }
  const OGRSpatialReference* System() const { return raster_->GetSpatialRef(); }
  // What the values are multiplied by to be metres.
  double Metres() const {
    const std::string unit = band_->GetUnitType();
    return unit.empty() ? 1 : LengthUnitNamed(unit, path_).metres;
  }

  double X(double column, double row) const { return t_[0] + column * t_[1] + row * t_[2]; }
  double Y(double column, double row) const { return t_[3] + column * t_[4] + row * t_[5]; }
  // The pixel of a place; false outside.
  bool PixelAt(double x, double y, int& column, int& row) const {
    const double det = t_[1] * t_[5] - t_[2] * t_[4], dx = x - t_[0], dy = y - t_[3];
    const double c = std::floor((dx * t_[5] - dy * t_[2]) / det);
    const double r = std::floor((dy * t_[1] - dx * t_[4]) / det);
    if (!(c >= 0 && r >= 0 && c < Columns() && r < Rows())) return false;
    column = static_cast<int>(c);
    row = static_cast<int>(r);
    return true;
  }

  // One row, holes NaN.
  const std::vector<double>& Row(int row) {
    if (band_->RasterIO(GF_Read, 0, row, Columns(), 1, line_.data(), Columns(), 1, GDT_Float64, 0,
                        0) != CE_None)
      throw UserError(path_ + ": cannot be read to its end" + OgrComplaint());
    for (double& value : line_)
      value = value == noData_ || !std::isfinite(value) ? kNaN : scale_ * value + offset_;
    return line_;
  }

 private:
  std::string path_;
  GDALDatasetUniquePtr raster_;
  GDALRasterBand* band_ = nullptr;
  double t_[6], noData_ = kNaN, scale_ = 1, offset_ = 0;
  std::vector<double> line_;
};

// The geometries of a file in one, in longitude and latitude of a system.
std::unique_ptr<OGRGeometry> ReadShapes(const std::string& path, const OGRSpatialReference& system,
                                        bool polygons) {
  const GDALDatasetUniquePtr file = OpenPointFile(path);
  if (!file) throw UserError(path + ": is no file of features that can be read" + OgrComplaint());
  auto all = std::make_unique<OGRGeometryCollection>();
  for (OGRLayer* layer : file->GetLayers()) {
    Change change;
    if (const OGRSpatialReference* own = layer->GetSpatialRef())
      change = ChangeBetween(path, *TraditionalOrder(*own), system);
    for (const auto& feature : *layer) {
      std::unique_ptr<OGRGeometry> shape(feature->StealGeometry());
      if (!shape || shape->IsEmpty()) continue;
      if (shape->getDimension() != (polygons ? 2 : 1))
        throw UserError(fmt::format("{}, feature {}: is no {}", path, feature->GetFID(),
                                    polygons ? "polygon" : "line"));
      shape->assignSpatialReference(nullptr);
      if (change && shape->transform(change.get()) != OGRERR_NONE)
        throw UserError(
            fmt::format("{}, feature {}: cannot be brought to the system of the heights", path,
                        feature->GetFID()));
      all->addGeometryDirectly(shape.release());
    }
  }
  if (all->IsEmpty())
    throw UserError(fmt::format("{}: has no {}", path, polygons ? "polygons" : "lines"));
  return all;
}

// Stretches longitudes, so that a circle is one on the ground.
void ScaleLongitudes(OGRGeometry& shape, double factor) {
  class Stretch : public OGRDefaultGeometryVisitor {
   public:
    explicit Stretch(double factor) : factor_(factor) {}
    using OGRDefaultGeometryVisitor::visit;
    void visit(OGRPoint* point) override { point->setX(point->getX() * factor_); }

   private:
    double factor_;
  } stretch(factor);
  shape.accept(&stretch);
}

// Where points must lie.
class Region {
 public:
  Region(const GroundChoice& choice, const OGRSpatialReference& system) {
    if (!choice.area.empty()) Add(ReadShapes(choice.area, system, true), 1);
    if (choice.along.empty()) return;
    auto lines = ReadShapes(choice.along, system, false);
    OGREnvelope extent;
    lines->getEnvelope(&extent);
    const double stretch = std::cos((extent.MinY + extent.MaxY) / 2 * kRadPerDeg);
    ScaleLongitudes(*lines, stretch);
    constexpr double kMetresPerDegree = 111195;  // of a mean sphere
    std::unique_ptr<OGRGeometry> corridor(lines->Buffer(choice.corridor / kMetresPerDegree));
    if (!corridor || corridor->IsEmpty())
      throw UserError(choice.along + ": no corridor can be made along its lines" + OgrComplaint());
    Add(std::move(corridor), stretch);
  }

  bool Holds(double longitude, double latitude) const {
    return std::all_of(parts_.begin(), parts_.end(), [&](const Part& part) {
      OGRPoint at(longitude * part.stretch, latitude);
      return OGRPreparedGeometryIntersects(part.prepared.get(), OGRGeometry::ToHandle(&at)) != 0;
    });
  }

 private:
  struct Part {
    std::unique_ptr<OGRGeometry> shape;
    OGRPreparedGeometryUniquePtr prepared;
    double stretch;
  };
  void Add(std::unique_ptr<OGRGeometry> shape, double stretch) {
    OGRPreparedGeometryUniquePtr prepared(
        OGRCreatePreparedGeometry(OGRGeometry::ToHandle(shape.get())));
    if (!prepared) throw UserError("this GDAL has no GEOS, which --area and --along need");
    parts_.push_back({std::move(shape), std::move(prepared), stretch});
  }
  std::vector<Part> parts_;
};

class GroundReader {
 public:
  explicit GroundReader(const GroundChoice& choice) : choice_(choice) {
    for (const std::string* file : {&choice.heights, &choice.geoid, &choice.area, &choice.along})
      if (!file->empty()) ground_.files.push_back(*file);
  }

  Ground Read() {
    if (IsPointFile()) {
      UseSystem(CrsOf(choice_.crs.empty() ? kWgs84 : choice_.crs));
      ReadPoints();
    } else {
      ReadRaster();
      if (!choice_.weights.empty()) WeighByRaster();
    }
    if (ground_.b.empty())
      throw UserError(choice_.heights + (choice_.area.empty() && choice_.along.empty()
                                             ? ": has no heights: all of it is holes"
                                             : ": has no heights in the area"));
    if (!choice_.geoid.empty()) AddGeoid();
    return std::move(ground_);
  }

 private:
  bool IsPointFile() const {
    if (IsCsvName(choice_.heights)) return true;
    const GDALDatasetUniquePtr raster = OpenHeightFile(choice_.heights);
    return !raster || raster->GetRasterCount() < 1;
  }

  void UseSystem(Reference system) {
    if (!system->IsGeographic())
      throw UserError("--crs: must be a system of latitude and longitude, such as EPSG:4269");
    system_ = TraditionalOrder(*system);
    ground_.ellipsoid = MakeEllipsoid(system->GetSemiMajor(), system->GetInvFlattening());
    const char* const authority = system->GetAuthorityName(nullptr);
    const char* const code = system->GetAuthorityCode(nullptr);
    if (authority && code) {
      ground_.crs = fmt::format("{}:{}", authority, code);
    } else {
      char* wkt = nullptr;
      system->exportToWkt(&wkt);
      ground_.crs = wkt ? wkt : "";
      CPLFree(wkt);
    }
    region_.emplace(choice_, *system_);
  }

  void Add(double latitude, double longitude, double height, double weight) {
    if (!region_->Holds(longitude, latitude)) return;
    ground_.b.push_back(latitude * kRadPerDeg);
    // Within half a turn of each other, across the date line too.
    const double l = longitude * kRadPerDeg, first = ground_.l.empty() ? l : ground_.l.front();
    ground_.l.push_back(first + std::remainder(l - first, kTwoPi));
    ground_.h.push_back(height);
    ground_.weight.push_back(weight);
  }

  void ReadRaster() {
    HeightRaster raster(choice_.heights);
    Reference own(raster.System() ? raster.System()->Clone() : nullptr);
    if (!own) {
      own = CrsOf(choice_.crs.empty() ? kWgs84 : choice_.crs);
      ground_.notes.push_back(choice_.heights + ": names no coordinate system; taken for " +
                              (choice_.crs.empty() ? "WGS 84" : choice_.crs));
    }
    UseSystem(choice_.crs.empty() ? Reference(own->CloneGeogCS()) : CrsOf(choice_.crs));
    const bool byArea = own->IsGeographic();
    const Change change = ChangeBetween(choice_.heights, *TraditionalOrder(*own), *system_);
    const double pixels = static_cast<double>(raster.Rows()) * raster.Columns();
    const int step = std::max(1, static_cast<int>(std::ceil(std::sqrt(pixels / kMostPixels))));
    if (step > 1)
      ground_.notes.push_back(fmt::format("{}: every {}th pixel of every {}th row is read",
                                          choice_.heights, step, step));
    const double metres = raster.Metres();
    std::vector<double> x, y, h;
    for (int row = step / 2; row < raster.Rows(); row += step) {
      const std::vector<double>& line = raster.Row(row);
      for (std::vector<double>* column : {&x, &y, &h}) column->clear();
      for (int column = step / 2; column < raster.Columns(); column += step) {
        if (std::isnan(line[static_cast<std::size_t>(column)])) continue;
        x.push_back(raster.X(column + 0.5, row + 0.5));
        y.push_back(raster.Y(column + 0.5, row + 0.5));
        h.push_back(line[static_cast<std::size_t>(column)] * metres);
      }
      if (x.empty()) continue;
      change->Transform(static_cast<int>(x.size()), x.data(), y.data());
      for (std::size_t i = 0; i < x.size(); ++i)
        if (std::isfinite(x[i]) && std::abs(y[i]) <= 90)
          Add(y[i], x[i], h[i], byArea ? std::cos(y[i] * kRadPerDeg) : 1);
    }
  }

  void ReadPoints() {
    const auto source = OpenPoints(choice_.heights, choice_.layer);
    ColumnChoice columns;
    columns.crs = ground_.crs;
    PointColumns reader(*source, CoordinateKind::geographic, columns);
    std::optional<std::size_t> weights;
    if (!choice_.weights.empty()) {
      const std::vector<std::string> names = source->ColumnNames();
      const auto at = std::find(names.begin(), names.end(), choice_.weights);
      if (at == names.end())
        throw UserError(fmt::format("{}: there is no column \"{}\"; {}", source->Name(),
                                    choice_.weights, SuggestName(choice_.weights, names)));
      weights = static_cast<std::size_t>(at - names.begin());
    }
    long long left = 0;
    std::string first;
    PointsRead read = reader.Start();
    Record record;
    std::array<double, 3> point;
    while (source->Next(record)) {
      if (record.IsBlank()) continue;
      std::string problem = source->Problem(record);
      if (problem.empty()) problem = reader.Read(record, read, point);
      ParsedNumber weight{1, ""};
      if (problem.empty() && weights) {
        weight = ParseNumber(record.Text(*weights));
        problem = weight.problem;
        if (problem.empty() && weight.value < 0) problem = "a weight below 0";
      }
      if (problem.empty()) {
        Add(point[0], point[1], point[2], weight.value);
      } else if (++left == 1) {
        first = source->Place(record) + ": " + problem;
      }
    }
    if (!reader.Note().empty()) ground_.notes.push_back(reader.Note());
    if (left > 0)
      ground_.notes.push_back(
          fmt::format("{}: {} rows are left out, the first {}", source->Name(), left, first));
  }

  void WeighByRaster() {
    ground_.files.push_back(choice_.weights);
    HeightRaster raster(choice_.weights);
    Change change;
    if (raster.System())
      change = ChangeBetween(choice_.weights, *system_, *TraditionalOrder(*raster.System()));
    // Row by row: each pixel is read once.
    struct Asked {
      int row, column;
      std::size_t point;
    };
    std::vector<Asked> asked;
    for (std::size_t i = 0; i < ground_.b.size(); ++i) {
      double x = ground_.l[i] * kDegPerRad, y = ground_.b[i] * kDegPerRad;
      Asked at{0, 0, i};
      ground_.weight[i] = 0;
      if ((!change || change->Transform(1, &x, &y)) && raster.PixelAt(x, y, at.column, at.row))
        asked.push_back(at);
    }
    std::stable_sort(asked.begin(), asked.end(),
                     [](const Asked& one, const Asked& other) { return one.row < other.row; });
    int row = -1;
    const std::vector<double>* line = nullptr;
    for (const Asked& at : asked) {
      if (at.row != row) line = &raster.Row(row = at.row);
      const double weight = (*line)[static_cast<std::size_t>(at.column)];
      ground_.weight[at.point] = weight > 0 ? weight : 0;
    }
  }

  void AddGeoid() {
    GeoidChoice choice;
    (SuffixOf(choice_.geoid) == ".gfc" ? choice.model : choice.grid) = choice_.geoid;
    const auto geoid = OpenGeoid(choice);
    std::vector<double> N(ground_.b.size());
    geoid->Heights().Heights(ground_.b.data(), ground_.l.data(), N.data(), N.size());
    std::size_t outside = 0;
    for (std::size_t i = 0; i < N.size(); ++i) {
      ground_.h[i] += N[i];
      outside += std::isnan(N[i]);
    }
    if (outside == N.size())
      throw UserError(choice_.geoid + ": has no height at any of the points");
    if (outside > 0)
      ground_.notes.push_back(fmt::format("{}: has no height at {} points, which are left out",
                                          choice_.geoid, outside));
  }

  const GroundChoice& choice_;
  Reference system_;
  std::optional<Region> region_;
  Ground ground_;
};

}  // namespace

Ground ReadGround(const GroundChoice& choice) { return GroundReader(choice).Read(); }

}  // namespace geomath_files
