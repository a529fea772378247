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
    const bool isFigure =
        std::string_view("0123456789.-").find(separator_) != std::string_view::npos;
    for (const ResultColumn& column : results_) plain_.push_back(!column.sexagesimal && !isFigure);
    if (source.Csv() && !source.HasHeader()) return;
    for (const ResultColumn& column : style.columns) {
      if (!text_.empty()) text_ += separator_;
      text_ += CsvField(column.name, separator_);
    }
    text_ += lineEnd_;
  }

  bool IsText() const override { return true; }

  void Print(const Record& record, const Converted& converted, bool decimalComma,
             std::string& text) const override {
    if (record.IsBlank()) {
      text += record.row.text;  // a remark, or nothing
    } else {
      PrintColumns(record, text);
      for (std::size_t i = 0; i < results_.size(); ++i) {
        if (i > 0 || columns_ > 0) text += separator_;
        const std::size_t begin = text.size();
        if (converted.done) AppendResult(text, converted.result[i], results_[i]);
        if (decimalComma) std::replace(Place(text, begin), text.end(), '.', ',');
        if (decimalComma || !plain_[i] || text.size() == begin) Quote(text, begin);
      }
    }
    text += lineEnd_;
  }

  void WriteText(std::string_view printed) override {
    WriteOut();
    file_.Write(printed);
  }

  void Write(const Record& record, const Converted& converted) override {
    Print(record, converted, decimalComma_, text_);
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

  static std::string::iterator Place(std::string& text, std::size_t at) {
    return text.begin() + static_cast<std::ptrdiff_t>(at);
  }

  // Makes a field of the value that begins there.
  void Quote(std::string& text, std::size_t begin) const {
    const std::string value = text.substr(begin);
    text.resize(begin);
    text += CsvField(value, separator_);
  }

  void PrintColumns(const Record& record, std::string& text) const {
    if (!record.feature) {
      text += record.row.text;
      // A short row is filled up so that its results stand in their columns.
      for (std::size_t i = record.row.fields.size(); i < columns_; ++i)
        text += separator_ + CsvField("", separator_);
      return;
    }
    for (std::size_t i = 0; i < columns_; ++i) {
      if (i > 0) text += separator_;
      text += CsvField(record.Text(i), separator_);
    }
  }

  void WriteOut() {
    file_.Write(text_);
    text_.clear();
  }

  TextOutput file_;
  std::size_t columns_;
  std::vector<ResultColumn> results_;
  std::vector<bool> plain_;  // of the results, numbers that need no quotation marks
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
