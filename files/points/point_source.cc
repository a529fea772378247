#include "files/points/point_source.h"

#include <fmt/format.h>

#include <algorithm>

#include "files/points/csv_source.h"
#include "files/points/ogr_source.h"
#include "files/words/name_match.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"

namespace geomath_files {

std::string Record::Text(std::size_t column) const {
  if (!feature) return column < row.fields.size() ? row.Value(column) : std::string();
  const int field = static_cast<int>(column);
  if (!feature->IsFieldSetAndNotNull(field)) return {};
  if (feature->GetFieldDefnRef(field)->GetSubType() == OFSTBoolean)
    return feature->GetFieldAsInteger(field) != 0 ? "true" : "false";
  if (feature->GetFieldDefnRef(field)->GetType() == OFTReal)
    return fmt::format("{}", feature->GetFieldAsDouble(field));
  return feature->GetFieldAsString(field);
}

std::string_view Record::Text(std::size_t column, std::string& room) const {
  if (!feature && column < row.fields.size())
    if (const std::string_view raw = row.Raw(column); !raw.starts_with('"')) return raw;
  return room = Text(column);
}

bool PointSource::Next(Record& record) {
  while (!Take(rows_, record))
    if (!Read(rows_)) return false;
  return true;
}

std::string PointSource::Problem(const Record&) const { return {}; }

std::vector<std::string> PointSource::ColumnNames() const {
  std::vector<std::string> names;
  for (const Column& column : columns_) names.push_back(column.name);
  return names;
}

std::vector<std::string> NamesOfAllColumns(const std::string& list) {
  const std::vector<std::string> names = SplitNames(list);
  if (names.empty())
    throw UserError("--no-header: name all columns of the file: --columns name,n,e,h,code");
  for (auto name = names.begin(); name != names.end(); ++name) {
    if (std::find(names.begin(), name, *name) != name)
      throw UserError(fmt::format("--columns: \"{}\" stands there twice", *name));
  }
  return names;
}

bool IsCsvName(const std::string& path) {
  if (path == "-") return true;
  const std::string suffix = SuffixOf(path);
  return suffix == ".csv" || suffix == ".tsv" || suffix == ".txt";
}

std::unique_ptr<PointSource> OpenPoints(const std::string& path, const std::string& layer,
                                        const std::vector<std::string>& names) {
  if (!IsCsvName(path)) {
    if (!names.empty()) throw UserError("--no-header: only a CSV file has none");
    return OpenFeatures(path, layer);
  }
  if (!layer.empty()) throw UserError("--layer: a CSV file has no layers");
  return OpenCsv(path, names);
}

}  // namespace geomath_files
