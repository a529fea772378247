#pragma once

namespace geomath_files {

/// Makes GDAL the RasterReader of the library. To be called once before the first geoid grid or TIFF
/// file of shifts is read, by whatever reads system files; again, it changes nothing.
void UseGdal();

}  // namespace geomath_files
