// Ellipsoid, datum, transverse Mercator, site and the whole chain beside PROJ and GeographicLib.
#include <cmath>
#include <initializer_list>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

#include "bench/measure.h"
#include "bench/measure_covariance.h"
#include "geomath/geomath.h"

#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
#include <GeographicLib/Geocentric.hpp>
#include <GeographicLib/TransverseMercator.hpp>
#endif

namespace {

using namespace zel_cs::geomath;

const Ellipsoid& Wgs84() {
  static const Ellipsoid ellipsoid = MakeEllipsoid(kWgs84A, kWgs84InvF);
  return ellipsoid;
}

const Columns& Geodetic() {
  static const Columns points = SpreadPoints({-1.5, -3.1, -100}, {1.5, 3.1, 9000});
  return points;
}

const Columns& Geocentric() {
  static const Columns points = [] {
    Columns xyz = Geodetic();
    Wgs84().BLH_to_XYZ_Batch(xyz.first.data(), xyz.second.data(), xyz.third.data(), kBenchPoints);
    return xyz;
  }();
  return points;
}

constexpr double kCentralMeridian = 9 * kRadPerDeg;

const Columns& InZone() {
  static const Columns points = SpreadPoints({-1.4, kCentralMeridian - 3 * kRadPerDeg},
                                             {1.4, kCentralMeridian + 3 * kRadPerDeg});
  return points;
}

const TUTMProj& Utm32() {
  static const TUTMProj projection(kWgs84A, kWgs84InvF, kCentralMeridian, 0.9996, 0, 500000, 0);
  return projection;
}

const Columns& GridInZone() {
  static const Columns points = [] {
    Columns grid = InZone();
    Utm32().ForwardBatch(grid.first.data(), grid.second.data(), kBenchPoints);
    return grid;
  }();
  return points;
}

// The seven parameters of Great Britain (Ordnance Survey, A guide to coordinate systems).
const Datum& GreatBritain() {
  static Ellipsoid airy = MakeEllipsoid(6377563.396, 299.3249646);
  static const Datum datum(&airy, 446.448, -125.157, 542.060, -0.1502, -0.2470, -0.8421,
                           -20.4894e-6, userTypeLibrary, nullptr);
  return datum;
}

// A contender that converts one point at a time: pairs, or triples.
template <class ConvertPoint>
auto OneByOne(ConvertPoint convert) {
  return [convert](Columns& c) {
    for (std::size_t i = 0; i < kBenchPoints; ++i)
      if constexpr (std::is_invocable_v<ConvertPoint, double&, double&>) {
        convert(c.first[i], c.second[i]);
      } else {
        convert(c.first[i], c.second[i], c.third[i]);
      }
  };
}

template <class Convert>
void Register(const char* name, const Columns& points, Convert convert) {
  benchmark::RegisterBenchmark(name, [&points, convert](benchmark::State& state) {
    MeasureInPlace(state, points, convert);
  });
}

#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
// GeographicLib's angles are degrees.
Columns InDegrees(Columns points) {
  for (std::vector<double>* angles : {&points.first, &points.second})
    for (double& angle : *angles) angle *= kDegPerRad;
  return points;
}
#endif

#ifdef GEOMATH_HAVE_PROJ
void RegisterProj(const char* name, const Columns& points, const std::string& definition,
                  PJ_DIRECTION direction, bool latitudeFirst) {
  benchmark::RegisterBenchmark(name, [=, &points](benchmark::State& state) {
    const ProjPeer peer(definition.c_str());
    if (!peer.Good()) {
      state.SkipWithError("PROJ does not know the definition");
      return;
    }
    MeasureInPlace(state, points, [&](Columns& c) {
      double* x = latitudeFirst ? c.second.data() : c.first.data();
      double* y = latitudeFirst ? c.first.data() : c.second.data();
      peer.Convert(direction, x, y, c.third.empty() ? nullptr : c.third.data(), kBenchPoints);
    });
  });
}
#endif

void RegisterEllipsoid() {
  Register("geodetic to geocentric/scalar", Geodetic(),
           OneByOne([](double& b, double& l, double& h) { Wgs84().BLH_to_XYZ(b, l, h); }));
  Register("geodetic to geocentric/batch", Geodetic(), [](Columns& c) {
    Wgs84().BLH_to_XYZ_Batch(c.first.data(), c.second.data(), c.third.data(), kBenchPoints);
  });
  Register("geocentric to geodetic/scalar", Geocentric(),
           OneByOne([](double& x, double& y, double& z) { Wgs84().XYZ_to_BLH(x, y, z); }));
  Register("geocentric to geodetic/batch", Geocentric(), [](Columns& c) {
    Wgs84().XYZ_to_BLH_Batch(c.first.data(), c.second.data(), c.third.data(), kBenchPoints);
  });
#ifdef GEOMATH_HAVE_PROJ
  RegisterProj("geodetic to geocentric/PROJ", Geodetic(), "+proj=cart +ellps=WGS84", PJ_FWD, true);
  RegisterProj("geocentric to geodetic/PROJ", Geocentric(), "+proj=cart +ellps=WGS84", PJ_INV,
               false);
#endif
#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
  static const Columns degrees = InDegrees(Geodetic());
  Register("geodetic to geocentric/GeographicLib", degrees,
           OneByOne([](double& b, double& l, double& h) {
             double x, y, z;
             GeographicLib::Geocentric::WGS84().Forward(b, l, h, x, y, z);
             b = x;
             l = y;
             h = z;
           }));
  Register("geocentric to geodetic/GeographicLib", Geocentric(),
           OneByOne([](double& x, double& y, double& z) {
             double b, l, h;
             GeographicLib::Geocentric::WGS84().Reverse(x, y, z, b, l, h);
             x = b;
             y = l;
             z = h;
           }));
#endif
}

void RegisterDatum() {
  Register("seven parameters to local/scalar", Geocentric(),
           OneByOne([](double& x, double& y, double& z) { GreatBritain().ToLocalDatum(x, y, z); }));
  Register("seven parameters to local/batch", Geocentric(), [](Columns& c) {
    GreatBritain().ToLocalDatumBatch(c.first.data(), c.second.data(), c.third.data(), kBenchPoints);
  });
  Register("seven parameters to WGS84/scalar", Geocentric(),
           OneByOne([](double& x, double& y, double& z) { GreatBritain().ToWGS84Datum(x, y, z); }));
  Register("seven parameters to WGS84/batch", Geocentric(), [](Columns& c) {
    GreatBritain().ToWGS84DatumBatch(c.first.data(), c.second.data(), c.third.data(), kBenchPoints);
  });
#ifdef GEOMATH_HAVE_PROJ
  constexpr const char* kHelmert =
      "+proj=helmert +x=-446.448 +y=125.157 +z=-542.060 +rx=-0.1502 +ry=-0.2470 +rz=-0.8421 "
      "+s=20.4894 +convention=position_vector";
  RegisterProj("seven parameters to local/PROJ", Geocentric(), kHelmert, PJ_FWD, false);
  RegisterProj("seven parameters to WGS84/PROJ", Geocentric(), kHelmert, PJ_INV, false);
#endif
}

void RegisterUtm() {
  Register("UTM forward/scalar", InZone(), [proj = Utm32()](Columns& c) mutable {
    for (std::size_t i = 0; i < kBenchPoints; ++i) proj.Forward(c.first[i], c.second[i]);
  });
  Register("UTM forward/batch", InZone(),
           [](Columns& c) { Utm32().ForwardBatch(c.first.data(), c.second.data(), kBenchPoints); });
  Register("UTM inverse/scalar", GridInZone(), [proj = Utm32()](Columns& c) mutable {
    for (std::size_t i = 0; i < kBenchPoints; ++i) proj.Inverse(c.first[i], c.second[i]);
  });
  Register("UTM inverse/batch", GridInZone(),
           [](Columns& c) { Utm32().InverseBatch(c.first.data(), c.second.data(), kBenchPoints); });
#ifdef GEOMATH_HAVE_PROJ
  constexpr const char* kUtm = "+proj=utm +zone=32 +ellps=WGS84";
  constexpr const char* kShort =
      "+proj=tmerc +approx +lon_0=9 +k_0=0.9996 +x_0=500000 +ellps=WGS84";
  RegisterProj("UTM forward/PROJ", InZone(), kUtm, PJ_FWD, true);
  RegisterProj("UTM forward/PROJ, short series", InZone(), kShort, PJ_FWD, true);
  RegisterProj("UTM inverse/PROJ", GridInZone(), kUtm, PJ_INV, true);
  RegisterProj("UTM inverse/PROJ, short series", GridInZone(), kShort, PJ_INV, true);
#endif
#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
  static const Columns degrees = InDegrees(InZone());
  Register("UTM forward/GeographicLib", degrees, OneByOne([](double& b, double& l) {
             double x, y;
             GeographicLib::TransverseMercator::UTM().Forward(9, b, l, x, y);
             b = y;
             l = x + 500000;
           }));
  Register("UTM inverse/GeographicLib", GridInZone(), OneByOne([](double& n, double& e) {
             double b, l;
             GeographicLib::TransverseMercator::UTM().Reverse(9, e - 500000, n, b, l);
             n = b;
             e = l;
           }));
#endif
}

// WGS84 to the national grid of Great Britain over the mainland, and on to a site's own plane and
// ground system.
const Columns& Mainland() {
  static const Columns points = SpreadPoints({50 * kRadPerDeg, -5 * kRadPerDeg, 0},
                                             {58.5 * kRadPerDeg, 1.5 * kRadPerDeg, 900});
  return points;
}

struct SiteParameter {
  static constexpr double tN = -9e4, tE = 5e4, s = 1.0003, theta = 0.2;
  static constexpr double h0 = -48, aN = 1e-5, aE = 2e-5;
};

const LocalToGrid& Site() {
  static const LocalToGrid site = [] {
    using P = SiteParameter;
    LocalToGrid result;
    result.mode = LocalToGrid::kBoth;
    for (int i = 0; const double value : {P::tN, P::tE, P::s, P::theta})
      result.SetPlaneParam(value, i++, 2);
    for (int i = 0; const double value : {P::h0, P::aN, P::aE})
      result.SetHeightParam(value, i++, 2);
    return result;
  }();
  return site;
}

const GridToGround& Ground() {
  static const GridToGround ground = [] {
    GridToGround result;
    result.flags = GridToGround::kHasOrigin;
    result.scale = 1.0002;
    result.rotation = 0.1;
    result.originN = 5e5;
    result.originE = 4e5;
    result.offsetN = 70;
    result.offsetE = -20;
    return result;
  }();
  return ground;
}

const CoordinateChain& NationalGrid() {
  static const TTMProj grid(6377563.396, 299.3249646, -2 * kRadPerDeg, 0.9996012717,
                            49 * kRadPerDeg, 400000, -100000);
  static const CoordinateChain chain(&Wgs84(), &GreatBritain(), &grid);
  return chain;
}

const CoordinateChain& SiteSystem() {
  static const CoordinateChain chain = [] {
    CoordinateChain result = NationalGrid();
    result.SetLocalization(&Site());
    result.SetGround(&Ground());
    return result;
  }();
  return chain;
}

Columns ConvertedBy(const CoordinateChain& chain) {
  Columns local = Mainland();
  chain.ToLocalBatch(local.first.data(), local.second.data(), local.third.data(), kBenchPoints);
  return local;
}

const Columns& MainlandGrid() {
  static const Columns points = ConvertedBy(NationalGrid());
  return points;
}

const Columns& MainlandGridPairs() {
  static const Columns points = [] {
    Columns pairs = MainlandGrid();
    pairs.third.clear();
    return pairs;
  }();
  return points;
}

const Columns& MainlandSite() {
  static const Columns points = ConvertedBy(SiteSystem());
  return points;
}

// The same planes as PROJ's affine transformation of (east, north, height).
std::string Affine(std::initializer_list<std::pair<const char*, double>> terms) {
  std::ostringstream definition;
  definition.precision(17);
  definition << "+proj=affine";
  for (const auto& [name, value] : terms) definition << " +" << name << '=' << value;
  return definition.str();
}

std::string SiteAffine() {
  using P = SiteParameter;
  const double c = P::s * std::cos(P::theta), d = P::s * std::sin(P::theta);
  return Affine({{"xoff", P::tE},
                 {"yoff", P::tN},
                 {"zoff", P::h0},
                 {"s11", c},
                 {"s12", d},
                 {"s21", -d},
                 {"s22", c},
                 {"s31", P::aE},
                 {"s32", P::aN}});
}

std::string GroundAffine() {
  const GridToGround& g = Ground();
  const double c = g.scale * std::cos(g.rotation), d = g.scale * std::sin(g.rotation);
  return Affine({{"xoff", g.originE + g.offsetE - d * g.originN - c * g.originE},
                 {"yoff", g.originN + g.offsetN - c * g.originN + d * g.originE},
                 {"s11", c},
                 {"s12", d},
                 {"s21", -d},
                 {"s22", c}});
}

void RegisterSite() {
  Register("grid to local/scalar", MainlandGrid(), OneByOne([](double& n, double& e, double& h) {
             Site().ToLocal(n, e, h, LocalToGrid::kBoth);
           }));
  Register("grid to local/batch", MainlandGrid(), [](Columns& c) {
    Site().ToLocalBatch(c.first.data(), c.second.data(), c.third.data(), kBenchPoints,
                        LocalToGrid::kBoth);
  });
  Register("local to grid/scalar", MainlandGrid(), OneByOne([](double& n, double& e, double& h) {
             Site().ToGrid(n, e, h, LocalToGrid::kBoth);
           }));
  Register("local to grid/batch", MainlandGrid(), [](Columns& c) {
    Site().ToGridBatch(c.first.data(), c.second.data(), c.third.data(), kBenchPoints,
                       LocalToGrid::kBoth);
  });
  static unsigned long present = kHasNorth | kHasEast;
  static double height = 0;
  Register("grid to ground/scalar", MainlandGridPairs(),
           OneByOne([](double& n, double& e) { Ground().ToGround(n, e, height, &present); }));
  Register("grid to ground/batch", MainlandGridPairs(), [](Columns& c) {
    Ground().ToGroundBatch(c.first.data(), c.second.data(), kBenchPoints);
  });
  Register("ground to grid/scalar", MainlandGridPairs(),
           OneByOne([](double& n, double& e) { Ground().ToGrid(n, e, height, &present); }));
  Register("ground to grid/batch", MainlandGridPairs(),
           [](Columns& c) { Ground().ToGridBatch(c.first.data(), c.second.data(), kBenchPoints); });
#ifdef GEOMATH_HAVE_PROJ
  RegisterProj("grid to local/PROJ", MainlandGrid(), SiteAffine(), PJ_FWD, true);
  RegisterProj("local to grid/PROJ", MainlandGrid(), SiteAffine(), PJ_INV, true);
  RegisterProj("grid to ground/PROJ", MainlandGridPairs(), GroundAffine(), PJ_FWD, true);
  RegisterProj("ground to grid/PROJ", MainlandGridPairs(), GroundAffine(), PJ_INV, true);
#endif
}

void RegisterChain(const std::string& row, const CoordinateChain& chain, const Columns& local,
                   [[maybe_unused]] const std::string& afterProjection) {
  const std::string forward = row + " forward/", inverse = row + " inverse/";
  Register((forward + "scalar").c_str(), Mainland(),
           OneByOne([&chain](double& b, double& l, double& h) { chain.ToLocal(b, l, h); }));
  Register((forward + "batch").c_str(), Mainland(), [&chain](Columns& c) {
    chain.ToLocalBatch(c.first.data(), c.second.data(), c.third.data(), kBenchPoints);
  });
  Register((inverse + "scalar").c_str(), local,
           OneByOne([&chain](double& n, double& e, double& h) { chain.ToGlobal(n, e, h); }));
  Register((inverse + "batch").c_str(), local, [&chain](Columns& c) {
    chain.ToGlobalBatch(c.first.data(), c.second.data(), c.third.data(), kBenchPoints);
  });
#ifdef GEOMATH_HAVE_PROJ
  const std::string pipeline =
      "+proj=pipeline +step +proj=cart +ellps=WGS84 +step +proj=helmert +x=-446.448 +y=125.157 "
      "+z=-542.060 +rx=-0.1502 +ry=-0.2470 +rz=-0.8421 +s=20.4894 +convention=position_vector "
      "+step +inv +proj=cart +a=6377563.396 +rf=299.3249646 +step +proj=tmerc +approx +lat_0=49 "
      "+lon_0=-2 +k_0=0.9996012717 +x_0=400000 +y_0=-100000 +a=6377563.396 +rf=299.3249646" +
      afterProjection;
  RegisterProj((forward + "PROJ").c_str(), Mainland(), pipeline, PJ_FWD, true);
  RegisterProj((inverse + "PROJ").c_str(), local, pipeline, PJ_INV, true);
#endif
}

// Positions through a datum alone and further, and a site and a ground system on a plane of their own.
void RegisterSigma() {
  static const TMercatorProj plane(kWgs84A, kWgs84InvF, 0, 0, 0, 0);
  const auto datum = std::make_shared<CoordinateChain>(&Wgs84(), &GreatBritain(), nullptr);
  const auto site = std::make_shared<CoordinateChain>(nullptr, nullptr, &plane);
  const auto ground = std::make_shared<CoordinateChain>(*site);
  site->SetLocalization(&Site());
  ground->SetGround(&Ground());
  RegisterCovariances("seven parameters", datum, Mainland());
  RegisterCovariances("site", site, Mainland());
  RegisterCovariances("ground", ground, Mainland());
  RegisterCovariances("whole chain", std::make_shared<CoordinateChain>(NationalGrid()), Mainland());
  RegisterCovariances("chain with site", std::make_shared<CoordinateChain>(SiteSystem()),
                      Mainland());
}

const bool registered = [] {
  RegisterCopy("copy of three columns/batch", Geodetic());
  RegisterEllipsoid();
  RegisterDatum();
  RegisterUtm();
  RegisterSite();
  RegisterChain("whole chain", NationalGrid(), MainlandGrid(), "");
  RegisterChain("chain with site", SiteSystem(), MainlandSite(),
                " +step " + SiteAffine() + " +step " + GroundAffine());
  RegisterSigma();
  return true;
}();

}  // namespace
