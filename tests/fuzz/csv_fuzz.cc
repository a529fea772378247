// libFuzzer: any bytes as a CSV file, and its fields as numbers and angles.
#include <stdio.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "files/points/csv_reader.h"
#include "files/words/number_text.h"
#include "files/words/user_error.h"

using namespace geomath_files;

namespace {

void Require(bool law) {
  if (!law) std::abort();
}

// A value that is written as a field is read back.
void RequireRoundTrip(const std::string& value, char separator) {
  CsvRow row;
  row.text = CsvField(value, separator);
  row.fields = {{0, row.text.size()}};
  Require(row.Value(0) == value);
}

void ReadField(const std::string& text) {
  if (const ParsedNumber number = ParseNumber(text)) Require(std::isfinite(number.value));
  if (const ParsedNumber lat = ParseAngle(text, AngleKind::latitude))
    Require(std::abs(lat.value) <= 90);
  if (const ParsedNumber lon = ParseAngle(text, AngleKind::longitude))
    Require(std::abs(lon.value) <= 360);
}

void ReadAll(std::FILE* file) {
  CsvReader reader(file, "fuzz.csv");
  CsvRow row;
  long long line = 0;
  while (reader.Next(row)) {
    Require(row.line > line && !row.fields.empty());
    line = row.line;
    for (std::size_t i = 0; i < row.fields.size(); ++i) {
      Require(row.fields[i].begin <= row.fields[i].end && row.fields[i].end <= row.text.size());
      const std::string value = row.Value(i);
      RequireRoundTrip(value, reader.Separator());
      ReadField(value);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;  // fmemopen takes no empty buffer
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
      fmemopen(const_cast<std::uint8_t*>(data), size, "rb"), std::fclose);
  try {
    ReadAll(file.get());
  } catch (const UserError&) {
  }
  return 0;
}
