// Compiled only, as if for Windows: no public header brings in <windows.h>, which does not exist
// here, and a date is the structure that <windows.h> declares, before or after the library.
#include "geomath/geomath.h"

struct _SYSTEMTIME {
  unsigned short wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
};

bool Declination(zel_cs::geomath::TMagneticDeclination& model, float& declination) {
  SYSTEMTIME date{};
  date.wYear = 2010;
  float inclination, total;
  return model.computeMagneticDeclination(80, 0, 0, date, declination, inclination, total);
}
