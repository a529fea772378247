#pragma once

namespace zel_cs::geomath {

/// The kind of a projection; comparable with the plain codes that files carry.
enum ProjType : int {
  ProjTypeTM = 0,  ///< TTMProj, TUTMProj, TTTMNZ
  ProjTypeSPC_TM83 = 1,
  ProjTypeSPC_OM83 = 2,
  ProjTypeSPC_LC83 = 3,
  ProjTypeLC = 4,  ///< TLCProj and TAlbersEAConicProj
  ProjTypeTM27 = 6,
  ProjTypeLC27 = 7,
  ProjTypeAK01 = 8,
  ProjTypeAK29 = 9,
  ProjTypeSter = 10,
  ProjTypeTMZones = 11,        ///< type metadata "TM" only
  ProjTypeAlbersEAConic = 12,  ///< factory code only; the object reports ProjTypeLC
  ProjTypeMercator = 14,
  ProjTypeOMercator = 15,
  ProjTypeCassini = 17,
  ProjTypeSwiss = 20,
  ProjTypeRSO = 21,
  ProjTypeColombia = 22,
  ProjTypeMalaysia_CS = 24,
  ProjTypeRomaniaSter = 26,
  ProjTypeMinnesota_TM = 27,
  ProjTypeMinnesota_OM = 28,
  ProjTypeMinnesota_LA = 29,
  ProjTypeRD = 30,
  ProjTypeRDTrans = 31,
  ProjTypeDoubleSter = 32,
  ProjTypeKMSTrans = 33,  ///< factory code only; the object reports ProjTypeDenmarkTM
  ProjTypeNZMG = 34,
  ProjTypeKMSTM = 35,  ///< factory code only; the object reports ProjTypeDenmarkTM
  ProjTypeDenmarkTM = 36,
  ProjTypeKrovak = 37,
  ProjTypeMonSpher = 38,
  ProjTypeMalaysia_CS2000 = 39,
  ProjTypeNone = 40,  ///< no valid projection
};

}  // namespace zel_cs::geomath
