#include "tools/traverse_file.h"

#include <fmt/format.h>

#include <utility>

#include "files/words/name_match.h"
#include "files/words/number_text.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"

using namespace zel_cs::geomath;

namespace geomath_files::program {
namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// The only column of a name, in any letter case; kNone where there is none.
std::size_t FindColumn(const PointSource& source, const char* name) {
  std::size_t found = kNone;
  const std::vector<std::string> columns = source.ColumnNames();
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (LowerCase(columns[i]) != name) continue;
    if (found != kNone)
      throw UserError(fmt::format("{}: \"{}\" stands twice in the header", source.Name(), name));
    found = i;
  }
  return found;
}

std::size_t RequireColumn(const PointSource& source, const char* name) {
  const std::size_t column = FindColumn(source, name);
  if (column == kNone)
    throw UserError(fmt::format("{}: has no column \"{}\"; it has {}", source.Name(), name,
                                ListNames(source.ColumnNames())));
  return column;
}

}  // namespace

FieldBook ReadFieldBook(PointSource& source, double height, bool gon) {
  constexpr double kDegreesPerGon = 0.9;
  const std::size_t angle = RequireColumn(source, "angle");
  const std::size_t distance = RequireColumn(source, "distance"), h = FindColumn(source, "h");
  FieldBook book;
  NumberReader numbers;
  Record record;
  while (source.Next(record)) {
    const auto value = [&](std::size_t column, const char* name, bool isAngle) {
      const std::string text = record.Text(column);
      const ParsedNumber number =
          isAngle && !gon ? numbers.Angle(text, AngleKind::turn) : numbers.Number(text);
      if (!number)
        throw UserError(fmt::format("{}, {}: {} {}", source.Name(), source.Place(record), name,
                                    number.problem));
      return isAngle ? number.value * (gon ? kDegreesPerGon : 1) * kRadPerDeg : number.value;
    };
    int leg = -1;
    if (!record.IsBlank()) {
      if (const std::string problem = source.Problem(record); !problem.empty())
        throw UserError(fmt::format("{}, {}: {}", source.Name(), source.Place(record), problem));
      if (book.endAngle)
        throw UserError(fmt::format("{}, {}: a row without distance is the last one", source.Name(),
                                    source.Place(record)));
      const double turned = value(angle, "angle", true);
      if (record.Text(distance).empty()) {
        book.endAngle = turned;
      } else {
        const bool level = h == kNone || record.Text(h).empty();
        leg = static_cast<int>(book.legs.size());
        book.legs.push_back(
            {turned, value(distance, "distance", false), level ? height : value(h, "h", false)});
      }
    }
    book.leg.push_back(leg);
    book.records.push_back(std::move(record));
    record = Record();
  }
  book.decimalComma = numbers.Mark() == ',';
  if (book.legs.empty()) throw UserError(source.Name() + ": has no leg");
  return book;
}

}  // namespace geomath_files::program
