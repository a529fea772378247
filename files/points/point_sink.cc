#include "files/points/point_sink.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <utility>

#include "files/gdal/ogr.h"
#include "files/words/user_error.h"

namespace geomath_tools {
namespace {

struct Format {
  const char* suffix;
  const char* driver;  // of GDAL/OGR
};
constexpr Format kFormats[] = {
    {".geojson", "GeoJSON"},
    {".json", "GeoJSON"},
    {".gpkg", "GPKG"},
    {".shp", "ESRI Shapefile"},
};

const Format* FindFormat(const std::string& path) {
  std::string suffix = std::filesystem::path(path).extension().string();
  for (char& c : suffix) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  for (const Format& format : kFormats) {
    if (suffix == format.suffix) return &format;
  }
  return nullptr;
}

class CsvSink : public PointSink {
 public:
  CsvSink(const std::string& path, const PointSource& source, const ResultStyle& style)
      : name_(path == "-" ? "standard output" : path),
        file_(path == "-" ? stdout : std::fopen(path.c_str(), "wb")),
        columns_(source.Columns().size()),
        decimals_(style.decimals) {
    if (!file_) Complain("cannot be written");
    if (const CsvReader* csv = source.Csv()) {
      separator_ = csv->Separator();
      lineEnd_ = csv->LineEnd();
      text_ = source.Header();
    } else {
      for (const Column& column : source.Columns()) {
        if (!text_.empty()) text_ += separator_;
        text_ += CsvField(column.name, separator_);
      }
    }
    for (const std::string& name : style.names) {
      if (!text_.empty()) text_ += separator_;
      text_ += CsvField(name, separator_);
    }
    text_ += lineEnd_;
  }

  ~CsvSink() override {
    if (file_ && file_ != stdout) std::fclose(file_);
  }

  void Write(const Record& record, const Converted& converted) override {
    if (record.IsBlank()) {
      text_ += lineEnd_;
    } else {
      WriteColumns(record);
      for (std::size_t i = 0; i < converted.result.size(); ++i) {
        if (i > 0 || columns_ > 0) text_ += separator_;
        if (converted.done) WriteNumber(converted.result[i], decimals_[i]);
      }
      text_ += lineEnd_;
    }
    if (text_.size() >= kFlushSize) Flush();
  }

  void Close() override {
    Flush();
    std::FILE* file = std::exchange(file_, nullptr);
    if (file == stdout ? std::fflush(file) != 0 : std::fclose(file) != 0)
      Complain("writing failed");
  }

 private:
  static constexpr std::size_t kFlushSize = 1 << 16;

  [[noreturn]] void Complain(const char* what) const {
    throw UserError(fmt::format("{}: {}: {}", name_, what, std::strerror(errno)));
  }

  void WriteColumns(const Record& record) {
    if (!record.feature) {
      text_ += record.row.text;
      // A short row is filled up so that its results stand in their columns.
      for (std::size_t i = record.row.fields.size(); i < columns_; ++i) text_ += separator_;
      return;
    }
    for (std::size_t i = 0; i < columns_; ++i) {
      if (i > 0) text_ += separator_;
      text_ += CsvField(record.Text(i), separator_);
    }
  }

  void WriteNumber(double value, int decimals) {
    const std::size_t start = text_.size();
    fmt::format_to(std::back_inserter(text_), "{:.{}f}", value, decimals);
    const bool zero = text_.find_first_not_of("-0.", start) == std::string::npos;
    if (zero && text_[start] == '-') text_.erase(start, 1);
  }

  void Flush() {
    const bool written = std::fwrite(text_.data(), 1, text_.size(), file_) == text_.size();
    text_.clear();
    if (!written) Complain("writing failed");
  }

  std::string name_;
  std::FILE* file_;
  std::size_t columns_;
  std::array<int, 3> decimals_;
  char separator_ = ',';
  std::string lineEnd_ = "\n";
  std::string text_;  // not yet written
};

class OgrSink : public PointSink {
 public:
  OgrSink(const std::string& path, const Format& format, const PointSource& source,
          const ResultStyle& style)
      : name_(path) {
    PrepareOgr();
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName(format.driver);
    if (!driver) throw UserError(fmt::format("{}: this GDAL has no {}", path, format.driver));
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

void RefuseTakenNames(const PointSource& source, const ResultStyle& style) {
  const std::vector<std::string> taken = source.ColumnNames();
  for (const std::string& name : style.names)
    if (std::find(taken.begin(), taken.end(), name) != taken.end())
      throw UserError(fmt::format("{} has a column \"{}\" already", source.Name(), name));
}

void RefuseSameFile(const std::string& input, const std::string& output) {
  std::error_code ignored;
  if (input != "-" && output != "-" && std::filesystem::equivalent(input, output, ignored))
    throw UserError(output + ": is the input file; choose another name for the output");
}

bool IsGeoJsonName(const std::string& path) {
  const Format* format = FindFormat(path);
  return format && std::string_view(format->driver) == "GeoJSON";
}

std::unique_ptr<PointSink> CreatePoints(const std::string& path, const PointSource& source,
                                        const ResultStyle& style) {
  if (std::filesystem::is_directory(path)) throw UserError(path + ": is a directory");
  if (IsCsvName(path)) return std::make_unique<CsvSink>(path, source, style);
  const Format* format = FindFormat(path);
  if (!format)
    throw UserError(
        fmt::format("{}: the suffix chooses the format: .csv, .geojson, .gpkg or .shp", path));
  return std::make_unique<OgrSink>(path, *format, source, style);
}

}  // namespace geomath_tools
