#include "geomath/proj/table_proj_loader.h"

namespace zel_cs::geomath {

TTableProjLoader::TTableProjLoader(const CZelStringT<wchar_t>& name) : name_(name) {}
TTableProjLoader::~TTableProjLoader() = default;

}  // namespace zel_cs::geomath
