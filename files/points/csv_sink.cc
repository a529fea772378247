#include "files/points/csv_sink.h"

#include <fmt/format.h>

#include <algorithm>

#include "files/points/csv_reader.h"
#include "files/words/text_file.h"

namespace geomath_files {
namespace {

class CsvSink : public PointSink {
 public:
  CsvSink(const std::string& path, const PointSource& source, const ResultStyle& style)
      : file_(path), columns_(source.Columns().size()), results_(style.columns) {
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
    if (source.Csv() && !source.HasHeader()) return;
    for (const ResultColumn& column : style.columns) {
      if (!text_.empty()) text_ += separator_;
      text_ += CsvField(column.name, separator_);
    }
    text_ += lineEnd_;
  }

  void Write(const Record& record, const Converted& converted) override {
    if (record.IsBlank()) {
      text_ += record.row.text + lineEnd_;  // a remark, or nothing
    } else {
      WriteColumns(record);
      for (std::size_t i = 0; i < results_.size(); ++i) {
        if (i > 0 || columns_ > 0) text_ += separator_;
        text_ += CsvField(converted.done ? Text(converted.result[i], results_[i]) : "", separator_);
      }
      text_ += lineEnd_;
    }
    if (text_.size() >= kFlushSize) WriteOut();
  }

  void Flush() override {
    WriteOut();
    file_.Flush();
  }

  void UseDecimalComma() override { decimalComma_ = true; }

  void Close() override {
    WriteOut();
    file_.Close();
  }

 private:
  static constexpr std::size_t kFlushSize = 1 << 16;

  void WriteColumns(const Record& record) {
    if (!record.feature) {
      text_ += record.row.text;
      // A short row is filled up so that its results stand in their columns.
      for (std::size_t i = record.row.fields.size(); i < columns_; ++i)
        text_ += separator_ + CsvField("", separator_);
      return;
    }
    for (std::size_t i = 0; i < columns_; ++i) {
      if (i > 0) text_ += separator_;
      text_ += CsvField(record.Text(i), separator_);
    }
  }

  std::string Text(double value, const ResultColumn& column) const {
    std::string text = ResultText(value, column);
    if (decimalComma_) std::replace(text.begin(), text.end(), '.', ',');
    return text;
  }

  void WriteOut() {
    file_.Write(text_);
    text_.clear();
  }

  TextOutput file_;
  std::size_t columns_;
  std::vector<ResultColumn> results_;
  bool decimalComma_ = false;
  char separator_ = ',';
  std::string lineEnd_ = "\n";
  std::string text_;  // not yet written
};

}  // namespace

std::unique_ptr<PointSink> CreateCsv(const std::string& path, const PointSource& source,
                                     const ResultStyle& style) {
  return std::make_unique<CsvSink>(path, source, style);
}

}  // namespace geomath_files
