#include "tools/epoch_option.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdio>

#include "files/words/date_text.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"

using namespace zel_cs::geomath;

namespace geomath_files::program {

void AddEpoch(CLI::App& arguments, EpochOption& option) {
  arguments.add_option("--epoch", option.epoch,
                       "date of the positions, for a system with a frame that moves: a decimal "
                       "year (2026.9) or a day (2026-11-23)");
}

void AddEpochAndColumn(CLI::App& arguments, EpochOption& option) {
  AddEpoch(arguments, option);
  arguments
      .add_option("--epoch-column", option.column, "name of the column with the date of each row")
      ->excludes("--epoch");
}

std::optional<double> GivenDate(const std::string& epoch) {
  if (epoch.empty()) return std::nullopt;
  const ParsedNumber date = ParseDate(epoch);
  if (!date) throw UserError("--epoch: " + date.problem);
  return date.value;
}

double DateOf(const EpochOption& option, const CoordinateSystem& system, const std::string& name) {
  const double date = GivenDate(option.epoch).value_or(system.Date());
  if (system.Chain().NeedsDates()) {
    if (std::isnan(date) && option.column.empty())
      throw UserError(fmt::format(
          "{}: has a frame that moves and needs the date of the positions: give --epoch 2026.9 or "
          "--epoch 2026-11-23, in \"convert\" also --epoch-column NAME, or write \"date\" into its "
          "section \"frame\"",
          InputName(name)));
  } else if (!option.epoch.empty() || !option.column.empty()) {
    std::fprintf(stderr, "geomath: no frame of %s moves: the date changes nothing\n",
                 InputName(name).c_str());
  }
  return option.column.empty() ? date : kNoDate;
}

}  // namespace geomath_files::program
