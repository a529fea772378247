#include "geomath/geoid/reg_geoid_95_interpalation3.h"

#include "geomath/geoid/grid/biquadratic.h"
#include "geomath/geoid/grid/ruled_geoid.h"

namespace zel_cs::geomath {
namespace {

constexpr int kRowHeader = 4;  // bytes

using Ruled = RuledGeoid<Biquadratic, RowLayout{.header = kRowHeader}>;

}  // namespace

RegGeoid95Interpalation3::RegGeoid95Interpalation3(const RegionalGeoidData& data)
    : RegionalGeoid(data) {
  RegGeoid95Interpalation3::InitData();
}

RegGeoid95Interpalation3::RegGeoid95Interpalation3(const TGridRgn& grid, int NX, int NY,
                                                   const void* data, double DISMOD,
                                                   const wchar_t* datumName,
                                                   const wchar_t* interpolationType)
    : RegionalGeoid(grid, NX, NY, data, DISMOD, datumName, interpolationType) {
  RegGeoid95Interpalation3::InitData();
}

void RegGeoid95Interpalation3::InitData() {
  rowStride_ = RowStride(kRowHeader, data_.NX, sizeof(float));
}

int RegGeoid95Interpalation3::INTRP3(const void* data, int rowStride, TGridRgn&, int NY, int NX,
                                     double* point, double& height) const {
  height = Ruled(data_.grid, data, rowStride, NY, NX).HeightAt(point, height);
  return 0;
}

bool RegGeoid95Interpalation3::RunColumns(GridQuery& query) const {
  return Ruled(data_, rowStride_).Run(*this, query);
}

}  // namespace zel_cs::geomath
