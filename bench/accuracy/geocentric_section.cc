#include <algorithm>
#include <cmath>
#include <numbers>
#include <ostream>
#include <string>

#include "bench/accuracy/markdown.h"
#include "bench/accuracy/sections.h"
#include "geomath/geomath.h"

// Geocentric coordinates and datums: the definitions in extended precision.
namespace {

using namespace zel_cs::geomath;
using exact::Real;

constexpr int kPoints = 4000;
constexpr exact::Ellipsoid kExactWgs84{kWgs84A, 1 / Real{kWgs84InvF}};

struct Point {
  Real x, y, z;
};
Point operator-(Point p, Point q) { return {p.x - q.x, p.y - q.y, p.z - q.z}; }
Real Distance(Point p) { return std::sqrt(p.x * p.x + p.y * p.y + p.z * p.z); }

Point Geocentric(Real phi, Real lambda, Real h) {
  const Real nu = exact::PrimeVerticalRadius(kExactWgs84, phi);
  const Real parallel = (nu + h) * std::cos(phi);
  return {parallel * std::cos(lambda), parallel * std::sin(lambda),
          (nu * (1 - kExactWgs84.e2) + h) * std::sin(phi)};
}

// Degrees and metres.
struct Shell {
  const char* where;
  double south, north, low, high;
};
constexpr Shell kShells[] = {
    {"latitudes 0° to 75°, heights −10 km to 10 km", 0, 75, -1e4, 1e4},
    {"latitudes 75° to 89°", 75, 89, -1e4, 1e4},
    {"latitudes 89° to 89.9°", 89, 89.9, -1e4, 1e4},
    {"11 km to 110 m from a pole", 89.9, 89.999, -1e4, 1e4},
    {"110 m to 1 m from a pole", 89.999, 89.99999, -1e4, 1e4},
    {"latitudes 0° to 75°, heights 10 km to 1000 km", 0, 75, 1e4, 1e6},
    {"latitudes 0° to 75°, heights 1000 km to 100000 km", 0, 75, 1e6, 1e8},
    {"latitudes 0° to 75°, depths 10 km to 5000 km", 0, 75, -5e6, -1e4},
    {"latitudes 0° to 75°, depths 5000 km to 6300 km", 0, 75, -6.3e6, -5e6},
};

// Errors of geodetic coordinates, metres: along the ellipsoid and along its normal.
struct Errors {
  Real position = 0, height = 0;
  int refused = 0;

  // How far the exact image of (B, L, H) is from the point that it was computed from.
  void Include(const double (&blh)[3], Point from) {
    const Point error = Geocentric(blh[0], blh[1], blh[2]) - from;
    const Real c = std::cos(Real{blh[0]});
    const Real along = c * std::cos(Real{blh[1]}) * error.x + c * std::sin(Real{blh[1]}) * error.y +
                       std::sin(Real{blh[0]}) * error.z;
    height = std::max(height, std::abs(along));
    const Real total = Distance(error);
    position = std::max(position, std::sqrt(std::max<Real>(0, total * total - along * along)));
  }
};

struct ShellErrors {
  Real forward = 0;
  Errors scalar, batch;
};

ShellErrors Measure(const Shell& shell) {
  const Ellipsoid wgs84 = MakeEllipsoid(kWgs84A, kWgs84InvF);
  ShellErrors worst;
  double u[3] = {0.5, 0.5, 0.5};
  for (int i = 0; i < kPoints; ++i) {
    constexpr double kStep[] = {0.8191725133961645, 0.6710436067037893, 0.5497004779019703};
    for (int axis = 0; axis < 3; ++axis) u[axis] = std::fmod(u[axis] + kStep[axis], 1.0);
    const double hemisphere = i % 2 == 0 ? 1 : -1;
    const double phi = hemisphere * kRadPerDeg * (shell.south + u[0] * (shell.north - shell.south));
    const double lambda = kPi * (2 * u[1] - 1), h = shell.low + u[2] * (shell.high - shell.low);

    double xyz[3] = {phi, lambda, h};
    wgs84.BLH_to_XYZ(xyz[0], xyz[1], xyz[2]);
    worst.forward = std::max(worst.forward,
                             Distance(Point{xyz[0], xyz[1], xyz[2]} - Geocentric(phi, lambda, h)));

    // To whole millimetres, since nobody's points lie on latitudes that are doubles exactly.
    for (double& coordinate : xyz) coordinate = std::round(coordinate * 1e3) / 1e3;
    const Point p{xyz[0], xyz[1], xyz[2]};
    double blh[3] = {xyz[0], xyz[1], xyz[2]};
    if (wgs84.XYZ_to_BLH(blh[0], blh[1], blh[2])) {
      worst.scalar.Include(blh, p);
    } else {
      ++worst.scalar.refused;
    }
    wgs84.XYZ_to_BLH_Batch(&xyz[0], &xyz[1], &xyz[2], 1);
    worst.batch.Include(xyz, p);
  }
  return worst;
}

// The rotations of the published parameters (coordinate frame), arc-seconds to a matrix.
struct Rotation {
  Real r[3][3];

  Rotation(Real rX, Real rY, Real rZ) {
    const Real unit = std::numbers::pi_v<Real> / 180 / 3600;
    const Real s0 = std::sin(rX * unit), c0 = std::cos(rX * unit);
    const Real s1 = std::sin(rY * unit), c1 = std::cos(rY * unit);
    const Real s2 = std::sin(rZ * unit), c2 = std::cos(rZ * unit);
    const Real x[3][3] = {{1, 0, 0}, {0, c0, -s0}, {0, s0, c0}};
    const Real y[3][3] = {{c1, 0, s1}, {0, 1, 0}, {-s1, 0, c1}};
    const Real z[3][3] = {{c2, -s2, 0}, {s2, c2, 0}, {0, 0, 1}};
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) {
        r[i][j] = 0;
        for (int k = 0; k < 3; ++k)
          for (int l = 0; l < 3; ++l) r[i][j] += x[i][k] * y[k][l] * z[l][j];
      }
  }
  Point Turn(Point p) const {
    return {r[0][0] * p.x + r[0][1] * p.y + r[0][2] * p.z,
            r[1][0] * p.x + r[1][1] * p.y + r[1][2] * p.z,
            r[2][0] * p.x + r[2][1] * p.y + r[2][2] * p.z};
  }
};

}  // namespace

void WriteGeocentric(std::ostream& out) {
  out << R"(
## Geocentric coordinates

WGS84, both hemispheres. The geodetic position is judged by its exact geocentric image: along the
ellipsoid (position) and along its normal (height). Points are rounded to 1 mm. `XYZ_to_BLH` iterates
on tan B, refuses some points, and loses digits of the height near the poles; batches and
`CoordinateChain` take a method without these weaknesses.

)";
  WriteHead(out, {"where", "BLH_to_XYZ", "XYZ_to_BLH refuses", "position", "height",
                  "batch: position", "height"});
  for (const Shell& shell : kShells) {
    const ShellErrors worst = Measure(shell);
    WriteRow(out, {shell.where, Length(worst.forward),
                   std::to_string(worst.scalar.refused) + " of " + std::to_string(kPoints),
                   Length(worst.scalar.position), Length(worst.scalar.height),
                   Length(worst.batch.position), Length(worst.batch.height)});
  }
}

void WriteDatum(std::ostream& out) {
  constexpr double kShift[] = {446.448, -125.157, 542.060}, kTurn[] = {-0.1502, -0.2470, -0.8421};
  constexpr double kScale = -20.4894e-6;
  Ellipsoid airy = MakeEllipsoid(6377563.396, 299.3249646);
  const Datum datum(&airy, kShift[0], kShift[1], kShift[2], kTurn[0], kTurn[1], kTurn[2], kScale,
                    userTypeLibrary, nullptr);
  const Rotation rotation(kTurn[0], kTurn[1], kTurn[2]);

  Real forward = 0, roundTrip = 0, batch = 0;
  for (int i = 0; i < kPoints; ++i) {
    const Real phi = std::numbers::pi_v<Real> * ((i + 0.5L) / kPoints - 0.5L);
    const Point at = Geocentric(phi, 2.4L * i, 100);  // a spiral from pole to pole
    double p[3] = {static_cast<double>(at.x), static_cast<double>(at.y), static_cast<double>(at.z)};
    const Point from{p[0], p[1], p[2]};
    const Point turned =
        rotation.Turn({p[0] - Real{kShift[0]}, p[1] - Real{kShift[1]}, p[2] - Real{kShift[2]}});
    const Real factor = 1 + Real{kScale};
    const Point expected{turned.x / factor, turned.y / factor, turned.z / factor};

    double column[3] = {p[0], p[1], p[2]};
    datum.ToLocalDatum(p[0], p[1], p[2]);
    datum.ToLocalDatumBatch(&column[0], &column[1], &column[2], 1);
    const Point local{p[0], p[1], p[2]};
    forward = std::max(forward, Distance(local - expected));
    batch = std::max(batch, Distance(local - Point{column[0], column[1], column[2]}));
    datum.ToWGS84Datum(p[0], p[1], p[2]);
    roundTrip = std::max(roundTrip, Distance(from - Point{p[0], p[1], p[2]}));
  }
  out << R"(
## Datums

`Datum` with the seven parameters of Great Britain, against the exact similarity at points on the
ground from pole to pole.

)";
  WriteHead(out, {"to the local datum", "round trip", "batch − one point"});
  WriteRow(out, {Length(forward), Length(roundTrip), BatchDeviation(batch)});
}
