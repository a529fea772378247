#include "files/epsg/load_system.h"

#include "files/epsg/epsg_code.h"
#include "files/epsg/epsg_system.h"
#include "files/gdal/use_gdal.h"
#include "files/system/system_document.h"
#include "files/words/text_file.h"

namespace geomath_files {

std::unique_ptr<CoordinateSystem> LoadSystem(const std::string& name, ProjectionNeed need) {
  UseGdal();
  const std::string code = WithoutAuthority(name);
  if (code == name) return ParseSystem(ReadSystemText(name), InputName(name), need);
  const EpsgSystem made = MakeEpsgSystem(code, {});
  return MakeSystem(made.document, name, need);
}

}  // namespace geomath_files
