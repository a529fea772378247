#include "files/points/csv_sink.h"

#include <fmt/format.h>

#include <iterator>

#include "files/points/csv_reader.h"
#include "files/words/text_file.h"

namespace geomath_tools {
namespace {

class CsvSink : public PointSink {
 public:
  CsvSink(const std::string& path, const PointSource& source, const ResultStyle& style)
      : file_(path), columns_(source.Columns().size()), decimals_(style.decimals) {
    if (const CsvReader* csv = source.Csv()) {
      separator_ = csv->Separator();
      lineEnd_ = csv->LineEnd();
      if (csv->HasMark()) text_ = kByteOrderMark;
      text_ += source.Header();
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
    file_.Close();
  }

 private:
  static constexpr std::size_t kFlushSize = 1 << 16;

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
    file_.Write(text_);
    text_.clear();
  }

  TextOutput file_;
  std::size_t columns_;
  std::array<int, 3> decimals_;
  char separator_ = ',';
  std::string lineEnd_ = "\n";
  std::string text_;  // not yet written
};

}  // namespace

std::unique_ptr<PointSink> CreateCsv(const std::string& path, const PointSource& source,
                                     const ResultStyle& style) {
  return std::make_unique<CsvSink>(path, source, style);
}

}  // namespace geomath_tools
