#include "geomath/proj/table_proj.h"

#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <vector>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {
namespace {

constexpr unsigned char kNorthEast = 0x21;

struct Entry {
  CZelStringT<wchar_t> name;
  TTableProjLoader* loader;
};

std::vector<Entry>& Registry() {
  static std::vector<Entry> entries;
  return entries;
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

bool TTableProj::IsAngleCoordValid(double lat, double lon) {
  return std::abs(lat) <= kPi && std::abs(lon) <= 2 * kTwoPi;
}

bool TTableProj::IsGridCoordValid(double, double) { return false; }
unsigned char TTableProj::GetNEDir() { return kNorthEast; }

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
  Registry().push_back({name, loader});
}

void TTableProj::UnRegisterTableProjLoader(TTableProjLoader* loader) {
  std::erase_if(Registry(), [loader](const Entry& entry) { return entry.loader == loader; });
}

long TTableProj::LoadTableProj(TTableProj*& out, const CZelStringT<wchar_t>& name, int argc,
                               const wchar_t** argv) {
  for (const Entry& entry : Registry()) {
    if (entry.name.Compare(name) != 0) continue;
    out = entry.loader->Create(argc, argv);
    return out ? 0 : 1;
  }
  return 1;
}

int TTableProj::Size() { return static_cast<int>(Registry().size()); }

TTableProj* TTableProj::GetAt(int i) {
  if (i < 0 || i >= Size()) throw std::out_of_range("invalid vector<T> subscript");
  return Registry()[static_cast<std::size_t>(i)].loader->Create(0, nullptr);
}

}  // namespace zel_cs::geomath
