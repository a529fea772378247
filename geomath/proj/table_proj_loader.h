#pragma once

#include "geomath/export.h"
#include "geomath/platform/zel_string.h"

namespace zel_cs::geomath {

class TTableProj;

/// Creates table projections of one kind. A host derives from it and registers an object of the
/// class with TTableProj::RegisterTableProjLoader; construction alone does not register it.
class GEOMATH_API TTableProjLoader {
 public:
  /// Remembers the name; registers nothing.
  TTableProjLoader(const CZelStringT<wchar_t>& name);
  /// Takes the loader out of the registry, from under every name that it was registered with.
  virtual ~TTableProjLoader();

  /// The name that the loader was made with, for whoever registers it.
  const CZelStringT<wchar_t>& GetName() const { return name_; }

  /// A new table projection, owned by the caller, or null when it cannot be had. The arguments are
  /// the loader's own; (0, null) asks for what it gives without any.
  virtual TTableProj* Create(int argc, const wchar_t** argv) = 0;

 private:
  CZelStringT<wchar_t> name_;
};

}  // namespace zel_cs::geomath
