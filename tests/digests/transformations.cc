#include <memory>
#include <utility>

#include "geomath/geomath.h"
#include "tests/digests/digest.h"

using namespace zel_cs::geomath;

namespace {

constexpr double kNearEarth = 6.4e6;  // metres

void AddColumns(Digest& digest, const Block& block, std::size_t columns) {
  for (std::size_t i = 0; i < columns; ++i) digest.Add(block.columns[i], kDigestBlock);
}

void FillGeographic(Random& random, Block& block) {
  block.Fill(random, 0, -kHalfPi, kHalfPi);
  block.Fill(random, 1, -kPi, kPi);
  block.Fill(random, 2, -1000, 9000);
}

void FillGeocentric(Random& random, Block& block) {
  for (std::size_t i = 0; i < 3; ++i) block.Fill(random, i, -kNearEarth, kNearEarth);
}

Ellipsoid RandomEllipsoid(Random& random) {
  const double a = random(6.377e6, 6.379e6), invF = random(150, 400);
  return MakeEllipsoid(a, invF);
}

TAbstractPoint3<double> RandomVector(Random& random, double size) {
  const double x = random(-size, size), y = random(-size, size), z = random(-size, size);
  return {x, y, z};
}

void ThereAndBack(const CoordinateShift& shift, Block& block, Digest& digest) {
  auto& [x, y, z, unused] = block.columns;
  shift.ForwardBatch(x, y, z, kDigestBlock);
  AddColumns(digest, block, 3);
  shift.InverseBatch(x, y, z, kDigestBlock);
  AddColumns(digest, block, 3);
}

void Geocentric(Random& random, Block& block, Digest& digest) {
  const Ellipsoid ell = RandomEllipsoid(random);
  auto& [x, y, z, unused] = block.columns;
  FillGeographic(random, block);
  ell.BLH_to_XYZ_Batch(x, y, z, kDigestBlock);
  AddColumns(digest, block, 3);
  ell.XYZ_to_BLH_Batch(x, y, z, kDigestBlock);
  AddColumns(digest, block, 3);
  FillGeocentric(random, block);
  ell.XYZ_to_BLH_Batch(x, y, z, kDigestBlock);
  AddColumns(digest, block, 3);
}

void Datums(Random& random, Block& block, Digest& digest) {
  Ellipsoid ell = RandomEllipsoid(random);
  const auto shift = RandomVector(random, 500), rotation = RandomVector(random, 20);
  const Datum datum(&ell, shift, rotation, random(-2e-5, 2e-5), userTypeLibrary, false, nullptr);
  auto& [x, y, z, unused] = block.columns;
  FillGeocentric(random, block);
  datum.ToLocalDatumBatch(x, y, z, kDigestBlock);
  AddColumns(digest, block, 3);
  datum.ToWGS84DatumBatch(x, y, z, kDigestBlock);
  AddColumns(digest, block, 3);
}

void SmallAngles(Random& random, Block& block, Digest& digest) {
  const auto shift = RandomVector(random, 500), rotation = RandomVector(random, 20),
             pivot = RandomVector(random, kNearEarth);
  FillGeocentric(random, block);
  ThereAndBack(
      MolodenskyBadekas(shift, rotation, pivot, random(-2e-5, 2e-5), RotationSense::positionVector),
      block, digest);
}

void Slopes(Random& random, Block& block, Digest& digest) {
  const double latitude0 = random(0.5, 1), longitude0 = random(-0.2, 0.2);
  const VerticalSlope slope(RandomEllipsoid(random), {.latitude0 = latitude0,
                                                      .longitude0 = longitude0,
                                                      .offset = -0.3,
                                                      .slopeLatitude = 1e-7,
                                                      .slopeLongitude = -1e-7});
  block.Fill(random, 0, 0.5, 1);
  block.Fill(random, 1, -0.3, 0.3);
  block.Fill(random, 2, -100, 4000);
  ThereAndBack(slope, block, digest);
}

void PlateMotions(Random& random, Block& block, Digest& digest) {
  const double latitude = random(-1, 1), longitude = random(-3, 3), rate = random(-1, 1);
  const PlateMotion motion(AngularVelocityAbout(latitude, longitude, rate), 2010);
  auto& [x, y, z, dates] = block.columns;
  FillGeocentric(random, block);
  block.Fill(random, 3, 1990, 2030);
  motion.ForwardDatedBatch(PointDates(dates), x, y, z, kDigestBlock);
  AddColumns(digest, block, 3);
}

/// A grid of 16 by 16 nodes of random shifts.
std::unique_ptr<ShiftGrid> RandomGrid(Random& random, ShiftInterpolation rule) {
  ShiftGridPart part;
  part.south = 0.8;
  part.west = 0.1;
  part.northStep = 0.002;
  part.eastStep = 0.003;
  part.rows = part.columns = 16;
  for (int i = 0; i < 2 * part.rows * part.columns; ++i)
    part.values.push_back(static_cast<float>(random(-1e-5, 1e-5)));
  ShiftGridDefinition definition;
  definition.interpolation = rule;
  definition.parts.push_back(std::move(part));
  return ShiftGrid::Make(std::move(definition));
}

void ShiftGrids(Random& random, Block& block, Digest& digest) {
  for (const auto rule : {ShiftInterpolation::bilinear, ShiftInterpolation::biquadratic}) {
    const auto grid = RandomGrid(random, rule);
    block.Fill(random, 0, 0.795, 0.835);
    block.Fill(random, 1, 0.095, 0.15);
    block.Fill(random, 2, 0, 1);
    ThereAndBack(*grid, block, digest);
  }
}

void Sites(Random& random, Block& block, Digest& digest) {
  LocalToGrid site;
  site.SetSterProj(kWgs84A, kWgs84InvF);
  site.SetLat0(random(0.7, 0.9), 0);
  site.SetLon0(random(0.1, 0.3), 0);
  site.SetPlaneParam(random(0.999, 1.001), 2, 0);
  site.SetPlaneParam(random(-3, 3), 3, 0);
  site.mode = LocalToGrid::kBoth;
  GridToGround ground;
  ground.rotation = random(-1, 1);
  ground.height = random(0, 2000);
  auto& [x, y, z, unused] = block.columns;
  block.Fill(random, 0, 0.7, 0.9);
  block.Fill(random, 1, 0.1, 0.3);
  block.Fill(random, 2, 0, 1000);
  site.ForwardBatch(x, y, z, kDigestBlock, LocalToGrid::kBoth);
  ground.ToGroundBatch(x, y, kDigestBlock);
  AddColumns(digest, block, 3);
  ground.ToGridBatch(x, y, kDigestBlock);
  site.InverseBatch(x, y, z, kDigestBlock, LocalToGrid::kBoth);
  AddColumns(digest, block, 3);
}

void Chains(Random& random, Block& block, Digest& digest) {
  const Ellipsoid global = MakeEllipsoid(kWgs84A, kWgs84InvF);
  Ellipsoid local = RandomEllipsoid(random);
  const auto shift = RandomVector(random, 500), rotation = RandomVector(random, 20);
  const Datum datum(&local, shift, rotation, random(-2e-5, 2e-5), userTypeLibrary, false, nullptr);
  const TTMProj proj{local.a, local.invF, random(0.1, 0.2), 0.9996, random(0, 1), 5e5, 0};
  const CoordinateChain chain(&global, &datum, &proj);
  auto& [x, y, z, unused] = block.columns;
  block.Fill(random, 0, -1.5, 1.5);
  block.Fill(random, 1, 0.05, 0.25);
  block.Fill(random, 2, 0, 3000);
  chain.ToLocalBatch(x, y, z, kDigestBlock);
  AddColumns(digest, block, 3);
  chain.ToGlobalBatch(x, y, z, kDigestBlock);
  AddColumns(digest, block, 3);
}

void Geodesics(Random& random, Block& block, Digest& digest) {
  const Geodesic geodesic(RandomEllipsoid(random));
  auto& [b1, l1, b2, l2] = block.columns;
  block.Fill(random, 0, -kHalfPi, kHalfPi);
  block.Fill(random, 1, -kPi, kPi);
  block.Fill(random, 2, -kHalfPi, kHalfPi);
  block.Fill(random, 3, -kPi, kPi);
  double distance[kDigestBlock], azimuth[kDigestBlock], back[kDigestBlock];
  geodesic.InverseBatch(b1, l1, b2, l2, distance, azimuth, back, kDigestBlock);
  for (const double* column : {distance, azimuth, back}) digest.Add(column, kDigestBlock);
  geodesic.DirectBatch(b1, l1, azimuth, distance, b2, l2, back, kDigestBlock);
  for (const double* column : {b2, l2, back}) digest.Add(column, kDigestBlock);
}

}  // namespace

void AppendTransformations(std::vector<DigestSubject>& subjects) {
  subjects.push_back({"Ellipsoid", Geocentric});
  subjects.push_back({"Datum", Datums});
  subjects.push_back({"MolodenskyBadekas", SmallAngles});
  subjects.push_back({"VerticalSlope", Slopes});
  subjects.push_back({"PlateMotion", PlateMotions});
  subjects.push_back({"ShiftGrid", ShiftGrids});
  subjects.push_back({"LocalToGrid", Sites});
  subjects.push_back({"CoordinateChain", Chains});
  subjects.push_back({"Geodesic", Geodesics});
}
