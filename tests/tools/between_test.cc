// geomath convert --from … --to …, and geomath info.
#include <gtest/gtest.h>
#include <ogrsf_frmts.h>

#include <cmath>
#include <filesystem>
#include <string>

#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

namespace {

namespace fs = std::filesystem;

class BetweenSystems : public ::testing::Test {
 protected:
  ProgramRun Run(const std::string& arguments) {
    return RunProgram(directory_, "convert " + arguments);
  }
  ProgramRun Info(const std::string& arguments) {
    return RunProgram(directory_, "info " + arguments);
  }
  std::string Path(const std::string& name) const { return (directory_ / name).string(); }

  const ScratchFolder scratch_;
  const fs::path directory_ = scratch_.Path();
};

}  // namespace

// Schreutelkamp and Strang van Hees 2001: the centre of the Dutch projection, by definition.
TEST_F(BetweenSystems, TypedPositionsHaveTheOrderOfTheirSystem) {
  const ProgramRun there = Run("--from EPSG:28992 --to 4289 463000 155000 --angles dms");
  EXPECT_EQ(there.status, 0) << there.err;
  EXPECT_TRUE(Contains(there.out, "52 09 22.178000 N")) << there.out;
  EXPECT_TRUE(Contains(there.out, "5 23 15.500000 E")) << there.out;
  EXPECT_FALSE(Contains(there.out, "\nh ")) << there.out;
  EXPECT_TRUE(Contains(there.err, "both systems are on one datum")) << there.err;
  const ProgramRun back =
      Run("--from EPSG:4289 --to EPSG:28992 \"52 09 22.178 N\" \"5 23 15.5 E\"");
  EXPECT_TRUE(Contains(back.out, "463000.0000 m")) << back.out;
  EXPECT_TRUE(Contains(back.out, "155000.0000 m")) << back.out;
  // The equator at Greenwich.
  const ProgramRun geocentric = Run("--from EPSG:4979 --to EPSG:4978 0 0 100");
  EXPECT_TRUE(Contains(geocentric.out, "6378237.0000 m")) << geocentric.out;
}

// On the equator is nobody who leaves out Z.
TEST_F(BetweenSystems, GeocentricCoordinatesAreThree) {
  WriteText(directory_ / "xy.csv", "x,y\n3783000,900000\n");
  for (const char* given : {"3783000 900000", "3783000 900000 --fixed-height 0",
                            "xy.csv -o out.csv", "xy.csv --fixed-height 0 -o out.csv"}) {
    const ProgramRun run = Run(std::string("--from 4978 --to 25833 ") + given);
    EXPECT_EQ(run.status, 2) << given << run.err;
    EXPECT_FALSE(Contains(run.err, "or give all points one height")) << run.err;
  }
}

TEST_F(BetweenSystems, AnInputMayStandBehindAFolderOfGrids) {
  WriteText(directory_ / "in.csv", "lat,lon\n52.5,13.4\n");
  const ProgramRun run = Run("--from 4326 --to 25833 --grids . --grids . in.csv -o -");
  EXPECT_EQ(run.status, 0) << run.err;
}

TEST_F(BetweenSystems, FilesKeepTheirColumnsAndHeightsThatNobodyKnows) {
  WriteText(directory_ / "in.csv", "id,n,e,h\n1,5302000,3500000,500\n2,5302100,3500100,\n");
  WriteText(directory_ / "plane.csv", "id,n,e\n1,5302000,3500000\n");
  const ProgramRun run = Run("--from 31467 --to 25832 in.csv -o out.csv");
  EXPECT_EQ(run.status, 0) << run.err;
  const auto lines = Lines(ReadText(directory_ / "out.csv"));
  EXPECT_EQ(lines[0], "id,n,e,h,n_2,e_2,h_2");
  EXPECT_TRUE(lines[1].ends_with(",500.0000")) << lines[1];
  EXPECT_TRUE(lines[2].ends_with(",")) << lines[2];
  const ProgramRun plane =
      Run("--from 31467 --to 25832 plane.csv -o - --operation 1777 --results a,b,c");
  EXPECT_EQ(plane.status, 2);
  EXPECT_TRUE(Contains(plane.err, "EPSG:1777 is no operation from")) << plane.err;
  const ProgramRun taken =
      Run("--from 31467 --to 25832 plane.csv -o - --operation 1776 --results a,b,c");
  EXPECT_EQ(taken.status, 0) << taken.err;
  EXPECT_EQ(Lines(taken.out)[0], "id,n,e,a,b,c");
  EXPECT_TRUE(Lines(taken.out)[1].ends_with(",")) << taken.out;
}

// Heights that nobody needs may be missing in a file or in rows of it, also on the way back.
TEST_F(BetweenSystems, RowsWithoutHeightsGoBothWays) {
  WriteText(directory_ / "plane.csv", "lat,lon\n50.1,8.6\n51,9\n");
  ASSERT_EQ(Run("--from 4326 --to 25832 plane.csv -o there.csv").status, 0);
  EXPECT_EQ(Lines(ReadText(directory_ / "there.csv"))[0], "lat,lon,n,e");
  ASSERT_EQ(Run("--from 25832 --to 4326 there.csv -o - --results b,l").status, 0);

  WriteText(directory_ / "mixed.geojson",
            R"({"type": "FeatureCollection", "features": [
                {"type": "Feature", "properties": {},
                 "geometry": {"type": "Point", "coordinates": [8.6, 50.1]}},
                {"type": "Feature", "properties": {},
                 "geometry": {"type": "Point", "coordinates": [9, 51, 33]}}]})");
  const ProgramRun there = Run("--from input --to 25832 mixed.geojson -o mixed.gpkg");
  EXPECT_EQ(there.status, 0) << there.err;
  EXPECT_FALSE(Contains(there.err, "by PROJ")) << there.err;  // it is the same system
  const ProgramRun back = Run("--from input --to 4326 mixed.gpkg -o back.csv");
  EXPECT_EQ(back.status, 0) << back.err;
  EXPECT_FALSE(Contains(back.err, "warning")) << back.err;
  const std::vector<std::string> lines = Lines(ReadText(directory_ / "back.csv"));
  EXPECT_TRUE(lines[1].ends_with(",")) << lines[1];
  EXPECT_TRUE(lines[2].ends_with(",33.0000")) << lines[2];
}

// The parameters of the registry for the north, the middle and the south of Germany.
TEST_F(BetweenSystems, EachPointTakesTheBestOperationForIt) {
  WriteText(directory_ / "in.csv",
            "n,e\n5302000,3500000\n5302000,3500001\n5650000,3500000\n5950000,3500000\n");
  const std::string systems = "--from 31467 --to 4326 in.csv -o - ";
  const ProgramRun each = Run(systems);
  EXPECT_EQ(each.status, 0) << each.err;
  EXPECT_TRUE(Contains(each.err, "each point by the best of")) << each.err;
  EXPECT_TRUE(Contains(each.err, " points by EPSG:")) << each.err;
  const ProgramRun one = Run(systems + "--one-operation");
  EXPECT_FALSE(Contains(one.err, "each point")) << one.err;
  const ProgramRun near = Run(systems + "--near 47.9,9");
  EXPECT_TRUE(Contains(near.err, "geomath: EPSG:")) << near.err;
  const ProgramRun list = Run("--from 31467 --to 4326 --list-operations");
  EXPECT_TRUE(Contains(list.out, "EPSG:1777 DHDN to WGS 84 (2)")) << list.out;
  const ProgramRun far = Run("--from 31467 --to 4326 6600000 3500000");
  EXPECT_TRUE(Contains(far.err, "1 point lies outside the area of every operation")) << far.err;
}

TEST_F(BetweenSystems, SystemsAreFilesToo) {
  WriteText(directory_ / "system.json", BritainSystem());
  const ProgramRun wkt = Info("EPSG:32630 --as wkt");
  WriteText(directory_ / "utm.wkt", wkt.out);
  WriteText(directory_ / "utm.json", Info("EPSG:32630 --as projjson").out);
  const ProgramRun code = Run("--from 4326 --to 32630 52.5 -1.5");
  ASSERT_EQ(code.status, 0) << code.err;
  for (const char* file : {"utm.wkt", "utm.json"})
    EXPECT_EQ(Run(std::string("--from 4326 --to ") + file + " 52.5 -1.5").out, code.out) << file;
  // Both ways through a system file whose positions are WGS 84.
  const ProgramRun direct = RunProgram(directory_, "convert --system system.json 52.5 -1.5 100");
  const ProgramRun through = Run("--from 4979 --to system.json 52.5 -1.5 100");
  EXPECT_EQ(Lines(through.out)[0], Lines(direct.out)[0]) << through.err;
  EXPECT_EQ(Lines(through.out)[1], Lines(direct.out)[1]);
}

TEST_F(BetweenSystems, LayersComeBackWithTheirAttributes) {
  GDALAllRegister();
  constexpr const char* kPolygon =
      "POLYGON ((500000 5300000,500400 5300000,500400 5300300,500000 5300000))";
  {
    const GDALDatasetUniquePtr dataset(
        GetGDALDriverManager()
            ->GetDriverByName("ESRI Shapefile")
            ->Create(Path("in.shp").c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    OGRSpatialReference crs;
    ASSERT_EQ(crs.importFromEPSG(25832), OGRERR_NONE);
    OGRLayer* layer = dataset->CreateLayer("in", &crs, wkbPolygon);
    OGRFieldDefn owner("owner", OFTString);
    ASSERT_EQ(layer->CreateField(&owner), OGRERR_NONE);
    const OGRFeatureUniquePtr feature(OGRFeature::CreateFeature(layer->GetLayerDefn()));
    feature->SetField("owner", "Smith");
    OGRGeometry* geometry = nullptr;
    ASSERT_EQ(OGRGeometryFactory::createFromWkt(kPolygon, nullptr, &geometry), OGRERR_NONE);
    feature->SetGeometryDirectly(geometry);
    ASSERT_EQ(layer->CreateFeature(feature.get()), OGRERR_NONE);
  }
  const ProgramRun there = Run("--from input --to EPSG:31467 in.shp -o gk.gpkg --operation 1776");
  ASSERT_EQ(there.status, 0) << there.err;
  const ProgramRun back = Run("--from input --to EPSG:25832 gk.gpkg -o back.gpkg --operation 1776");
  ASSERT_EQ(back.status, 0) << back.err;
  const GDALDatasetUniquePtr made(GDALDataset::Open(Path("back.gpkg").c_str(), GDAL_OF_VECTOR));
  OGRLayer* layer = made->GetLayer(0);
  EXPECT_STREQ(layer->GetSpatialRef()->GetAuthorityCode(nullptr), "25832");
  const OGRFeatureUniquePtr feature(layer->GetNextFeature());
  EXPECT_STREQ(feature->GetFieldAsString("owner"), "Smith");
  const OGRLinearRing* ring = feature->GetGeometryRef()->toPolygon()->getExteriorRing();
  constexpr double kBack = 5e-3;  // metres: parameters, at heights that nobody knows
  bool found = false;
  for (int i = 0; i < ring->getNumPoints(); ++i)
    found = found || std::hypot(ring->getX(i) - 500400, ring->getY(i) - 5300300) <= kBack;
  EXPECT_TRUE(found);
  EXPECT_TRUE(Contains(Info("gk.gpkg").out, "EPSG:31467")) << Info("gk.gpkg").out;
}

TEST_F(BetweenSystems, WhatCannotBeIsRefusedAndNothingIsWritten) {
  WriteText(directory_ / "in.csv", "n,e\n5302000,3500000\n");
  WriteText(directory_ / "own.json",
            R"({"local": {"ellipsoid": "GRS80"}, "projection": {"name": "TM",
                "Central Meridian": 9, "Scale": 1, "Lat0": 0, "East0": 0, "North0": 0}})");
  struct Case {
    const char *arguments, *complaint;
  };
  const Case cases[] = {
      {"--from 314670 --to 25832 in.csv -o x.csv", "did you mean EPSG:31467 DHDN"},
      {"--from nowhere --to 25832 in.csv -o x.csv", "is no EPSG code"},
      {"--from 31467 --to 5783 in.csv -o x.csv", "is a system of heights alone"},
      {"--from 31467 --to 25832+25833 in.csv -o x.csv", "is no system of heights"},
      {"--from 31467 --to 4001 in.csv -o x.csv", "the registry has no operation"},
      {"--from own.json --to 25832 in.csv -o x.csv", "does not name the system of its positions"},
      {"--from 31467 --to 25832 in.csv -o x.geojson", "GeoJSON has latitudes and longitudes"},
      {"--from 31467 --to 4978 in.csv -o x.csv", "no column \"h\""},
      {"--from 31467 --to 4978 --fixed-height 0 in.csv -o x.gpkg", "write CSV"},
      {"--from input --to 25832 in.csv -o x.csv", "only layers say"},
      {"--from 31467 in.csv -o x.csv", "give both --from and --to"},
      {"--from 31467 --to 25832 --inverse in.csv -o x.csv", "exchange --from and --to"},
      {"--system own.json --operation 1776 in.csv -o x.csv", "--operation"},
      {"--from 3031 --to 2222x in.csv -o x.csv", "is no EPSG code"},
      {"--from 31467 --to 3410 in.csv -o x.csv", "the library has no such projection"},
  };
  for (const Case& each : cases) {
    const ProgramRun run = Run(each.arguments);
    EXPECT_EQ(run.status, 2) << each.arguments;
    EXPECT_TRUE(Contains(run.err, each.complaint)) << each.arguments << "\n" << run.err;
    for (const char* name : {"x.csv", "x.geojson", "x.gpkg"})
      EXPECT_FALSE(fs::exists(directory_ / name)) << each.arguments;
  }
}

// The figures are those of the registry.
TEST_F(BetweenSystems, InfoSaysWhatASystemIs) {
  const ProgramRun words = Info("EPSG:31467");
  EXPECT_EQ(words.status, 0) << words.err;
  for (const char* part :
       {"DHDN / 3-degree Gauss-Kruger zone 3", "Bessel 1841", "Longitude of natural origin: 9",
        "False easting: 3500000 metre", "to WGS 84", "accuracy", "a point"})
    EXPECT_TRUE(Contains(words.out, part)) << part << "\n" << words.out;
  EXPECT_TRUE(Contains(Info("7415").out, "NAP height"));
  EXPECT_TRUE(Contains(Info("25832 --as proj").out, "+proj=utm +zone=32"));
  EXPECT_TRUE(Contains(Info("27700 --as system").out, "\"projection\""));
  WriteText(directory_ / "system.json", BritainSystem());
  const ProgramRun file = Info("system.json");
  EXPECT_TRUE(Contains(file.out, "Central Meridian: -2")) << file.out << file.err;
  EXPECT_EQ(Info("nowhere").status, 2);
}
