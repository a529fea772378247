#include "geomath/geoid/regional_geoid_data.h"

namespace zel_cs::geomath {

RegionalGeoidData::RegionalGeoidData(const TGridRgn& region, int columns, int rows,
                                     const void* values, double dismod, const wchar_t* datum,
                                     const wchar_t* interpolation, int, double,
                                     const wchar_t* parser)
    : grid(region), NX(columns), NY(rows), data(values), DISMOD(dismod) {
  SetDatumName(datum);
  SetTypeInterpolation(interpolation);
  SetTypeParserOriginal(parser);
}

}  // namespace zel_cs::geomath
