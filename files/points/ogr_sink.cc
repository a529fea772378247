#include "files/points/ogr_sink.h"

#include <fmt/format.h>

#include <cmath>
#include <filesystem>
#include <string_view>

#include "files/gdal/ogr.h"
#include "files/gdal/ogr_output.h"
#include "files/points/layer_crs.h"
#include "files/words/user_error.h"

namespace geomath_files {
namespace {

// What a GeoPackage has for coordinates in a plane of which nothing is known (number -1; without it
// a layer is one of degrees, number 0).
std::unique_ptr<OGRSpatialReference> UndefinedGrid() {
  auto crs = std::make_unique<OGRSpatialReference>();
  crs->SetLocalCS("Undefined Cartesian SRS");
  return crs;
}

// Whether parameters lead from its datum to WGS 84, without which a GIS takes it for WGS 84.
bool HasShift(const OGRSpatialReference& crs) {
  double parameters[7];
  return crs.GetTOWGS84(parameters, 7) == OGRERR_NONE;
}

class OgrSink : public PointSink {
 public:
  OgrSink(const std::string& path, const char* driverName, const PointSource& source,
          const ResultStyle& style)
      : output_(path, driverName), results_(style.columns) {
    const bool checksItself = ChecksItself(driverName);
    const std::string layer = std::filesystem::path(path).stem().string();
    auto crs = checksItself && style.crs.empty() && style.inGrid ? UndefinedGrid()
                                                                 : CrsOf(style.crs, style.unit);
    isShapefile_ = std::string_view(driverName) == "ESRI Shapefile";
    if (isShapefile_ && crs && HasShift(*crs)) {
      crs.reset();
      notes_.push_back(output_.Name() +
                       ": a Shapefile has no place for the datum of the coordinate system; it is "
                       "written without one (.gpkg has it)");
    }
    keepsIds_ = !isShapefile_ && (checksItself || source.HasIds());
    const char* utf8[] = {"ENCODING=UTF-8", nullptr};
    layer_ = &output_.CreateLayer(layer, crs.get(), style.heights ? wkbPoint25D : wkbPoint,
                                  isShapefile_ ? utf8 : nullptr);
    for (const Column& column : source.Columns()) AddField(column);
    for (const ResultColumn& column : results_)
      AddField({column.name, column.sexagesimal ? OFTString : OFTReal});
    columns_ = static_cast<int>(source.Columns().size());
    names_ = source.ColumnNames();
    cut_.resize(source.Columns().size());
  }

  void Write(const Record& record, const Converted& converted) override {
    if (record.IsBlank()) return;
    OGRFeatureUniquePtr feature(OGRFeature::CreateFeature(layer_->GetLayerDefn()));
    for (int i = 0; i < columns_; ++i) CopyField(record, i, *feature);
    if (record.feature) CopyIdentity(*record.feature, *feature);
    if (converted.done) {
      for (std::size_t i = 0; i < results_.size(); ++i)
        SetResult(*feature, columns_ + static_cast<int>(i), results_[i], converted.result[i]);
      OGRPoint point(converted.x, converted.y);
      if (!std::isnan(converted.z)) point.setZ(converted.z);
      feature->SetGeometry(&point);
    }
    output_.CreateFeature(*layer_, *feature);
  }

  void Close() override {
    for (std::size_t i = 0; i < cut_.size(); ++i) {
      if (cut_[i] > 0)
        notes_.push_back(fmt::format("{}: {} text{} of the column \"{}\" {} cut at 254 bytes",
                                     output_.Name(), cut_[i], cut_[i] == 1 ? "" : "s", names_[i],
                                     cut_[i] == 1 ? "is" : "are"));
    }
    output_.Close();
  }

  std::vector<std::string> Notes() const override { return notes_; }

 private:
  void AddField(const Column& column) {
    OGRFieldDefn field(column.name.c_str(), column.type);
    if (column.subtype == OFSTBoolean) field.SetSubType(OFSTBoolean);
    if (layer_->CreateField(&field) != OGRERR_NONE)
      throw UserError(fmt::format("{}: has no room for the column \"{}\"{}", output_.Name(),
                                  column.name, OgrComplaint()));
    const OGRFeatureDefn* made = layer_->GetLayerDefn();
    const std::string name = made->GetFieldDefn(made->GetFieldCount() - 1)->GetNameRef();
    if (name != column.name)
      notes_.push_back(
          fmt::format("{}: the column \"{}\" is \"{}\" there", output_.Name(), column.name, name));
  }

  static void SetResult(OGRFeature& to, int field, const ResultColumn& column, double value) {
    if (column.sexagesimal)
      to.SetField(field, ResultText(value, column).c_str());
    else if (!std::isnan(value))
      to.SetField(field, value);
  }

  // The number of a feature, and what GeoJSON has beside its columns.
  void CopyIdentity(const OGRFeature& from, OGRFeature& to) {
    if (keepsIds_ && from.GetFID() <= lastId_) {
      keepsIds_ = false;  // a GeoPackage is read in their order, and that of the rows counts
      notes_.push_back(output_.Name() +
                       ": the features have new numbers, since the old do not rise");
    }
    lastId_ = from.GetFID();
    if (keepsIds_) to.SetFID(lastId_);
    to.SetNativeData(from.GetNativeData());
    to.SetNativeMediaType(from.GetNativeMediaType());
  }

  void CopyField(const Record& record, int column, OGRFeature& to) {
    if (isShapefile_) NoteCut(record, column);
    if (!record.feature)
      to.SetField(column, record.Text(static_cast<std::size_t>(column)).c_str());
    else if (record.feature->IsFieldSetAndNotNull(column))
      to.SetField(column, record.feature->GetRawFieldRef(column));
  }

  // A text field of dBASE ends at 254 bytes.
  void NoteCut(const Record& record, int column) {
    constexpr std::size_t kLongest = 254;
    const bool isText =
        !record.feature || record.feature->GetFieldDefnRef(column)->GetType() == OFTString;
    if (isText && record.Text(static_cast<std::size_t>(column)).size() > kLongest)
      ++cut_[static_cast<std::size_t>(column)];
  }

  OgrOutput output_;
  OGRLayer* layer_ = nullptr;
  std::vector<ResultColumn> results_;
  int columns_ = 0;
  bool isShapefile_ = false, keepsIds_ = false;
  GIntBig lastId_ = -1;
  std::vector<std::string> names_, notes_;
  std::vector<long long> cut_;  // texts of each column
};

}  // namespace

std::unique_ptr<PointSink> CreateFeatures(const std::string& path, const char* driver,
                                          const PointSource& source, const ResultStyle& style) {
  return std::make_unique<OgrSink>(path, driver, source, style);
}

}  // namespace geomath_files
