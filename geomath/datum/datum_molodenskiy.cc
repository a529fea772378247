#include "geomath/datum/datum_molodenskiy.h"

namespace zel_cs::geomath {

DatumMolodenskiy::DatumMolodenskiy(Ellipsoid* e) : Datum(e), origin_(0.0) {}

DatumMolodenskiy::DatumMolodenskiy(Ellipsoid* e, const TAbstractPoint3<double>& shift,
                                   const TAbstractPoint3<double>& rotation,
                                   const TAbstractPoint3<double>& origin, double scale,
                                   unsigned char user, bool transformDisabled, const wchar_t* axes)
    : Datum(e, shift, rotation, scale, static_cast<userType>(user), transformDisabled, axes),
      origin_(origin) {}

DatumMolodenskiy::DatumMolodenskiy(Ellipsoid* e, double dX, double dY, double dZ, double rX,
                                   double rY, double rZ, double X0, double Y0, double Z0,
                                   double scale, unsigned char user, const wchar_t* axes)
    : DatumMolodenskiy(e, {dX, dY, dZ}, {rX, rY, rZ}, {X0, Y0, Z0}, scale, user, false, axes) {}

DatumMolodenskiy::DatumMolodenskiy(const DatumMolodenskiy&) = default;
DatumMolodenskiy& DatumMolodenskiy::operator=(const DatumMolodenskiy&) = default;
DatumMolodenskiy::~DatumMolodenskiy() = default;

bool DatumMolodenskiy::IsNull() const { return origin_ == 0.0 && Datum::IsNull(); }

}  // namespace zel_cs::geomath
