#include "files/conversion/layer_conversion.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "files/gdal/ogr.h"
#include "files/gdal/ogr_output.h"
#include "files/points/point_sink.h"
#include "files/words/name_match.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"

namespace geomath_files {
namespace {

// Which positions a format has by its own definition.
enum class Positions { any, geographic, wgs84 };

// A format of the output.
struct Format {
  const char* suffix;
  const char* driver;
  const char* title;
  Positions positions = Positions::any;
  bool severalLayers = false;
  std::vector<const char*> layerOptions = {nullptr};  // of GDAL
  bool needsGeometry = false;                         // of every feature
};
const Format kFormats[] = {
    {".gpkg", "GPKG", "a GeoPackage", Positions::any, true},
    {".shp", "ESRI Shapefile", "a Shapefile", Positions::any, false, {"ENCODING=UTF-8", nullptr}},
    // Hundredths of a micrometre: RFC 7946 asks for few digits, and the way back for these.
    {".geojson",
     "GeoJSON",
     "GeoJSON",
     Positions::geographic,
     false,
     {"COORDINATE_PRECISION=13", nullptr}},
    {".json",
     "GeoJSON",
     "GeoJSON",
     Positions::geographic,
     false,
     {"COORDINATE_PRECISION=13", nullptr}},
    {".fgb", "FlatGeobuf", "FlatGeobuf"},
    {".dxf", "DXF", "DXF", Positions::any, false, {nullptr}, true},
    {".kml", "LIBKML", "KML", Positions::wgs84, true},
    {".csv", "CSV", "CSV", Positions::any, false, {"GEOMETRY=AS_WKT", "CREATE_CSVT=NO", nullptr}},
    {".parquet", "Parquet", "Parquet"},
    {".arrow", "Arrow", "Arrow"},
};

const Format* FindFormat(const std::string& path) {
  const std::string suffix = SuffixOf(path);
  const auto found = std::find_if(std::begin(kFormats), std::end(kFormats),
                                  [&](const Format& format) { return suffix == format.suffix; });
  return found == std::end(kFormats) ? nullptr : found;
}

const Format& FormatOf(const std::string& path) {
  if (const Format* format = FindFormat(path)) return *format;
  std::vector<std::string> known;
  for (const Format& format : kFormats) known.emplace_back(format.suffix);
  throw UserError(
      fmt::format("{}: the suffix chooses the format: {}", path, fmt::join(known, " ")));
}

GDALDatasetUniquePtr OpenLayers(const std::string& path) {
  static_cast<void>(OpenInput(path));  // says plainly why a file cannot be read
  GDALDatasetUniquePtr dataset = OpenPointFile(path);
  if (!dataset)
    throw UserError(fmt::format("{}: is no point file that is known here{}", path, OgrComplaint()));
  return dataset;
}

std::vector<OGRLayer*> ChooseLayers(GDALDataset& dataset, const std::string& path,
                                    const std::string& wanted) {
  std::vector<OGRLayer*> layers;
  std::vector<std::string> names;
  for (OGRLayer* layer : dataset.GetLayers()) {
    names.emplace_back(layer->GetName());
    if (wanted.empty() || names.back() == wanted) layers.push_back(layer);
  }
  if (names.empty()) throw UserError(path + ": holds no layer");
  if (layers.empty())
    throw UserError(
        fmt::format("{}: no layer \"{}\"; {}", path, wanted, SuggestName(wanted, names)));
  return layers;
}

// Whether no feature is more than a point. A layer of any kind is looked through.
bool HasOnlyPoints(OGRLayer& layer) {
  const OGRwkbGeometryType type = wkbFlatten(layer.GetGeomType());
  if (type != wkbUnknown) return type == wkbPoint || type == wkbNone;
  layer.ResetReading();
  for (OGRFeatureUniquePtr feature(layer.GetNextFeature()); feature;
       feature.reset(layer.GetNextFeature())) {
    const OGRGeometry* geometry = feature->GetGeometryRef();
    if (geometry && wkbFlatten(geometry->getGeometryType()) != wkbPoint) return false;
  }
  return true;
}

// Features that are read, converted together and written.
constexpr std::size_t kBlockFeatures = 4096;

// Writes the features of one layer to another of the same columns.
class LayerWriter {
 public:
  LayerWriter(const LayerJob& job, const Format& format, OGRLayer& from, OgrOutput& output)
      : job_(job),
        output_(output),
        keepsIds_(format.driver == std::string("GPKG")),
        needsGeometry_(format.needsGeometry) {
    const bool hasGeometry = from.GetGeomType() != wkbNone;
    const auto crs = CrsOf(job.crs, job.unit);
    const std::string name =
        format.severalLayers ? from.GetName() : std::filesystem::path(job.output).stem().string();
    to_ = &output.CreateLayer(name, hasGeometry ? crs.get() : nullptr, from.GetGeomType(),
                              format.layerOptions.data());
    std::vector<std::string> left;
    OGRFeatureDefn* columns = from.GetLayerDefn();
    for (int i = 0; i < columns->GetFieldCount(); ++i) {
      OGRFieldDefn* field = columns->GetFieldDefn(i);
      fields_.push_back(AddField(*field));
      if (fields_.back() < 0) left.emplace_back(field->GetNameRef());
    }
    if (!left.empty())
      job.tell(fmt::format("{}: {} has no room for the columns {}", output.Name(), format.title,
                           ListNames(left)));
  }

  bool HoldsCurves() const { return to_->TestCapability(OLCCurveGeometries) != 0; }

  // False for a feature that the format cannot hold, since it has no geometry.
  bool Write(OGRFeature& from) {
    const OGRGeometry* shape = from.GetGeometryRef();
    if (needsGeometry_ && (!shape || shape->IsEmpty())) return false;
    OGRFeatureUniquePtr to(OGRFeature::CreateFeature(to_->GetLayerDefn()));
    to->SetFieldsFrom(&from, fields_.data(), TRUE);
    if (OGRGeometry* geometry = from.StealGeometry()) to->SetGeometryDirectly(geometry);
    if (keepsIds_) to->SetFID(from.GetFID());
    to->SetStyleString(from.GetStyleString());
    to->SetNativeData(from.GetNativeData());
    to->SetNativeMediaType(from.GetNativeMediaType());
    output_.CreateFeature(*to_, *to);
    return true;
  }

 private:
  // Where the column stands in the output, which may have columns of its own; -1 where it has no room.
  int AddField(OGRFieldDefn& given) {
    OGRFieldDefn field(&given);
    const OGRFeatureDefn* made = to_->GetLayerDefn();
    const int own = made->GetFieldIndex(field.GetNameRef());
    if (own >= 0) return own;
    const int before = made->GetFieldCount();
    if (to_->CreateField(&field) != OGRERR_NONE || made->GetFieldCount() == before) return -1;
    const std::string name = made->GetFieldDefn(before)->GetNameRef();
    if (name != field.GetNameRef())
      job_.tell(fmt::format("{}: the column \"{}\" is \"{}\" there", output_.Name(),
                            field.GetNameRef(), name));
    return before;
  }

  const LayerJob& job_;
  OgrOutput& output_;
  OGRLayer* to_ = nullptr;
  bool keepsIds_, needsGeometry_;
  std::vector<int> fields_;  // of the output, by those of the input
};

// One layer on its way.
class LayerCopy {
 public:
  LayerCopy(const LayerJob& job, const Format& format, OGRLayer& from, OgrOutput& output)
      : job_(job), format_(format), from_(from) {
    const OGRSpatialReference* crs = from.GetSpatialRef();
    if (crs && IsUndefined(*crs)) crs = nullptr;
    if (from.GetGeomType() != wkbNone) {
      if (job.needsCrs && !crs) throw UserError(Place() + ": has no coordinate system");
      if (crs && !job.ignoreCrs) layerCrs_.emplace(Place(), WktOf(*crs), job.given);
    }
    if (layerCrs_ && !layerCrs_->Note().empty()) job.tell(layerCrs_->Note());
    writer_.emplace(job, format, from, output);
  }

  void Run(LayerResult& result) {
    from_.ResetReading();
    long long left = 0;
    while (ReadBlock(result)) {
      Prepare();
      job_.convert(vertices_);
      Take(result);
      for (const OGRFeatureUniquePtr& feature : block_)
        if (!writer_->Write(*feature)) ++left;
      result.features += static_cast<long long>(block_.size());
      job_.progress(result.features);
      if (job_.interrupted()) throw UserError("interrupted; nothing is written");
    }
    if (left > 0)
      job_.tell(fmt::format("{}: {} has no room for features without geometry, of which {} has {}",
                            job_.output, format_.title, Place(), left));
  }

 private:
  std::string Place() const {
    return fmt::format("{}, layer \"{}\"", job_.input, Printable(from_.GetName()));
  }
  std::string PlaceOf(const OGRFeature& feature) const {
    return fmt::format("{}, feature {}", Place(), feature.GetFID());
  }

  bool ReadBlock(const LayerResult& result) {
    block_.clear();
    CPLErrorReset();
    while (block_.size() < kBlockFeatures) {
      OGRFeatureUniquePtr feature(from_.GetNextFeature());
      if (!feature) break;
      block_.push_back(std::move(feature));
    }
    if (block_.size() < kBlockFeatures && CPLGetLastErrorType() == CE_Failure)
      throw UserError(fmt::format("{}: reading failed after {} features{}", Place(),
                                  result.features + static_cast<long long>(block_.size()),
                                  OgrComplaint()));
    return !block_.empty();
  }

  // The vertices of the block, in the system that the conversion expects.
  void Prepare() {
    vertices_ = {};
    for (const OGRFeatureUniquePtr& feature : block_) {
      OGRGeometry* geometry = feature->GetGeometryRef();
      if (!geometry) continue;
      if (geometry->hasCurveGeometry(TRUE) && !writer_->HoldsCurves())
        throw UserError(fmt::format("{}: {} cannot hold its {}; a GeoPackage can",
                                    PlaceOf(*feature), format_.title,
                                    OGRToOGCGeomType(geometry->getGeometryType())));
      if (job_.densify > 0 && !Densify(*geometry, job_.densify, job_.distance))
        throw UserError(fmt::format("{}: --densify would make more than {} parts of a segment",
                                    PlaceOf(*feature), kMostParts));
      AppendVertices(*geometry, job_.height, vertices_);
    }
    if (!layerCrs_) return;
    for (std::size_t i = 0; i < vertices_.Count(); ++i) {
      std::array<double, 3> point = {vertices_.y[i], vertices_.x[i], vertices_.z[i]};
      if (!layerCrs_->Convert(point)) point[1] = std::numeric_limits<double>::quiet_NaN();
      vertices_.y[i] = point[0];
      vertices_.x[i] = point[1];
      vertices_.z[i] = point[2];
    }
  }

  void Take(LayerResult& result) {
    std::size_t at = 0;
    for (const OGRFeatureUniquePtr& feature : block_) {
      OGRGeometry* geometry = feature->GetGeometryRef();
      if (!geometry) continue;
      const std::size_t begin = at;
      at = TakeVertices(*geometry, vertices_, at);
      geometry->assignSpatialReference(nullptr);
      const auto failed = [](double x) { return std::isnan(x); };
      if (std::none_of(&vertices_.x[begin], &vertices_.x[at], failed)) continue;
      ++result.failures;
      job_.tell(PlaceOf(*feature) + ": not converted: a vertex has no result");
      feature->SetGeometryDirectly(nullptr);
    }
  }

  const LayerJob& job_;
  const Format& format_;
  OGRLayer& from_;
  std::optional<LayerCrs> layerCrs_;
  std::optional<LayerWriter> writer_;
  std::vector<OGRFeatureUniquePtr> block_;
  VertexColumns vertices_;
};

void RefusePositions(const Format& format, const LayerJob& job) {
  if (format.positions == Positions::any) return;
  if (!job.geographic)
    throw UserError(
        fmt::format("{}: {} has latitudes and longitudes, not grid coordinates; a "
                    "GeoPackage (.gpkg) has them",
                    job.output, format.title));
  const auto crs = CrsOf(job.crs);
  if (format.positions == Positions::wgs84 && crs && !crs->IsSame(CrsOf("EPSG:4326").get()))
    throw UserError(fmt::format("{}: {} has positions on WGS 84, not on {}", job.output,
                                format.title, crs->GetName()));
}

}  // namespace

bool GoesByLayers(const std::string& input, const std::string& layer, const std::string& output) {
  static_cast<void>(OpenInput(input));  // says plainly why a file cannot be read
  const GDALDatasetUniquePtr dataset = OpenPointFile(input);
  if (!dataset) return false;
  const std::vector<OGRLayer*> layers = ChooseLayers(*dataset, input, layer);
  if (layers.size() > 1 || !HasOnlyPoints(*layers.front())) return true;
  return layers.front()->GetGeomType() != wkbNone && !IsPointsName(output) && FindFormat(output);
}

std::string LayerCrsText(const std::string& input, const std::string& layer) {
  const GDALDatasetUniquePtr dataset = OpenLayers(input);
  OGRLayer& first = *ChooseLayers(*dataset, input, layer).front();
  const OGRSpatialReference* crs = first.GetSpatialRef();
  if (!crs || IsUndefined(*crs))
    throw UserError(fmt::format("{}, layer \"{}\": has no coordinate system; name it with --from",
                                input, Printable(first.GetName())));
  return WktOf(*crs);
}

bool HasLayers(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return false;
  const GDALDatasetUniquePtr dataset = OpenPointFile(path);
  return dataset && dataset->GetLayerCount() > 0;
}

std::string DescribeLayers(const std::string& path) {
  const GDALDatasetUniquePtr dataset = OpenLayers(path);
  std::string text;
  for (OGRLayer* layer : ChooseLayers(*dataset, path, "")) {
    const OGRSpatialReference* crs = layer->GetSpatialRef();
    std::vector<std::string> columns;
    const OGRFeatureDefn* row = layer->GetLayerDefn();
    for (int i = 0; i < row->GetFieldCount(); ++i)
      columns.emplace_back(row->GetFieldDefn(i)->GetNameRef());
    std::string system = "none";
    if (crs && !IsUndefined(*crs)) {
      const char* code = crs->GetAuthorityCode(nullptr);
      system = code ? fmt::format("{}:{} {}", crs->GetAuthorityName(nullptr), code, crs->GetName())
                    : crs->GetName();
    }
    text += fmt::format(
        "{}, layer \"{}\"\n  features     {} ({})\n  system       {}\n  columns      {}\n", path,
        Printable(layer->GetName()), layer->GetFeatureCount(),
        OGRGeometryTypeToName(layer->GetGeomType()), system, fmt::join(columns, ", "));
  }
  return text;
}

LayerResult ConvertLayers(const LayerJob& job) {
  const Format& format = FormatOf(job.output);
  RefusePositions(format, job);
  const GDALDatasetUniquePtr dataset = OpenLayers(job.input);
  const std::vector<OGRLayer*> layers = ChooseLayers(*dataset, job.input, job.layer);
  if (layers.size() > 1 && !format.severalLayers)
    throw UserError(fmt::format("{}: {} has one layer, {} has {}; choose one with --layer",
                                job.output, format.title, job.input, layers.size()));
  OgrOutput output(job.output, format.driver);
  LayerResult result;
  for (OGRLayer* layer : layers) LayerCopy(job, format, *layer, output).Run(result);
  output.Close();
  return result;
}

}  // namespace geomath_files
