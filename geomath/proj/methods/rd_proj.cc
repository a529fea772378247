#include "geomath/proj/methods/rd_proj.h"

#include <cstddef>
#include <iterator>

#include "geomath/proj/methods/math/latitude.h"

namespace zel_cs::geomath {
namespace {

constexpr double kRdScale = 0.9999079;

// Where the parameters stand among those of TDoubleSter, whose scale is left out.
constexpr int kSlots[] = {0, 1, 3, 4};
constexpr int kRdParamCount = static_cast<int>(std::size(kSlots));

int Slot(int index) {
  return index >= 0 && index < kRdParamCount ? kSlots[static_cast<std::size_t>(index)] : -1;
}

}  // namespace

TRDProj::TRDProj() : TRDProj(kWgs84A, kWgs84InvF, 0, 0, 0, 0) {}

TRDProj::TRDProj(double a, double invF, double lat0, double lon0, double fEast, double fNorth)
    : TDoubleSter(ProjTypeRD, kRdParamCount, a, invF, lat0, lon0, kRdScale, fEast, fNorth) {}

double TRDProj::GetParam(int index, unsigned int unit) const {
  return TDoubleSter::GetParam(Slot(index), unit);
}

bool TRDProj::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  return IsLatitude(b) && TDoubleSter::ProjectPoint(b, l, factors);
}

void TRDProj::SetParam(double value, int index, unsigned int unit) {
  TDoubleSter::SetParam(value, Slot(index), unit);
}

}  // namespace zel_cs::geomath
