#include "geomath/proj/table_proj_math.h"

namespace zel_cs::geomath {

TTableProjMath::TTableProjMath() = default;

TTableProjMath::TTableProjMath(float* dataN, float* dataE, int firstSize, int secondSize,
                               TGeoProj* proj)
    : proj_(proj), dataN_(dataN), dataE_(dataE), secondSize_(secondSize), firstSize_(firstSize) {}

TTableProjMath::TTableProjMath(const TTableProjMath&) = default;
TTableProjMath& TTableProjMath::operator=(const TTableProjMath&) = default;
TTableProjMath::~TTableProjMath() = default;

}  // namespace zel_cs::geomath
