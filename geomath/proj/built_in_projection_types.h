#pragma once

#include <span>

#include "geomath/export.h"
#include "geomath/proj/projection_type.h"

namespace zel_cs::geomath {

struct ProjTypeRow;

/// A description whose answers come from a row of the table of kinds.
class GEOMATH_API TabulatedProjType : public ProjectionType {
 public:
  char* GetParamName(int index) const override;
  int GetParamType(int index) const override;
  int SpecifyParam(int index) const override;
  bool DoConvertToUnit() const override;

 protected:
  /// The row must outlive the object.
  explicit TabulatedProjType(const ProjTypeRow& row);

 private:
  const ProjTypeRow* row_;
};

/// A key under which this library's registry knows a kind, and what creates its description: a new
/// object, owned by the caller, or null when there is no memory.
struct ProjTypeKey {
  const wchar_t* key;           ///< as TProjectionType::Load takes it
  ProjectionType* (*create)();  ///< makes the description
};

/// The keys of this library's kinds in the order of their registration.
GEOMATH_API std::span<const ProjTypeKey> BuiltInProjTypes();

}  // namespace zel_cs::geomath

// The descriptions of the kinds, one for each projection class of the same name unless a comment
// says otherwise.

/// Transverse Mercator: TUTMProj, TKMSProjTM, TTTMNZ, TDenmarkTMProj and TKMSTransProj.
class GEOMATH_API TTMercProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TTMercProjType();
};

/// TSPC_TM83Proj.
class GEOMATH_API TSPC_TM83ProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TSPC_TM83ProjType();
};

/// TSPC_OM83Proj.
class GEOMATH_API TSPC_OM83ProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TSPC_OM83ProjType();
};

/// TSPC_LC83Proj.
class GEOMATH_API TSPC_LC83ProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TSPC_LC83ProjType();
};

/// TLCProj.
class GEOMATH_API TLCProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TLCProjType();
};

/// TTM27Proj. Kept: declares 11 parameters, of which 6 to 10 have neither name nor type.
class GEOMATH_API TTM27ProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TTM27ProjType();
};

/// TLC27Proj.
class GEOMATH_API TLC27ProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TLC27ProjType();
};

/// TAK01Proj.
class GEOMATH_API TAK01ProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TAK01ProjType();
};

/// TAK29Proj.
class GEOMATH_API TAK29ProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TAK29ProjType();
};

/// TSterProj.
class GEOMATH_API TSterProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TSterProjType();
};

/// A family of transverse Mercator zones; no projection class has this kind.
class GEOMATH_API TTMProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TTMProjType();
};

/// TAlbersEAConicProj.
class GEOMATH_API TAlbersEAConicProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TAlbersEAConicProjType();
};

/// TMercatorProj.
class GEOMATH_API TMercatorProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TMercatorProjType();
};

/// TOMercatorProj.
class GEOMATH_API TOMProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TOMProjType();
};

/// TCassiniProj.
class GEOMATH_API TCassiniProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TCassiniProjType();
};

/// TSwissProj.
class GEOMATH_API TSwissProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TSwissProjType();
};

/// TMonSpher, its first four parameters. Kept: reports the Swiss kind, 20.
class GEOMATH_API TTMSpherProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TTMSpherProjType();
};

/// TRSOProj.
class GEOMATH_API TRSOProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TRSOProjType();
};

/// TColombiaProj.
class GEOMATH_API TColombiaProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TColombiaProjType();
};

/// TMinnesota_LAProj.
class GEOMATH_API TLA_MWProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TLA_MWProjType();
};

/// TMinnesota_OMProj. Kept: reports the kind of the Lambert counties, 29.
class GEOMATH_API TOM_MWProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TOM_MWProjType();
};

/// TMinnesota_TMProj. Kept: reports the kind of the Lambert counties, 29.
class GEOMATH_API TTM_MWProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TTM_MWProjType();
};

/// TRDProj.
class GEOMATH_API TRDProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TRDProjType();
};

/// TRDTransProj.
class GEOMATH_API TRDTransProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TRDTransProjType();
};

/// TDoubleSterProj.
class GEOMATH_API TDoubleSterProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TDoubleSterProjType();
};

/// TNZMGProj.
class GEOMATH_API TNZMGProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TNZMGProjType();
};

/// TKROVAKProj.
class GEOMATH_API TKROVAKProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TKROVAKProjType();
};

/// TMalaysia_CS2000Proj.
class GEOMATH_API TC_S2000ProjType : public zel_cs::geomath::TabulatedProjType {
 public:
  TC_S2000ProjType();
};
