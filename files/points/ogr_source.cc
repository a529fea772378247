#include "files/points/ogr_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "files/gdal/ogr.h"
#include "files/words/name_match.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"

namespace geomath_files {
namespace {

constexpr std::size_t kMostFeatures = 1024;  // read together

class OgrSource : public PointSource {
 public:
  OgrSource(const std::string& path, const std::string& layer) {
    name_ = path;
    RequireLocalPath(path);
    static_cast<void>(OpenInput(path));  // says plainly why a file cannot be read
    dataset_ = OpenPointFile(path);
    if (!dataset_)
      throw UserError(
          fmt::format("{}: is no point file that is known here (CSV, GeoJSON, GeoPackage, "
                      "Shapefile, FlatGeobuf, MapInfo, DXF, GPX, KML, XLSX, ODS){}",
                      path, OgrComplaint()));
    layer_ = ChooseLayer(layer);
    OGRFeatureDefn* definition = layer_->GetLayerDefn();
    for (int i = 0; i < definition->GetFieldCount(); ++i) {
      const OGRFieldDefn* field = definition->GetFieldDefn(i);
      columns_.push_back({field->GetNameRef(), field->GetType(), field->GetSubType()});
    }
    hasIds_ = *layer_->GetFIDColumn() != '\0';
    hasGeometry_ = definition->GetGeomFieldCount() > 0;
    const OGRSpatialReference* crs = layer_->GetSpatialRef();
    if (crs && !IsUndefined(*crs)) crs_ = WktOf(*crs);
    count_ = static_cast<double>(layer_->GetFeatureCount(FALSE));
    layer_->ResetReading();
  }

  bool Read(RawRows& rows) override {
    rows.features.clear();
    rows.taken = 0;
    if (!trouble_.empty()) throw UserError(trouble_);
    CPLErrorReset();
    while (rows.features.size() < kMostFeatures) {
      OGRFeatureUniquePtr feature(layer_->GetNextFeature());
      if (!feature) break;
      rows.features.push_back(std::move(feature));
    }
    read_ += rows.features.size();
    if (rows.features.size() == kMostFeatures) return true;
    if (CPLGetLastErrorType() == CE_Failure)
      trouble_ =
          fmt::format("{}: reading failed after {} features{}", name_, read_, OgrComplaint());
    if (rows.features.empty() && !trouble_.empty()) throw UserError(trouble_);
    return !rows.features.empty();
  }

  bool Take(RawRows& rows, Record& record) const override {
    if (rows.taken == rows.features.size()) return false;
    record.feature = std::move(rows.features[rows.taken++]);
    return true;
  }

  std::string Place(const Record& record) const override {
    return fmt::format("feature {}", record.feature->GetFID());
  }

  double Done() const override {
    return count_ > 0 ? std::min(1.0, static_cast<double>(read_) / count_) : -1;
  }

 private:
  OGRLayer* ChooseLayer(const std::string& wanted) {
    std::vector<std::string> names;
    for (OGRLayer* layer : dataset_->GetLayers()) {
      names.emplace_back(layer->GetName());
      if (names.back() == wanted) return layer;
    }
    if (names.empty()) throw UserError(name_ + ": holds no layer");
    if (!wanted.empty())
      throw UserError(
          fmt::format("{}: no layer \"{}\"; {}", name_, wanted, SuggestName(wanted, names)));
    if (names.size() > 1)
      throw UserError(fmt::format("{}: holds several layers; choose one with --layer ({})", name_,
                                  ListNames(names)));
    return dataset_->GetLayer(0);
  }

  GDALDatasetUniquePtr dataset_;
  OGRLayer* layer_ = nullptr;
  std::size_t read_ = 0;
  double count_ = 0;
  std::string trouble_;  // behind the features that were read
};

}  // namespace

std::unique_ptr<PointSource> OpenFeatures(const std::string& path, const std::string& layer) {
  return std::make_unique<OgrSource>(path, layer);
}

}  // namespace geomath_files
