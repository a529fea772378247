#include "geomath/proj/projection_type.h"

#include <deque>
#include <new>

#include "geomath/proj/built_in_projection_types.h"
#include "geomath/proj/internal/kind.h"
#include "geomath/proj/internal/loader_registry.h"

namespace zel_cs::geomath {
namespace {

/// Loader of one of this library's own kinds.
class BuiltInLoader final : public TProjectionTypeLoader {
 public:
  explicit BuiltInLoader(ProjectionType* (*create)()) : create_(create) {}
  ProjectionType* Create() override { return create_(); }

 private:
  ProjectionType* (*create_)();
};

/// Enters the loaders of the built-in kinds from their table when it is made, so that they are
/// there in a static build too and however early it is asked.
class Registry : public LoaderRegistry<TProjectionTypeLoader> {
 public:
  Registry() {
    for (const ProjTypeKey& row : BuiltInProjTypes())
      Add(row.key, &builtIns_.emplace_back(row.create));
  }

 private:
  std::deque<BuiltInLoader> builtIns_;
};

}  // namespace

ProjectionType::ProjectionType(unsigned int type, int count, char** names)
    : count_(KindOf(type, count).paramCount), names_(names), type_(KindOf(type, count).type) {}

ProjectionType::~ProjectionType() = default;

char* ProjectionType::GetParamName(int) const { return nullptr; }
int ProjectionType::GetParamType(int) const { return kParamTypeNone; }
int ProjectionType::SpecifyParam(int) const { return kParamSpecNone; }
bool ProjectionType::DoConvertToUnit() const { return true; }

}  // namespace zel_cs::geomath

using zel_cs::geomath::ProcessWide;
using zel_cs::geomath::ProjectionType;
using zel_cs::geomath::ProjType;
using zel_cs::geomath::Registry;

TProjectionTypeLoader::TProjectionTypeLoader(const CZelStringT<wchar_t>& key) {
  TProjectionType::RegisterProjTypeLoader(key, this);
}

TProjectionTypeLoader::~TProjectionTypeLoader() { ProcessWide<Registry>().Remove(this); }

TProjectionType::TProjectionType() = default;
TProjectionType::TProjectionType(const TProjectionType&) = default;
TProjectionType& TProjectionType::operator=(const TProjectionType&) = default;
TProjectionType::~TProjectionType() = default;

long TProjectionType::Load(const CZelStringT<wchar_t>& key) {
  TProjectionTypeLoader* loader = ProcessWide<Registry>().Find(key);
  ProjectionType* created = loader ? loader->Create() : nullptr;
  if (!created) return 1;
  try {
    description_.reset(created);
  } catch (const std::bad_alloc&) {  // for the count of its sharers; `created` is deleted then
    return 1;
  }
  return 0;
}

long TProjectionType::LoadProjType(TProjectionType*& out, const CZelStringT<wchar_t>& key) {
  out = nullptr;
  std::unique_ptr<TProjectionType> handle(new TProjectionType);
  const long result = handle ? handle->Load(key) : 1;
  if (result == 0) out = handle.release();
  return result;
}

void TProjectionType::RegisterProjTypeLoader(const CZelStringT<wchar_t>& key,
                                             TProjectionTypeLoader* loader) {
  ProcessWide<Registry>().Add(key, loader);
}

int TProjectionType::GetQParam() const { return description_ ? description_->GetQParam() : 0; }

char* TProjectionType::GetParamName(int index) const {
  return description_ ? description_->GetParamName(index) : nullptr;
}

int TProjectionType::GetParamType(int index) const {
  return description_ ? description_->GetParamType(index) : zel_cs::geomath::kParamTypeNone;
}

int TProjectionType::SpecifyParam(int index) const {
  return description_ ? description_->SpecifyParam(index) : zel_cs::geomath::kParamSpecNone;
}

ProjType TProjectionType::GetType() const {
  return description_ ? description_->GetType() : zel_cs::geomath::ProjTypeNone;
}

bool TProjectionType::DoConvertToUnit(int index) const {
  if (!description_ || !description_->DoConvertToUnit()) return false;
  const int type = description_->GetParamType(index);
  return type == zel_cs::geomath::kParamTypeAngle || type == zel_cs::geomath::kParamTypeLinear;
}
