#include "files/points/csv_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "files/points/csv_reader.h"
#include "files/words/name_match.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"

namespace geomath_files {
namespace {

class CsvSource : public PointSource {
 public:
  CsvSource(const std::string& path, const std::vector<std::string>& names)
      : file_(OpenInput(path)), reader_(file_.get(), InputName(path), names.size()) {
    name_ = InputName(path);
    std::error_code ignored;
    if (std::filesystem::is_regular_file(path, ignored))
      size_ = static_cast<double>(std::filesystem::file_size(path, ignored));
    for (const std::string& name : names) columns_.push_back({name, OFTString});
    header_ = reader_.Preamble();
    if (names.empty()) ReadHeader();
  }

  bool Read(RawRows& rows) override { return reader_.Next(rows.csv); }

  bool Take(RawRows& rows, Record& record) const override {
    CsvRow& row = record.row;
    if (!rows.csv.Take(reader_.Separator(), row)) return false;
    // A remark; a point that is called "#1" has all its fields.
    row.comment = row.text.starts_with('#') && row.fields.size() != columns_.size();
    if (row.fields.size() == columns_.size() + 1) DropTrailingSeparator(row);
    return true;
  }

  bool WouldWait() const override { return reader_.WouldWait(); }

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
  void ReadHeader() {
    CsvRow header;
    if (!reader_.Next(header) || header.IsBlank())
      throw UserError(name_ +
                      ": is empty; a first line with the names of the columns belongs there");
    if (header.fields.size() > 1) DropTrailingSeparator(header);
    header_ += header.text;
    hasHeader_ = true;
    for (std::size_t i = 0; i < header.fields.size(); ++i) {
      const std::string name = header.Value(i);
      for (const Column& column : columns_) {
        if (!name.empty() && column.name == name)
          throw UserError(
              fmt::format("{}: two columns are called \"{}\"; give each a name of its own", name_,
                          Printable(name)));
      }
      columns_.push_back({name, OFTString});
    }
  }

  // A separator that ends the row, with nothing behind it.
  void DropTrailingSeparator(CsvRow& row) const {
    const CsvRow::Span last = row.fields.back();
    if (last.begin != last.end) return;
    row.fields.pop_back();
    row.text.pop_back();
  }

  InputHandle file_;
  CsvReader reader_;
  double size_ = 0;  // bytes, 0 when unknown
};

}  // namespace

std::unique_ptr<PointSource> OpenCsv(const std::string& path,
                                     const std::vector<std::string>& names) {
  return std::make_unique<CsvSource>(path, names);
}

}  // namespace geomath_files
