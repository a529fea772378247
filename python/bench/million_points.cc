// The C++ side of throughput.py: reads lines "ROW FORM" and answers each with the nanoseconds per
// point that one run of it took.
#include <cstdio>
#include <cstring>
#include <ctime>
#include <functional>
#include <iostream>
#include <memory>
#include <string>

#include "geomath/geomath.h"

using namespace zel_cs::geomath;

namespace {

constexpr std::size_t kPoints = 1'000'000;

using Column = std::unique_ptr<double[]>;
Column NewColumn() { return std::make_unique_for_overwrite<double[]>(kPoints); }

struct Columns {
  Column x = NewColumn(), y = NewColumn(), h = NewColumn();
};

// Corners of the box that throughput.py spreads its points over, degrees and metres.
Columns Points() {
  Columns points;
  for (std::size_t i = 0; i < kPoints; ++i) {
    const double t = static_cast<double>(i) / kPoints;
    points.x[i] = 47 + 8 * t;
    points.y[i] = 6 + 6 * (t * 997 - static_cast<double>(static_cast<long>(t * 997)));
    points.h[i] = 1000 * t;
  }
  return points;
}

struct System {
  Ellipsoid wgs84 = MakeEllipsoid(kWgs84A, kWgs84InvF);
  Ellipsoid bessel = MakeEllipsoid(6377397.155, 299.1528128);
  Datum datum{&bessel, 598.1, 73.7, 418.2, 0.202, 0.045, -2.455, 6.7e-6, userTypeUser, nullptr};
  TUTMProj utm{kWgs84A, kWgs84InvF, 9 * kRadPerDeg, 0.9996, 0, 500000, 0};
  TUTMProj onBessel{bessel.a, bessel.invF, 9 * kRadPerDeg, 1, 0, 3500000, 0};
  CoordinateChain chain{&wgs84, &datum, &onBessel};
};

void Multiply(double* column, double factor) {
  for (std::size_t i = 0; i < kPoints; ++i) column[i] *= factor;
}

struct Row {
  const char* name;
  std::function<void(double*, double*, double*)> there, back;  // in place, radians
};

double Nanoseconds(const std::function<void()>& work) {
  const std::clock_t start = std::clock();  // processor time, as Python's process_time
  work();
  return 1e9 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / kPoints;
}

}  // namespace

int main() {
  const System s;
  const Row rows[] = {
      {"projection", [&](double* x, double* y, double*) { s.utm.ForwardBatch(x, y, kPoints); },
       [&](double* x, double* y, double*) { s.utm.InverseBatch(x, y, kPoints); }},
      {"geocentric",
       [&](double* x, double* y, double* h) { s.wgs84.BLH_to_XYZ_Batch(x, y, h, kPoints); },
       [&](double* x, double* y, double* h) { s.wgs84.XYZ_to_BLH_Batch(x, y, h, kPoints); }},
      {"chain", [&](double* x, double* y, double* h) { s.chain.ToLocalBatch(x, y, h, kPoints); },
       [&](double* x, double* y, double* h) { s.chain.ToGlobalBatch(x, y, h, kPoints); }},
  };
  const Columns given = Points();
  Columns kept = Points(), inPlace = Points();
  Multiply(inPlace.x.get(), kRadPerDeg);
  Multiply(inPlace.y.get(), kRadPerDeg);

  // What a call of Python does: copies degrees and converts the copy.
  const auto copyAndConvert = [&](const Row& row, Columns& to) {
    const bool heights = std::string(row.name) != "projection";
    std::memcpy(to.x.get(), given.x.get(), kPoints * sizeof(double));
    std::memcpy(to.y.get(), given.y.get(), kPoints * sizeof(double));
    if (heights) std::memcpy(to.h.get(), given.h.get(), kPoints * sizeof(double));
    Multiply(to.x.get(), kRadPerDeg);
    Multiply(to.y.get(), kRadPerDeg);
    row.there(to.x.get(), to.y.get(), to.h.get());
  };
  for (std::string name, form; std::cin >> name >> form;) {
    for (const Row& row : rows) {
      if (name != row.name) continue;
      double took = 0;
      if (form == "new") {
        took = Nanoseconds([&] {
          Columns fresh;
          copyAndConvert(row, fresh);
        });
      } else if (form == "kept") {
        took = Nanoseconds([&] { copyAndConvert(row, kept); });
      } else {  // there and back, so that the points stay where they are
        took = Nanoseconds([&] {
          row.there(inPlace.x.get(), inPlace.y.get(), inPlace.h.get());
          row.back(inPlace.x.get(), inPlace.y.get(), inPlace.h.get());
        });
      }
      std::printf("%.4f\n", took);
      std::fflush(stdout);
    }
  }
  return 0;
}
