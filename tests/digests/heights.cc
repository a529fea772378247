#include <iterator>
#include <memory>
#include <vector>

#include "geomath/geomath.h"
#include "tests/digests/digest.h"

using namespace zel_cs::geomath;

namespace {

using Points = std::vector<TAbstractPoint3<double>>;

Points PlacesOf(const Block& block) {
  Points places;
  for (std::size_t i = 0; i < kDigestBlock; ++i)
    places.emplace_back(block.columns[0][i], block.columns[1][i], 0.0);
  return places;
}

/// A grid of 32 by 32 floats, nodes in the order of the machine.
constexpr int kNodes = 32;
constexpr double kSouth = 0.8, kWest = 0.1, kStep = 0.01;  // radians

template <class Interpolator>
DigestSubject Grid(const char* name) {
  return {name, [](Random& random, Block& block, Digest& digest) {
            std::vector<float> nodes;
            for (int i = 0; i < kNodes * kNodes; ++i)
              nodes.push_back(static_cast<float>(random(-50, 50)));
            const double extent = (kNodes - 1) * kStep;
            const Interpolator geoid({{kSouth, extent, kWest, extent}, kStep, kStep}, kNodes,
                                     kNodes, nodes.data(), 0, L"", L"");
            block.Fill(random, 0, kSouth - kStep, kSouth + extent + kStep);
            block.Fill(random, 1, kWest - kStep, kWest + extent + kStep);
            const Points places = PlacesOf(block);
            geoid.CountHeight(places.data(), block.columns[2], static_cast<int>(kDigestBlock));
            digest.Add(block.columns[2], kDigestBlock);
          }};
}

/// A model of degree 36, in points and in rows.
void Harmonics(Random& random, Block& block, Digest& digest) {
  constexpr int kDegrees = 37;
  static const auto coefficients = [] {
    Random own;
    std::vector<double> c;
    for (int n = 0; n < kDegrees; ++n)
      for (int m = 0; m <= n; ++m) c.push_back(n < 2 ? 0 : own(-1e-5, 1e-5) / (n * n));
    return c;
  }();
  const GlobalGeoid geoid(kDegrees, coefficients.data(), coefficients.data(), false, 0, nullptr,
                          nullptr);
  GlobalGeoidScratch scratch;
  block.Fill(random, 0, -kHalfPi, kHalfPi);
  block.Fill(random, 1, -kPi, kPi);
  const Points places = PlacesOf(block);
  constexpr int kScattered = 32;
  geoid.CountHeight(places.data(), block.columns[2], kScattered, scratch);
  digest.Add(block.columns[2], kScattered);

  constexpr int kRows = 31, kColumns = 32;
  const double step = random(0.001, 0.02);
  geoid.CountHeightOnGrid(
      {{random(-1, 0.5), (kRows - 1) * step, random(-3, 2), (kColumns - 1) * step}, step, step},
      block.columns[3], scratch);
  digest.Add(block.columns[3], kRows * kColumns);
}

void Magnetics(Random& random, Block& block, Digest& digest) {
  const MagneticField field(random(2010, 2030));
  block.Fill(random, 0, -90, 90);
  block.Fill(random, 1, -180, 360);
  block.Fill(random, 2, -1, 500);
  static std::vector<MagneticPoint> points(kDigestBlock);
  const auto& [latitude, longitude, height, unused] = block.columns;
  field.AtBatch(latitude, longitude, height, kDigestBlock, points.data());
  for (const MagneticPoint& point : points)
    for (const MagneticElements& e : {point.field, point.yearlyChange}) {
      const double values[] = {e.x, e.y, e.z, e.h, e.f, e.declination, e.inclination};
      digest.Add(values, std::size(values));
    }
}

}  // namespace

void AppendHeights(std::vector<DigestSubject>& subjects) {
  subjects.push_back(Grid<RegionalGeoid>("RegionalGeoid"));
  subjects.push_back(Grid<RegGeoid2x2SW>("RegGeoid2x2SW"));
  subjects.push_back(Grid<RegGeoidInterpalation2>("RegGeoidInterpalation2"));
  subjects.push_back(Grid<RegGeoidInterpalation4>("RegGeoidInterpalation4"));
  subjects.push_back(Grid<RegGeoidIntrp_Lagrange4x4SW>("RegGeoidIntrp_Lagrange4x4SW"));
  subjects.push_back(Grid<RegGeoidIntrp_Spline4x4SW>("RegGeoidIntrp_Spline4x4SW"));
  subjects.push_back(Grid<RegGeoidKrigingIntrp>("RegGeoidKrigingIntrp"));
  subjects.push_back({"GlobalGeoid", Harmonics});
  subjects.push_back({"MagneticField", Magnetics});
}
