#include "geomath/geodesic/geodesic_series.h"

#include <initializer_list>
#include <iterator>

namespace zel_cs::geomath {
namespace {

// Σ c[i]·nⁱ.
double InN(double n, std::initializer_list<double> c) {
  double sum = 0;
  for (auto at = std::rbegin(c); at != std::rend(c); ++at) sum = *at + n * sum;
  return sum;
}

}  // namespace

GeodesicLongitudeSeries GeodesicLongitudeSeries::Of(double n) {
  return {
      .a3 = {1,                            // eq. 24
             InN(n, {-1.0 / 2, 1.0 / 2}),  //
             InN(n, {-1.0 / 4, -1.0 / 8, 3.0 / 8}), InN(n, {-1.0 / 16, -3.0 / 16, -1.0 / 16}),  //
             InN(n, {-3.0 / 64, -1.0 / 32}),                                                    //
             -3.0 / 128},
      .c31 = {InN(n, {1.0 / 4, -1.0 / 4}),                                              // eq. 25
              InN(n, {1.0 / 8, 0, -1.0 / 8}), InN(n, {3.0 / 64, 3.0 / 64, -1.0 / 64}),  //
              InN(n, {5.0 / 128, 1.0 / 64}),                                            //
              3.0 / 128},
      .c32 = {InN(n, {1.0 / 16, -3.0 / 32, 1.0 / 32}), InN(n, {3.0 / 64, -1.0 / 32, -3.0 / 64}),  //
              InN(n, {3.0 / 128, 1.0 / 128}),                                                     //
              5.0 / 256},
      .c33 = {InN(n, {5.0 / 192, -3.0 / 64, 5.0 / 192}),  //
              InN(n, {3.0 / 128, -5.0 / 192}),            //
              7.0 / 512},
      .c34 = {InN(n, {7.0 / 512, -7.0 / 256}), 7.0 / 512},
      .c35 = 21.0 / 2560};
}

GeodesicAreaSeries GeodesicAreaSeries::Of(double n) {
  return {{
      // eq. 63
      {InN(n, {2.0 / 3, -4.0 / 15, 8.0 / 105, 4.0 / 315, 16.0 / 3465, 20.0 / 9009}),
       InN(n, {-1.0 / 5, 16.0 / 35, -32.0 / 105, 16.0 / 385, 64.0 / 15015}),
       InN(n, {-2.0 / 105, -32.0 / 315, 1088.0 / 3465, -1184.0 / 5005}),
       InN(n, {11.0 / 315, -368.0 / 3465, -32.0 / 6435}),  //
       InN(n, {4.0 / 1155, 1088.0 / 45045}),               //
       97.0 / 15015},
      {InN(n, {1.0 / 45, -16.0 / 315, 32.0 / 945, -16.0 / 3465, -64.0 / 135135}),
       InN(n, {-2.0 / 105, 64.0 / 945, -128.0 / 1485, 1984.0 / 45045}),
       InN(n, {-1.0 / 105, 16.0 / 2079, 5792.0 / 135135}),  //
       InN(n, {4.0 / 1155, -2944.0 / 135135}),              //
       1.0 / 9009},
      {InN(n, {4.0 / 525, -32.0 / 1575, 64.0 / 3465, -32.0 / 5005}),
       InN(n, {-8.0 / 1575, 128.0 / 5775, -256.0 / 6825}),  //
       InN(n, {-8.0 / 1925, 1856.0 / 225225}),              //
       8.0 / 10725},
      {InN(n, {8.0 / 2205, -256.0 / 24255, 512.0 / 45045}),  //
       InN(n, {-16.0 / 8085, 1024.0 / 105105}),              //
       -136.0 / 63063},
      {InN(n, {64.0 / 31185, -512.0 / 81081}), -128.0 / 135135},
      {128.0 / 99099},
  }};
}

GeodesicTerms<6> GeodesicAreaSeries::C4(double eps) const {
  GeodesicTerms<6> terms;
  double power = 1;
  for (std::size_t l = 0; l < kGeodesicOrder; ++l) {
    double sum = 0;
    for (std::size_t j = kGeodesicOrder - l; j-- > 0;) sum = c4[l][j] + eps * sum;
    terms.c[l] = power * sum;
    power *= eps;
  }
  return terms;
}

}  // namespace zel_cs::geomath
