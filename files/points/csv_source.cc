#include "files/points/csv_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "files/points/csv_reader.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"

namespace geomath_tools {
namespace {

class CsvSource : public PointSource {
 public:
  explicit CsvSource(const std::string& path)
      : file_(OpenInput(path)), reader_(file_.get(), InputName(path)) {
    name_ = InputName(path);
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
    for (std::size_t i = 0; i < header.fields.size(); ++i) columns_.push_back({header.Value(i)});
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
  InputHandle file_;
  CsvReader reader_;
  double size_ = 0;  // bytes, 0 when unknown
};

}  // namespace

std::unique_ptr<PointSource> OpenCsv(const std::string& path) {
  return std::make_unique<CsvSource>(path);
}

}  // namespace geomath_tools
