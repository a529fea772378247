#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/procedural/projection_functions.h"
#include "tests/support/proj_peer.h"
#include "tests/support/tolerance.h"

// The methods without a class against PROJ over lattices of their domains.
namespace {

using tolerance::kDegree;
using Function = bool (*)(const double*, double*, const double*, const double*);

constexpr double kD = kDegree;
constexpr double kWgs84[] = {6378137.0, 1 / 298.257223563};
// PROJ's arc misses the exact one (40-digit quadrature) by 4.8e-6 m at 75°, ours by 5e-8 m; the cone
// constant of an equidistant conic carries that to 2.8e-5 m at its far side.
constexpr double kArcMetres = 5e-5;

// A function as a projection, so that it is compared as the classes are. `shift` is taken off its
// northing and easting.
class FunctionProjection : public zel_cs::geomath::TGeoProj {
 public:
  FunctionProjection(Function forward, std::vector<double> param, double northShift,
                     double eastShift)
      : forward_(forward),
        param_(std::move(param)),
        northShift_(northShift),
        eastShift_(eastShift) {}

  bool ForwardPoint(double& b, double& l, zel_cs::geomath::PointFactors*) const override {
    const double blh[3] = {b, l, 0};
    double neh[3];
    if (!forward_(blh, neh, kWgs84, param_.data())) return false;
    b = neh[0] - northShift_;
    l = neh[1] - eastShift_;
    return true;
  }

 private:
  Function forward_;
  std::vector<double> param_;
  double northShift_, eastShift_;
};

std::shared_ptr<FunctionProjection> Wrap(Function forward, std::vector<double> param,
                                         double northShift = 0, double eastShift = 0) {
  return std::make_shared<FunctionProjection>(forward, std::move(param), northShift, eastShift);
}

// PROJ counts u of the line through two points from its centre, the function from the natural
// origin: azimuth of the line at the centre, and u there in metres.
constexpr double kAlpha = -35.5120501752 * kDegree;
constexpr double kCentre = 5432384.8068;
constexpr double kPrinted = 1e-4;  // metres: the digits of these two

class ProjectionFunctionsPeer : public testing::TestWithParam<PeerCase> {};

// The functions give coordinates alone.
TEST_P(ProjectionFunctionsPeer, AgreesWithProj) {
  PeerCase coordinates = GetParam();
  coordinates.factors = {};
  ExpectAgreesWithPeer(coordinates);
}

INSTANTIATE_TEST_SUITE_P(
    WithoutClass, ProjectionFunctionsPeer,
    testing::Values(
        PeerCase{"Bonne",
                 Wrap(TBLHToBonne, {45 * kD, 10 * kD, 1e5, 2e5}),
                 "+proj=bonne +ellps=WGS84 +lat_1=45 +lon_0=10 +x_0=100000 +y_0=200000",
                 {-60, 85, -100, 100},
                 kArcMetres},
        PeerCase{"Bonne south",
                 Wrap(TBLHToBonne, {-30 * kD, 10 * kD, 0, 0}),
                 "+proj=bonne +ellps=WGS84 +lat_1=-30 +lon_0=10",
                 {-85, 60, -100, 100},
                 kArcMetres},
        PeerCase{"Sinusoidal",
                 Wrap(TBLHToSinusoidal, {10 * kD, 1e5, 2e5}),
                 "+proj=sinu +ellps=WGS84 +lon_0=10 +x_0=100000 +y_0=200000",
                 {-89, 89, -160, 180},
                 kArcMetres},
        PeerCase{"Conic",
                 Wrap(TBLHToEquidistant, {30 * kD, 60 * kD, 10 * kD, 45 * kD, 1e5, 2e5}),
                 "+proj=eqdc +ellps=WGS84 +lat_1=30 +lat_2=60 +lon_0=10 +lat_0=45 +x_0=100000 "
                 "+y_0=200000",
                 {-40, 89, -160, 180},
                 kArcMetres},
        PeerCase{"Conic south",
                 Wrap(TBLHToEquidistant, {-20 * kD, -20 * kD, 10 * kD, -25 * kD, 0, 0}),
                 "+proj=eqdc +ellps=WGS84 +lat_1=-20 +lat_2=-20 +lon_0=10 +lat_0=-25",
                 {-89, 40, -160, 180},
                 kArcMetres},
        // PROJ measures geodesics, the method normal sections: 0.55 mm at 45 km.
        PeerCase{"Azimuthal, 45 km",
                 Wrap(TBLHToEquidistantAz, {48 * kD, 9 * kD, 1e5, 2e5}),
                 "+proj=aeqd +ellps=WGS84 +lat_0=48 +lon_0=9 +x_0=100000 +y_0=200000",
                 {47.7, 48.3, 8.6, 9.4},
                 1e-3},
        PeerCase{"Two points",
                 Wrap(TBLHToOM2P, {47 * kD, -87 * kD, 40 * kD, -80 * kD, 43 * kD, 0.9996, 1e5, 2e5},
                      kCentre* std::cos(kAlpha), kCentre* std::sin(kAlpha)),
                 "+proj=omerc +ellps=WGS84 +lat_0=43 +lat_1=47 +lon_1=-87 +lat_2=40 +lon_2=-80 "
                 "+k=0.9996 +x_0=100000 +y_0=200000",
                 {30, 55, -100, -70},
                 kPrinted}));

}  // namespace
