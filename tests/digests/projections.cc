#include <memory>
#include <utility>

#include "geomath/geomath.h"
#include "tests/digests/digest.h"

using namespace zel_cs::geomath;

namespace {

constexpr double kDeg = kRadPerDeg;

/// Where points are taken, degrees.
struct Domain {
  double south, north, west, east;
};

/// An ellipsoid like those of the Earth; one in sixteen is flatter than the series of columns allow.
struct RandomEllipsoid {
  double a, invF;
  explicit RandomEllipsoid(Random& random)
      : a(random(6.377e6, 6.379e6)), invF(random(0, 1) < 1.0 / 16 ? 150 : random(293, 301)) {}
};

/// A class by what makes one of random parameters: make(random, a, 1/f).
template <class Make>
DigestSubject Projection(const char* name, const Domain& domain, Make make) {
  return {name, [=](Random& random, Block& block, Digest& digest) {
            const RandomEllipsoid ell(random);
            const auto made = make(random, ell.a, ell.invF);
            const TGeoProj* proj = made.proj.get();
            auto& [b, l, northL, eastL] = block.columns;
            block.Fill(random, 0, domain.south * kDeg, domain.north * kDeg);
            block.Fill(random, 1, domain.west * kDeg, domain.east * kDeg);
            Block derivatives = block;
            auto& d = derivatives.columns;
            proj->ForwardDerivativesBatch(d[0], d[1], d[2], d[3], kDigestBlock);
            for (const auto& column : d) digest.Add(column, kDigestBlock);
            proj->ForwardBatch(b, l, kDigestBlock);
            digest.Add(b, kDigestBlock);
            digest.Add(l, kDigestBlock);
            proj->InverseBatch(b, l, kDigestBlock);
            digest.Add(b, kDigestBlock);
            digest.Add(l, kDigestBlock);
          }};
}

/// A projection; made with braces, which draw its random parameters in the order that they stand in.
template <class Proj>
struct New {
  std::unique_ptr<TGeoProj> proj;
  template <class... Args>
  explicit New(Args... args) : proj(std::make_unique<Proj>(args...)) {}
};

template <class Proj>
DigestSubject Zone(const char* name, const Domain& domain = {-89.9, 89.9, -4, 24}) {
  return Projection(name, domain, [](Random& r, double a, double f) {
    return New<Proj>{
        a, f, r(7, 11) * kDeg, r(0.999, 1.001), r(-50, 50) * kDeg, r(-1e6, 1e6), r(-1e6, 1e6)};
  });
}

template <class Proj>
DigestSubject Stereographic(const char* name) {
  return Projection(name, {-89.9, 89.9, -90, 100}, [](Random& r, double a, double f) {
    return New<Proj>{a,        f,       r(-85, 85) * kDeg, r(-10, 20) * kDeg, r(0.999, 1.001),
                     155000.0, 463000.0};
  });
}

template <class Proj>
DigestSubject Oblique(const char* name) {
  return Projection(name, {-85, 85, 60, 145}, [](Random& r, double a, double f) {
    return New<Proj>{
        a,        f,  r(10, 80) * kDeg, r(0.999, 1.001), r(100, 105) * kDeg, r(-50, 50) * kDeg,
        804671.0, 0.0};
  });
}

}  // namespace

void AppendProjections(std::vector<DigestSubject>& subjects) {
  const auto add = [&](DigestSubject subject) { subjects.push_back(std::move(subject)); };
  add(Zone<TTMProj>("TTMProj"));
  add(Zone<TUTMProj>("TUTMProj"));
  add(Zone<TDenmarkTMProj>("TDenmarkTMProj", {-89.9, 89.9, -60, 80}));
  add(Zone<TKMSProjTM>("TKMSProjTM", {-89.9, 89.9, -60, 80}));
  add(Projection("TTTMNZ", {-80, 84, 0, 20}, [](Random& r, double a, double f) {
    return New<TTTMNZ>{a, f, r(7, 11) * kDeg, 0.9996, r(-50, 50) * kDeg, 5e5, 2e5, 0.999998261};
  }));
  add(Projection("TSPC_TM83Proj", {-80, 84, 0, 20}, [](Random& r, double a, double f) {
    return New<TSPC_TM83Proj>{a, f, r(7, 11) * kDeg, 0.9996, r(-50, 50) * kDeg, 5e5, 2e5, 2900};
  }));
  add(Projection("TMinnesota_TMProj", {30, 60, 0, 20}, [](Random& r, double a, double f) {
    return New<TMinnesota_TMProj>{
        a,   f,  r(7, 11) * kDeg, r(40, 50) * kDeg, 0.0, 0.0, 1.00005, 2e5, 5e5, 0.0, 0.0, 0.0,
        0.0, 0.0};
  }));
  add(Projection("TTM27Proj", {29, 36, -86.8, -84.8}, [](Random& r, double, double) {
    return New<TTM27Proj>{5e5, r(308000, 310000), r(109000, 110000), r(0.9999, 1), 0.3817065, 101};
  }));
  add(Projection("TCassiniProj", {-89, 89, 100, 107}, [](Random& r, double a, double f) {
    return New<TCassiniProj>{
        a, f, r(-60, 60) * kDeg, r(102, 105) * kDeg, r(-30, 30) * kDeg, -14810.5, 8758.3};
  }));
  add(Projection("TColombiaProj", {3, 7, -76, -72}, [](Random& r, double a, double f) {
    return New<TColombiaProj>{a, f, r(4, 6) * kDeg, r(-75, -73) * kDeg, 92334.9, 109321.0};
  }));
  add(Projection("TMercatorProj", {-89.99, 89.99, -120, 220}, [](Random& r, double a, double f) {
    return New<TMercatorProj>{a, f, r(-60, 60) * kDeg, r(0, 90) * kDeg, 5e5, 2e5};
  }));
  add(Projection("TMonSpher", {-85, 85, -10, 120}, [](Random& r, double a, double f) {
    return New<TMonSpher>{a,      f,      r(-60, 60) * kDeg, r(50, 60) * kDeg, r(-60, 60) * kDeg,
                          1.0001, 0.9998, 160000.0,          50000.0,          r(-20, 20) * kDeg};
  }));
  add(Projection("TLCProj", {-89.9, 89.9, -190, 190}, [](Random& r, double a, double f) {
    return New<TLCProj>{
        a,   f,   r(5, 40) * kDeg, r(40, 80) * kDeg, r(-10, 10) * kDeg, r(0, 60) * kDeg,
        5e5, 2e5, r(0.999, 1)};
  }));
  add(Projection("TSPC_LC83Proj", {-60, 89.9, -215, 35}, [](Random& r, double a, double f) {
    return New<TSPC_LC83Proj>{
        a, f, r(20, 40) * kDeg, r(41, 60) * kDeg, -90 * kDeg, r(0, 60) * kDeg, 3e5, 1e5, 6};
  }));
  add(Projection("TMinnesota_LAProj", {-60, 89, -200, 15}, [](Random& r, double a, double f) {
    return New<TMinnesota_LAProj>{
        a,   f,    -93 * kDeg, r(44, 46) * kDeg, r(45.5, 46) * kDeg, r(45, 45.4) * kDeg,
        1.0, 3e4,  15e4,       6378411.0,        6357026.0,          130.0,
        0.0, -30.0};
  }));
  add(Projection("TLC27Proj", {39.5, 42, -125, -119}, [](Random& r, double, double) {
    return New<TLC27Proj>{2e6,          r(439000, 440000),
                          24245358.05,  r(24.792e6, 24.793e6),
                          0.9998946358, 0.6538843192,
                          146486.75847, 3.80992,
                          3.93575,      0.0,
                          401};
  }));
  add(Projection("TAlbersEAConicProj", {-89.9, 89.9, -270, 80}, [](Random& r, double a, double f) {
    return New<TAlbersEAConicProj>{
        a, f, r(5, 35) * kDeg, r(36, 70) * kDeg, -96 * kDeg, r(0, 60) * kDeg, 1e6, 1e5};
  }));
  add(Stereographic<TSterProj>("TSterProj"));
  add(Projection("TSterProj_polar", {-60, 90, -190, 190}, [](Random& r, double a, double f) {
    return New<TSterProj>{a, f, kHalfPi, r(-90, 90) * kDeg, r(0.99, 1), 2e6, 2e6};
  }));
  add(Stereographic<TDoubleSter>("TDoubleSter"));
  add(Stereographic<TRomaniaSter>("TRomaniaSter"));
  add(Stereographic<TRDTransProj>("TRDTransProj"));
  add(Projection("TRDProj", {50, 54, 3, 8}, [](Random& r, double a, double f) {
    return New<TRDProj>{a, f, r(51, 53) * kDeg, r(5, 6) * kDeg, 155000.0, 463000.0};
  }));
  add(Projection("TKrovakProj", {35, 60, 0, 50}, [](Random& r, double a, double f) {
    return New<TKrovakProj>{a,
                            f,
                            r(48, 51) * kDeg,
                            r(42, 43) * kDeg,
                            17 * kDeg,
                            r(59, 61) * kDeg,
                            r(77, 80) * kDeg,
                            0.9999,
                            1.0,
                            2.0};
  }));
  add(Oblique<TOMercatorProj>("TOMercatorProj"));
  add(Oblique<TRSOProj>("TRSOProj"));
  add(Projection("TSPC_OM83Proj", {30, 80, -170, -100}, [](Random& r, double a, double f) {
    return New<TSPC_OM83Proj>{
        a, f, r(-40, -30) * kDeg, 0.9999, -133.6 * kDeg, r(50, 60) * kDeg, 5e6, -5e6, 5001};
  }));
  add(Projection("TMinnesota_OMProj", {20, 70, -130, -60}, [](Random& r, double a, double f) {
    return New<TMinnesota_OMProj>{a,   f,   -94 * kDeg, r(45, 47) * kDeg, 0.0, 0.0, 1.0, 5e4, 12e4,
                                  0.0, 0.0, 0.0,        r(20, 40) * kDeg, 0.0};
  }));
  add(Projection("TSwissProj", {-35, 85, -170, 170}, [](Random& r, double a, double f) {
    return New<TSwissProj>{a, f, r(7, 8) * kDeg, r(40, 50) * kDeg, 6e5, 2e5};
  }));
  add(Projection("TMalaysia_CS2000Proj", {1.4, 2.6, 102.5, 104.4},
                 [](Random& r, double a, double f) {
                   return New<TMalaysia_CS2000Proj>{
                       a, f, r(2, 4) * kDeg, 0.9999, 103.4 * kDeg, r(2, 2.2) * kDeg};
                 }));
  add(Projection("TNZMGProj", {-47.5, -34, 166, 179}, [](Random& r, double a, double f) {
    return New<TNZMGProj>{a, f, r(-42, -40) * kDeg, r(172, 174) * kDeg, 2510000.0, 6023150.0};
  }));
  add(Projection("TAK01Proj", {54, 60.5, -138, -130},
                 [](Random&, double, double) { return New<TAK01Proj>{}; }));
  add(Projection("TAK29Proj", {54, 72, -144, -140}, [](Random& r, double, double) {
    return New<TAK29Proj>{5e5, r(511000, 512000), 5002};
  }));
}
