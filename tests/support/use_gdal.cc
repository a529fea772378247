// Test programs that read rasters in their own process have this beside their sources.
#include "files/gdal/use_gdal.h"

namespace {

[[maybe_unused]] const bool kReady = [] {
  geomath_files::UseGdal();
  return true;
}();

}  // namespace
