#include "geomath/proj/table_proj_loader.h"

#include "geomath/proj/table_proj.h"

namespace zel_cs::geomath {

TTableProjLoader::TTableProjLoader(const CZelStringT<wchar_t>& name) : name_(name) {}
TTableProjLoader::~TTableProjLoader() { TTableProj::UnRegisterTableProjLoader(this); }

}  // namespace zel_cs::geomath
