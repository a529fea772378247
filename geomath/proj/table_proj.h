#pragma once

#include <memory>

#include "geomath/export.h"
#include "geomath/platform/wide_text.h"
#include "geomath/platform/zel_memory.h"
#include "geomath/platform/zel_string.h"
#include "geomath/proj/table_proj_loader.h"
#include "geomath/proj/table_proj_math.h"

namespace zel_cs::geomath {

/// A projection whose mathematics comes from outside the library: a loader, registered under a
/// name, creates an object with two float grids, a TTableProjMath that converts with them, an
/// identifier and a datum name. Not a TGeoProj.
///
/// The registry of loaders answers until the process is gone, in destructors of static objects too.
/// It has no lock: loaders are registered, removed and destroyed while no other thread uses it. It
/// does not own them.
class GEOMATH_API TTableProj : public OnHostHeap {
 public:
  /// No mathematics, no texts.
  TTableProj();
  /// Takes ownership of `math` and hands it the grids, which stay the caller's; copies the texts,
  /// null staying null.
  TTableProj(float* dataN, float* dataE, const wchar_t* id, TTableProjMath* math,
             const wchar_t* datumName);
  virtual ~TTableProj();

  /// In place, by the mathematics; false without it.
  virtual bool Forward(double& b, double& l);
  virtual bool Inverse(double& n, double& e);

  /// |lat| ≤ π and |lon| ≤ 4π. Kept: the bounds are this loose.
  virtual bool IsAngleCoordValid(double lat, double lon);
  /// Kept: always false.
  virtual bool IsGridCoordValid(double n, double e);
  /// Direction code of the grid axes as in AxisRotation: 0x21, north before east.
  virtual unsigned char GetNEDir();

  /// The grids and the projection of the mathematics: null, and nothing to set, without it.
  float* GetDataN() const;
  void SetDataN(float* data);
  float* GetDataE() const;
  void SetDataE(float* data);
  TGeoProj* GetGeoProj() const;
  void SetGeoProj(TGeoProj* proj);

  /// The mathematics, owned by this object, or null.
  TTableProjMath* GetTableProjMath() const { return math_.get(); }
  /// Deletes the present mathematics, unless it is the same, and takes ownership of `math`.
  void SetTableProjMath(TTableProjMath* math);

  /// Texts owned by this object, or null. Setting copies; the argument may be the present text.
  const wchar_t* GetID() const { return id_.Get(); }
  void SetID(const wchar_t* id) { id_.Set(id); }
  const wchar_t* GetDatumName() const { return datumName_.Get(); }
  void SetDatumName(const wchar_t* name) { datumName_.Set(name); }

  /// Appends a loader to the registry; null is refused. The loader's destructor takes it out again.
  static void RegisterTableProjLoader(const CZelStringT<wchar_t>& name, TTableProjLoader* loader);
  /// Removes every entry of a loader.
  static void UnRegisterTableProjLoader(TTableProjLoader* loader);
  /// Lets the first loader of that name, letter case included, create a projection, owned by the
  /// caller. 0 on success; 1 when the loader creates none, with `out` null, and when there is no
  /// such loader, with `out` untouched.
  static long LoadTableProj(TTableProj*& out, const CZelStringT<wchar_t>& name, int argc,
                            const wchar_t** argv);
  /// The number of entries in the registry.
  static int Size();
  /// What the loader of entry i creates without arguments, owned by the caller. Throws
  /// std::out_of_range for an entry that does not exist.
  static TTableProj* GetAt(int i);

 private:
  TTableProj(const TTableProj&) = delete;
  TTableProj& operator=(const TTableProj&) = delete;

  std::unique_ptr<TTableProjMath> math_;
  WideText datumName_;
  WideText id_;
};

}  // namespace zel_cs::geomath
