#pragma once

#if defined(_WIN32)

// Declared as in <windows.h>, which is left to the programs that fill a date: its macros (min, max
// and hundreds more) are not for everybody who includes this library.
typedef struct _SYSTEMTIME SYSTEMTIME;

#else

/// A calendar date and time in the layout of the Windows structure of the same name. There it is
/// that structure, and a program that fills one includes <windows.h>.
/// Only wYear, wMonth (1 to 12) and wDay (1 to 31) are read by this library.
struct SYSTEMTIME {
  unsigned short wYear;          ///< of the Gregorian calendar
  unsigned short wMonth;         ///< 1 to 12
  unsigned short wDayOfWeek;     ///< not read
  unsigned short wDay;           ///< 1 to 31
  unsigned short wHour;          ///< not read
  unsigned short wMinute;        ///< not read
  unsigned short wSecond;        ///< not read
  unsigned short wMilliseconds;  ///< not read
};

#endif
