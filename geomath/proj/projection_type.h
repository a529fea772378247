#pragma once

#include <memory>

#include "geomath/export.h"
#include "geomath/platform/zel_memory.h"
#include "geomath/platform/zel_string.h"
#include "geomath/proj/projection_codes.h"

namespace zel_cs::geomath {

/// What GetParamType answers: the kind of value of a parameter.
enum ParamTypeCode : int {
  kParamTypeNone = 0,          ///< no such parameter
  kParamTypeAngle = 1,         ///< latitude, longitude, azimuth or width: radians, but
                               ///< arc-seconds of "AK01" and "AK29"
  kParamTypeLinear = 3,        ///< easting, northing or other length, metres
  kParamTypeScale = 10,        ///< plain scale factor
  kParamTypeZone = 20,         ///< zone number, whole
  kParamTypeCount = 21,        ///< count, whole
  kParamTypeCoefficient = 22,  ///< tabulated constant in the unit of its published table
};

/// What SpecifyParam answers: which angle or which length a parameter is, for dialogs that choose
/// hemisphere letters or axis names by it.
enum ParamSpecCode : int {
  kParamSpecNone = 0,       ///< nothing beyond its type
  kParamSpecLatitude = 1,   ///< north positive
  kParamSpecLongitude = 2,  ///< east positive, a longitude difference included
  kParamSpecAzimuth = 3,    ///< clockwise from north
  kParamSpecEasting = 4,    ///< false easting
  kParamSpecNorthing = 5,   ///< false northing
};

/// Description of one kind of projection for user interfaces and parameter files: its code, the
/// number of its parameters, and their names and kinds of value in the order of GetParam. On its
/// own it names nothing; each kind's class answers for its parameters. Immutable.
class GEOMATH_API ProjectionType : public OnHostHeap {
 public:
  /// `names` is a static table of `count` texts or nulls, neither copied nor freed. A code above 40
  /// or a count above 16 give code 40 and count 0; otherwise a count below 1 gives code 40.
  ProjectionType(unsigned int type, int count, char** names);
  virtual ~ProjectionType();

  /// The number of parameters.
  int GetQParam() const { return count_; }
  /// The name at an index, program-owned and not to be written to; null outside 0 … count − 1, for
  /// a parameter without a name, and always here in the base.
  virtual char* GetParamName(int index) const;
  /// A ParamTypeCode; 0 here in the base.
  virtual int GetParamType(int index) const;
  /// A ParamSpecCode; 0 here in the base.
  virtual int SpecifyParam(int index) const;
  /// Whether this kind's angles and lengths follow the units that a user chooses. False for kinds
  /// whose parameters are printed constants of a published table, in the units of that table.
  virtual bool DoConvertToUnit() const;
  /// The kind.
  ProjType GetType() { return type_; }

 protected:
  /// The table of names that the object was made with.
  char** Names() const { return names_; }

 private:
  int count_;
  char** names_;
  ProjType type_;
};

}  // namespace zel_cs::geomath

/// Creates descriptions of one kind under a key of the registry in TProjectionType.
class GEOMATH_API TProjectionTypeLoader {
 public:
  /// Registers the loader under `key`. The destructor takes it out of the registry again, from
  /// under every key that it was registered with.
  TProjectionTypeLoader(const CZelStringT<wchar_t>& key);
  TProjectionTypeLoader(const TProjectionTypeLoader&) = delete;
  TProjectionTypeLoader& operator=(const TProjectionTypeLoader&) = delete;

  /// A new description, owned by the caller, or null on failure.
  virtual zel_cs::geomath::ProjectionType* Create() = 0;
  virtual ~TProjectionTypeLoader();

 protected:
  /// Registers nothing.
  TProjectionTypeLoader() = default;
};

/// A handle to the description that a key names, and the registry of the keys. The 32 keys of this
/// library's kinds are in the registry before anything else can be. The registry answers until the
/// process is gone, in destructors of static objects too. It has no lock: loaders are registered
/// and destroyed while no other thread uses it. Nothing throws for want of a key or of memory for
/// a description.
class GEOMATH_API TProjectionType : public zel_cs::geomath::OnHostHeap {
 public:
  TProjectionType();
  /// Copies share the description.
  TProjectionType(const TProjectionType&);
  /// Shares the description of the other.
  TProjectionType& operator=(const TProjectionType&);
  virtual ~TProjectionType();

  /// Loads the description of the first entry whose key equals `key`, letter case included.
  /// Returns 0, or 1 when no key matches or none could be created; the handle then keeps what it
  /// had loaded before.
  long Load(const CZelStringT<wchar_t>& key);
  /// A new handle, owned by the caller, with `key` loaded; null when the result is not 0.
  static long LoadProjType(TProjectionType*& out, const CZelStringT<wchar_t>& key);
  /// Appends an entry, behind all others of the same key; null is refused. The loader stays the
  /// caller's, and its destructor takes it out again.
  static void RegisterProjTypeLoader(const CZelStringT<wchar_t>& key,
                                     TProjectionTypeLoader* loader);

  /// As in ProjectionType; before anything is loaded 0, null, no type and kind 40.
  int GetQParam() const;
  char* GetParamName(int index) const;
  int GetParamType(int index) const;
  int SpecifyParam(int index) const;
  zel_cs::geomath::ProjType GetType() const;
  /// Whether the value of this parameter changes with the units that a user chooses: an angle or a
  /// length of a kind that converts at all.
  bool DoConvertToUnit(int index) const;

 private:
  std::shared_ptr<zel_cs::geomath::ProjectionType> description_;
};
