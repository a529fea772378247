#include "geomath/proj/methods/tm_nz.h"

#include "geomath/proj/methods/kernels/projection_blocks.h"

namespace zel_cs::geomath {
namespace {

constexpr int kGridScaleIndex = 5;  // after the parameters of TUTMProj
constexpr double kDefaultGridScale = 0.999998261;

}  // namespace

TTTMNZ::TTTMNZ() : TTTMNZ(kWgs84A, kWgs84InvF, 0, 1.0, 0, 0, 0, kDefaultGridScale) {}

TTTMNZ::TTTMNZ(double a, double invF, double cm, double scale, double lat0, double fEast,
               double fNorth, double gridScale)
    : TUTMProj(a, invF, cm, scale, lat0, fEast, fNorth), gridScale_(gridScale) {
  paramCount_ = kGridScaleIndex + 1;
}

double TTTMNZ::GetParam(int index, unsigned int unit) const {
  return index == kGridScaleIndex ? gridScale_ : TUTMProj::GetParam(index, unit);
}

void TTTMNZ::SetParam(double value, int index, unsigned int unit) {
  if (index == kGridScaleIndex)
    gridScale_ = value;
  else
    TUTMProj::SetParam(value, index, unit);
}

bool TTTMNZ::ProjectPoint(double& b, double& l, PointFactors* factors) const {
  if (!TUTMProj::ProjectPoint(b, l, factors)) return false;
  Grid().Apply(b, l);
  if (factors) factors->scale /= gridScale_;
  return true;
}

bool TTTMNZ::UnprojectPoint(double& n, double& e, PointFactors* factors) const {
  Grid().Undo(n, e);
  if (!TUTMProj::UnprojectPoint(n, e, factors)) return false;
  if (factors) factors->scale /= gridScale_;
  return true;
}

bool TTTMNZ::Differentiate(double b, double l, GridDerivatives& derivatives) const {
  return DerivativesOf(TmNzFormulas{TUTMProj::Formulas(), Grid()}, b, l, derivatives);
}

void TTTMNZ::DifferentiateBlock(double* const (&columns)[4], std::size_t count) const {
  DerivativesByKernel(TmNzFormulas{TUTMProj::Formulas(), Grid()}, columns, count);
}

void TTTMNZ::ForwardBlock(double* b, double* l, std::size_t count) const {
  ForwardByKernel(TmNzFormulas{TUTMProj::Formulas(), Grid()}, *this, b, l, count);
}

void TTTMNZ::InverseBlock(double* n, double* e, std::size_t count) const {
  InverseByKernel(TmNzFormulas{TUTMProj::Formulas(), Grid()}, *this, n, e, count);
}

}  // namespace zel_cs::geomath
