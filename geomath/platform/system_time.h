#pragma once

#if defined(_WIN32)
#include <windows.h>
#else

/// A calendar date and time in the layout of the Windows structure of the same name.
/// Only wYear, wMonth (1 to 12) and wDay (1 to 31) are read by this library.
struct SYSTEMTIME {
  unsigned short wYear;
  unsigned short wMonth;
  unsigned short wDayOfWeek;
  unsigned short wDay;
  unsigned short wHour;
  unsigned short wMinute;
  unsigned short wSecond;
  unsigned short wMilliseconds;
};

#endif
