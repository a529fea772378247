#include "geomath/proj/table_proj.h"

#include <cstddef>
#include <stdexcept>

#include "geomath/base/axis_rotation.h"
#include "geomath/proj/internal/angle_bounds.h"
#include "geomath/proj/internal/loader_registry.h"

namespace zel_cs::geomath {
namespace {

LoaderRegistry<TTableProjLoader>& Registry() {
  return ProcessWide<LoaderRegistry<TTableProjLoader>>();
}

}  // namespace

TTableProj::TTableProj() = default;

TTableProj::TTableProj(float* dataN, float* dataE, const wchar_t* id, TTableProjMath* math,
                       const wchar_t* datumName)
    : math_(math), datumName_(datumName), id_(id) {
  SetDataN(dataN);
  SetDataE(dataE);
}

TTableProj::~TTableProj() = default;

bool TTableProj::Forward(double& b, double& l) { return math_ && math_->Forward(b, l); }
bool TTableProj::Inverse(double& n, double& e) { return math_ && math_->Inverse(n, e); }

bool TTableProj::IsAngleCoordValid(double lat, double lon) { return IsLooselyValid(lat, lon); }

bool TTableProj::IsGridCoordValid(double, double) { return false; }
unsigned char TTableProj::GetNEDir() { return kNorthEastDirection; }

float* TTableProj::GetDataN() const { return math_ ? math_->GetDataN() : nullptr; }
float* TTableProj::GetDataE() const { return math_ ? math_->GetDataE() : nullptr; }
TGeoProj* TTableProj::GetGeoProj() const { return math_ ? math_->GetGeoProj() : nullptr; }

void TTableProj::SetDataN(float* data) {
  if (math_) math_->SetDataN(data);
}

void TTableProj::SetDataE(float* data) {
  if (math_) math_->SetDataE(data);
}

void TTableProj::SetGeoProj(TGeoProj* proj) {
  if (math_) math_->SetGeoProj(proj);
}

void TTableProj::SetTableProjMath(TTableProjMath* math) {
  if (math != math_.get()) math_.reset(math);
}

void TTableProj::RegisterTableProjLoader(const CZelStringT<wchar_t>& name,
                                         TTableProjLoader* loader) {
  Registry().Add(name, loader);
}

void TTableProj::UnRegisterTableProjLoader(TTableProjLoader* loader) { Registry().Remove(loader); }

long TTableProj::LoadTableProj(TTableProj*& out, const CZelStringT<wchar_t>& name, int argc,
                               const wchar_t** argv) {
  TTableProjLoader* loader = Registry().Find(name);
  if (!loader) return 1;
  out = loader->Create(argc, argv);
  return out ? 0 : 1;
}

int TTableProj::Size() { return static_cast<int>(Registry().Size()); }

TTableProj* TTableProj::GetAt(int i) {
  if (i < 0 || i >= Size()) throw std::out_of_range("invalid vector<T> subscript");
  return Registry().At(static_cast<std::size_t>(i))->Create(0, nullptr);
}

}  // namespace zel_cs::geomath
