#include "files/points/point_source.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "files/gdal/ogr.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"

namespace geomath_tools {
namespace {

struct CloseFile {
  void operator()(std::FILE* file) const {
    if (file != stdin) std::fclose(file);
  }
};
using FileHandle = std::unique_ptr<std::FILE, CloseFile>;

FileHandle OpenForReading(const std::string& path) {
  if (path == "-") return FileHandle(stdin);
  if (std::filesystem::is_directory(path)) throw UserError(path + ": is a directory");
  FileHandle file(std::fopen(path.c_str(), "rb"));
  if (!file) throw UserError(fmt::format("{}: cannot be read: {}", path, std::strerror(errno)));
  return file;
}

class CsvSource : public PointSource {
 public:
  explicit CsvSource(const std::string& path)
      : file_(OpenForReading(path)), reader_(file_.get(), Shown(path)) {
    name_ = Shown(path);
    std::error_code ignored;
    if (std::filesystem::is_regular_file(path, ignored))
      size_ = static_cast<double>(std::filesystem::file_size(path, ignored));
    CsvRow header;
    if (!reader_.Next(header) || header.IsBlank())
      throw UserError(name_ + (reader_.BytesRead() == 0
                                   ? ": is empty; a first line with the names of the columns "
                                     "belongs there"
                                   : ": the first line is blank; the names of the columns belong "
                                     "there"));
    header_ = header.text;
    for (std::size_t i = 0; i < header.fields.size(); ++i)
      columns_.push_back({header.Value(i), OFTString});
  }

  bool Next(Record& record) override { return reader_.Next(record.row); }

  std::string Place(const Record& record) const override {
    return fmt::format("line {}", record.row.line);
  }

  std::string Problem(const Record& record) const override {
    const std::size_t fields = record.row.fields.size();
    if (fields == columns_.size()) return {};
    return fmt::format("the row has {} field{} where the header has {}", fields,
                       fields == 1 ? "" : "s", columns_.size());
  }

  double Done() const override {
    return size_ > 0 ? std::min(1.0, static_cast<double>(reader_.BytesRead()) / size_) : -1;
  }

  const CsvReader* Csv() const override { return &reader_; }

 private:
  static std::string Shown(const std::string& path) {
    return path == "-" ? "standard input" : path;
  }

  FileHandle file_;
  CsvReader reader_;
  double size_ = 0;  // bytes, 0 when unknown
};

class OgrSource : public PointSource {
 public:
  OgrSource(const std::string& path, const std::string& layer) {
    name_ = path;
    static_cast<void>(OpenForReading(path));  // says plainly why a file cannot be read
    PrepareOgr();
    dataset_.reset(GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY));
    if (!dataset_)
      throw UserError(
          fmt::format("{}: is no point file that is known here (CSV, GeoJSON, "
                      "GeoPackage, Shapefile or another format of GDAL){}",
                      path, OgrComplaint()));
    layer_ = ChooseLayer(layer);
    OGRFeatureDefn* definition = layer_->GetLayerDefn();
    for (int i = 0; i < definition->GetFieldCount(); ++i) {
      const OGRFieldDefn* field = definition->GetFieldDefn(i);
      columns_.push_back({field->GetNameRef(), field->GetType()});
    }
    hasGeometry_ = definition->GetGeomFieldCount() > 0;
    count_ = static_cast<double>(layer_->GetFeatureCount(FALSE));
    layer_->ResetReading();
  }

  bool Next(Record& record) override {
    CPLErrorReset();
    record.feature.reset(layer_->GetNextFeature());
    if (record.feature) {
      ++read_;
      return true;
    }
    if (CPLGetLastErrorType() == CE_Failure)
      throw UserError(
          fmt::format("{}: reading failed after {} features{}", name_, read_, OgrComplaint()));
    return false;
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
  long long read_ = 0;
  double count_ = 0;
};

}  // namespace

std::string Record::Text(std::size_t column) const {
  if (!feature) return column < row.fields.size() ? row.Value(column) : std::string();
  const int field = static_cast<int>(column);
  if (!feature->IsFieldSetAndNotNull(field)) return {};
  if (feature->GetFieldDefnRef(field)->GetType() == OFTReal)
    return fmt::format("{}", feature->GetFieldAsDouble(field));
  return feature->GetFieldAsString(field);
}

std::string PointSource::Problem(const Record&) const { return {}; }

std::vector<std::string> PointSource::ColumnNames() const {
  std::vector<std::string> names;
  for (const Column& column : columns_) names.push_back(column.name);
  return names;
}

bool IsCsvName(const std::string& path) {
  if (path == "-") return true;
  std::string suffix = std::filesystem::path(path).extension().string();
  for (char& c : suffix) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return suffix == ".csv" || suffix == ".tsv" || suffix == ".txt";
}

std::unique_ptr<PointSource> OpenPoints(const std::string& path, const std::string& layer) {
  if (!IsCsvName(path)) return std::make_unique<OgrSource>(path, layer);
  if (!layer.empty()) throw UserError("--layer: a CSV file has no layers");
  return std::make_unique<CsvSource>(path);
}

}  // namespace geomath_tools
