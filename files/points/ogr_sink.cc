#include "files/points/ogr_sink.h"

#include <fmt/format.h>

#include <filesystem>
#include <string_view>
#include <utility>

#include "files/gdal/checked_files.h"
#include "files/gdal/ogr.h"
#include "files/words/output_file.h"
#include "files/words/user_error.h"

namespace geomath_tools {
namespace {

class OgrSink : public PointSink {
 public:
  OgrSink(const std::string& path, const char* driverName, const PointSource& source,
          const ResultStyle& style)
      : file_(path) {
    PrepareOgr();
    RequireLocalPath(path);
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName(driverName);
    if (!driver) throw UserError(fmt::format("{}: this GDAL has no {}", path, driverName));
    // SQLite looks at every write itself, and wants the locks of a file of the system.
    const bool checksItself = std::string_view(driverName) == "GPKG";
    const std::string target = checksItself ? file_.Path() : written_.NameFor(file_.Path());
    dataset_.reset(driver->Create(target.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    if (!dataset_) Complain();
    const std::string layer = std::filesystem::path(path).stem().string();
    layer_ = dataset_->CreateLayer(layer.c_str(), nullptr, wkbPoint25D, nullptr);
    if (!layer_) Complain();
    for (const Column& column : source.Columns()) AddField(column);
    for (const std::string& name : style.names) AddField({name, OFTReal});
    columns_ = static_cast<int>(source.Columns().size());
    StartTransaction();
  }

  ~OgrSink() override {
    if (dataset_ && inTransaction_) dataset_->RollbackTransaction();
    const GdalErrors unheard;
    dataset_.reset();
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
    if (layer_->CreateFeature(feature.get()) != OGRERR_NONE || !written_.Failure().empty())
      Complain();
    if (++inBlock_ == kTransactionSize) {
      Commit();
      StartTransaction();
    }
  }

  void Close() override {
    Commit();
    const GdalErrors errors;
    dataset_.reset();
    if (!written_.Failure().empty()) Complain();
    if (!errors.First().empty()) Complain(errors.First());
    file_.Place();
  }

 private:
  static constexpr int kTransactionSize = 10000;  // features

  // With what the system said, or GDAL where it said nothing.
  [[noreturn]] void Complain(const std::string& gdal = CPLGetLastErrorMsg()) const {
    const std::string system = written_.Failure();
    const std::string& why = system.empty() ? gdal : system;
    throw UserError(file_.Name() + ": cannot be written" + (why.empty() ? "" : ": " + why));
  }

  void AddField(const Column& column) {
    OGRFieldDefn field(column.name.c_str(), column.type);
    if (layer_->CreateField(&field) != OGRERR_NONE)
      throw UserError(fmt::format("{}: has no room for the column \"{}\"{}", file_.Name(),
                                  column.name, OgrComplaint()));
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
    if (dataset_->CommitTransaction() != OGRERR_NONE) Complain();
  }

  OutputFile file_;
  CheckedFiles written_;
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
