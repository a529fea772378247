/* The functions on plain arrays as a C program calls them. Ends with 0 when the published examples
   come out. */

#include <math.h>
#include <stdio.h>

#include "geomath/datum/procedural.h"
#include "geomath/proj/procedural/projection_functions.h"

static const double kRadPerDegree = 0.017453292519943295;
static const double kPrinted = 0.01;            /* metres, of the last digit of EPSG's examples */
static const double kPrintedMillimetre = 0.001; /* of that of the Ordnance Survey's */
static const double kThousandthSecond = 4.8e-9; /* radians, of the printed 0.001" */
static int failures = 0;

static double Angle(int degrees, int minutes, double seconds) {
  return (degrees + minutes / 60.0 + seconds / 3600.0) * kRadPerDegree;
}

static void Expect(const char* what, double value, double expected, double tolerance) {
  if (fabs(value - expected) <= tolerance) return;
  printf("%s: %.12g, expected %.12g\n", what, value, expected);
  ++failures;
}

/* EPSG Guidance Note 7-2, methods 9602 (WGS 84) and 1033 (WGS 72 to WGS 84, its rotation with the
   sign turned); Ordnance Survey, A guide to coordinate systems in Great Britain, annexe C: Caister
   water tower on the national grid. */
int main(void) {
  const double wgs84[] = {6378137.0, 1 / 298.257223563};
  const double position[] = {Angle(53, 48, 33.820), Angle(2, 7, 46.380), 73.0};
  double xyz[3], blh[3];
  if (!TBLH_To_XYZ(position, xyz, wgs84) || !TXYZ_To_BLH(xyz, blh, wgs84)) ++failures;
  Expect("X", xyz[0], 3771793.97, kPrinted);
  Expect("Y", xyz[1], 140253.34, kPrinted);
  Expect("Z", xyz[2], 5124304.35, kPrinted);
  Expect("latitude", blh[0], position[0], kThousandthSecond);
  Expect("longitude", blh[1], position[1], kThousandthSecond);
  Expect("height", blh[2], position[2], kPrinted);

  const double datum[] = {0, 0, 4.5, 0, 0, -Angle(0, 0, 0.554), 0.219e-6};
  const double wgs72[] = {3657660.66, 255768.55, 5201382.11};
  double moved[3], back[3];
  ToWGS84(wgs72, moved, datum);
  ToLocDatum(moved, back, datum);
  Expect("X", moved[0], 3657660.78, kPrinted);
  Expect("Y", moved[1], 255778.43, kPrinted);
  Expect("Z", moved[2], 5201387.75, kPrinted);
  for (int i = 0; i < 3; ++i) Expect("back", back[i], wgs72[i], kPrinted);

  const double airy[] = {6377563.396, 1 / 299.3249646};
  const double grid[] = {Angle(-2, 0, 0), 0.9996012717, Angle(49, 0, 0), 400000, -100000};
  const double tower[] = {Angle(52, 39, 27.2531), Angle(1, 43, 4.5177), 24.7};
  double neh[3];
  if (!TBLHToTM(tower, neh, airy, grid) || !TTMToBLH(neh, blh, airy, grid)) ++failures;
  Expect("northing", neh[0], 313177.270, kPrintedMillimetre);
  Expect("easting", neh[1], 651409.903, kPrintedMillimetre);
  Expect("height", neh[2], tower[2], 0);
  Expect("latitude", blh[0], tower[0], kThousandthSecond);
  return failures;
}
