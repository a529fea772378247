#include "files/models/raster_reader.h"

#include <atomic>

#include "files/words/user_error.h"

namespace geomath_files {
namespace {

constinit std::atomic<const RasterReader*> used = nullptr;

}  // namespace

void SetRasterReader(const RasterReader* reader) { used = reader; }

const RasterReader* FindRasterReader() { return used; }

const RasterReader& RequireRasterReader(const std::string& path) {
  const RasterReader* reader = used;
  if (!reader)
    throw UserError(path + ": is a raster, and nothing here reads rasters: GDAL is not in use");
  return *reader;
}

}  // namespace geomath_files
