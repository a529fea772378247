#include "files/points/usual_names.h"

#include <algorithm>

#include "files/words/name_match.h"

namespace geomath_files {

const AxisNames& UsualAxisNames(CoordinateKind kind) {
  static const AxisNames geographic = {{
      {{"lat"}, {"latitude", "breite"}},
      {{"lon"}, {"long", "lng", "longitude", "l\xC3\xA4nge", "laenge"}},
      {{"hglobal"}, {"h", "height", "h\xC3\xB6he", "hoehe", "ellipsoidalheight"}},
  }};
  static const AxisNames grid = {{
      {{"n"}, {"north", "northing", "nord", "hochwert"}},
      {{"e"}, {"east", "easting", "ost", "rechtswert"}},
      {{"hlocal"}, {"h", "height", "h\xC3\xB6he", "hoehe", "elevation", "z"}},
  }};
  static const AxisNames geocentric = {{{{"x"}, {}}, {{"y"}, {}}, {{"z"}, {}}}};
  if (kind == CoordinateKind::geocentric) return geocentric;
  return kind == CoordinateKind::grid ? grid : geographic;
}

const AxisNames& UsualGonNames() {
  static const AxisNames names = {{
      {{"latgon"}, {}},
      {{"longon"}, {}},
      UsualAxisNames(CoordinateKind::geographic)[2],
  }};
  return names;
}

std::vector<std::size_t> FindUsual(const std::vector<std::string>& columns,
                                   const UsualNames& names) {
  std::vector<std::size_t> found;
  for (const auto* usual : {&names.own, &names.others}) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (std::find(usual->begin(), usual->end(), FoldName(columns[i])) != usual->end())
        found.push_back(i);
    }
    if (!found.empty()) break;
  }
  return found;
}

}  // namespace geomath_files
