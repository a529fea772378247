#include "files/epsg/load_system.h"

#include <string_view>

#include "files/epsg/epsg_system.h"
#include "files/gdal/use_gdal.h"
#include "files/words/name_match.h"
#include "files/words/text_file.h"

namespace geomath_files {

std::unique_ptr<CoordinateSystem> LoadSystem(const std::string& name, ProjectionNeed need) {
  constexpr std::string_view kAuthority = "epsg:";
  UseGdal();
  if (!LowerCase(name).starts_with(kAuthority))
    return ParseSystem(ReadSystemText(name), InputName(name), need);
  const EpsgSystem made = MakeEpsgSystem(name.substr(kAuthority.size()), {});
  return ParseSystem(made.document.dump(), name, need);
}

}  // namespace geomath_files
