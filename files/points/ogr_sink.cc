#include "files/points/ogr_sink.h"

#include <fmt/format.h>

#include <filesystem>
#include <utility>

#include "files/gdal/ogr.h"
#include "files/words/user_error.h"

namespace geomath_tools {
namespace {

class OgrSink : public PointSink {
 public:
  OgrSink(const std::string& path, const char* driverName, const PointSource& source,
          const ResultStyle& style)
      : name_(path) {
    PrepareOgr();
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName(driverName);
    if (!driver) throw UserError(fmt::format("{}: this GDAL has no {}", path, driverName));
    if (std::filesystem::exists(path)) driver->Delete(path.c_str());
    CPLErrorReset();
    dataset_.reset(driver->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    if (!dataset_) Complain("cannot be written");
    const std::string layer = std::filesystem::path(path).stem().string();
    layer_ = dataset_->CreateLayer(layer.c_str(), nullptr, wkbPoint25D, nullptr);
    if (!layer_) Complain("cannot be written");
    for (const Column& column : source.Columns()) AddField(column);
    for (const std::string& name : style.names) AddField({name, OFTReal});
    columns_ = static_cast<int>(source.Columns().size());
    StartTransaction();
  }

  // After a failure: what has been written is kept as far as the format allows.
  ~OgrSink() override {
    if (dataset_ && inTransaction_) dataset_->CommitTransaction();
  }

  void Write(const Record& record, const Converted& converted) override {
    if (record.IsBlank()) return;
    OGRFeatureUniquePtr feature(OGRFeature::CreateFeature(layer_->GetLayerDefn()));
    for (int i = 0; i < columns_; ++i) CopyField(record, i, *feature);
    if (converted.done) {
      for (std::size_t i = 0; i < converted.result.size(); ++i)
        feature->SetField(columns_ + static_cast<int>(i), converted.result[i]);
      OGRPoint point(converted.x, converted.y, converted.z);
      feature->SetGeometry(&point);
    }
    if (layer_->CreateFeature(feature.get()) != OGRERR_NONE) Complain("writing failed");
    if (++inBlock_ == kTransactionSize) {
      Commit();
      StartTransaction();
    }
  }

  void Close() override {
    Commit();
    CPLErrorReset();
    dataset_.reset();
    if (CPLGetLastErrorType() == CE_Failure) Complain("writing failed");
  }

 private:
  static constexpr int kTransactionSize = 10000;  // features

  [[noreturn]] void Complain(const char* what) const {
    throw UserError(fmt::format("{}: {}{}", name_, what, OgrComplaint()));
  }

  void AddField(const Column& column) {
    OGRFieldDefn field(column.name.c_str(), column.type);
    if (layer_->CreateField(&field) != OGRERR_NONE)
      Complain(fmt::format("has no room for the column \"{}\"", column.name).c_str());
  }

  static void CopyField(const Record& record, int column, OGRFeature& to) {
    if (!record.feature)
      to.SetField(column, record.Text(static_cast<std::size_t>(column)).c_str());
    else if (record.feature->IsFieldSetAndNotNull(column))
      to.SetField(column, record.feature->GetRawFieldRef(column));
  }

  void StartTransaction() {
    inBlock_ = 0;
    inTransaction_ =
        dataset_->TestCapability(ODsCTransactions) && dataset_->StartTransaction() == OGRERR_NONE;
  }

  void Commit() {
    if (!std::exchange(inTransaction_, false)) return;
    if (dataset_->CommitTransaction() != OGRERR_NONE) Complain("writing failed");
  }

  std::string name_;
  GDALDatasetUniquePtr dataset_;
  OGRLayer* layer_ = nullptr;
  int columns_ = 0, inBlock_ = 0;
  bool inTransaction_ = false;
};

}  // namespace

std::unique_ptr<PointSink> CreateFeatures(const std::string& path, const char* driver,
                                          const PointSource& source, const ResultStyle& style) {
  return std::make_unique<OgrSink>(path, driver, source, style);
}

}  // namespace geomath_tools
