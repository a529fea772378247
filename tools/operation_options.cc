#include "tools/operation_options.h"

#include <fmt/format.h>

#include "files/epsg/epsg_code.h"
#include "files/words/name_match.h"
#include "files/words/number_text.h"
#include "files/words/user_error.h"

namespace geomath_files::program {

std::pair<CLI::Option*, CLI::Option*> AddOperationOptions(CLI::App& arguments,
                                                          OperationOptions& options,
                                                          const std::string& between) {
  auto* operation =
      arguments.add_option("--operation", options.operation, "code of " + between + " to take");
  arguments
      .add_option("--grids", options.grids,
                  "folder with files of grids (.gsb, .tif, .json), before those of GEOMATH_GRIDS; "
                  "may be repeated")
      ->allow_extra_args(false);
  auto* near = arguments.add_option("--near", options.near,
                                    "LAT,LON of a place: " + between + " that is best there");
  arguments.add_flag("--list-operations", options.list,
                     "only list what could be " + between + ", best first");
  return {operation, near};
}

std::string CodeOf(const std::string& option, const std::string& text) {
  std::string code = WithoutAuthority(text);
  if (!IsEpsgCode(code))
    throw UserError(fmt::format("{}: \"{}\" is no EPSG code; a number such as 27700 belongs there",
                                option, Printable(text)));
  return code;
}

std::optional<std::pair<std::string, std::string>> PairIn(const std::string& text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string::npos || comma != text.rfind(',')) return std::nullopt;
  return std::pair(text.substr(0, comma), text.substr(comma + 1));
}

PlaceText PlaceIn(const std::string& text) {
  const auto pair = PairIn(text);
  if (!pair) return {{}, "a latitude and a longitude belong there: 52.5,-1.7"};
  const ParsedNumber latitude = ParseAngle(pair->first, AngleKind::latitude);
  const ParsedNumber longitude = ParseAngle(pair->second, AngleKind::longitude);
  if (!latitude || !longitude) return {{}, latitude ? longitude.problem : latitude.problem};
  return {Position{latitude.value, longitude.value}, {}};
}

std::optional<Position> NearOf(const std::string& text) {
  if (text.empty()) return std::nullopt;
  const PlaceText place = PlaceIn(text);
  if (!place.position) throw UserError("--near: " + place.problem);
  return place.position;
}

}  // namespace geomath_files::program
