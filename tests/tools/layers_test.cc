// Layers in and out: their coordinate systems, geometry, texts and identities.
#include <gtest/gtest.h>
#include <ogrsf_frmts.h>

#include <filesystem>
#include <memory>
#include <string>

#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

namespace {

namespace fs = std::filesystem;

// TP03 of the published points of Great Britain; its grid coordinates by an independent evaluation
// of the seven-parameter chain, to 0.1 mm.
constexpr double kLat = 50.43885825610, kLon = -4.10864563561, kH = 215.251;
constexpr const char* kTp03 = "lat,lon,h\n50.43885825610,-4.10864563561,215.251\n";
constexpr double kNorth = 62015.2109, kEast = 250357.8185;
constexpr double kSeriesMetres = 3e-4;  // TTMProj against an exact TM
constexpr double kDegrees = 1e-13;      // a text of 17 digits
constexpr double kRegistrySet = 5e-3;   // the registry rounds the seven parameters otherwise

class Layers : public ::testing::Test {
 protected:
  void SetUp() override {
    GDALAllRegister();
    Write("in.csv", kTp03);
    Write("pot.txt", "2 0 1e-9 0\n2 1 0 0\n2 2 2e-6 -1e-6\n");
    ASSERT_EQ(Run("system --epsg 27700 -o gb.json").status, 0);
  }

  void Write(const std::string& name, const std::string& text) {
    WriteText(directory_ / name, text);
  }
  std::string Read(const std::string& name) { return ReadText(directory_ / name); }
  ProgramRun Run(const std::string& arguments) { return RunProgram(directory_, arguments); }
  GDALDatasetUniquePtr Open(const std::string& name) {
    return GDALDatasetUniquePtr(GDALDataset::Open((directory_ / name).c_str(), GDAL_OF_VECTOR));
  }
  // A layer of one point without columns.
  void WriteLayer(const std::string& name, int epsg, double x, double y, double z) {
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GPKG");
    const GDALDatasetUniquePtr dataset(
        driver->Create((directory_ / name).c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    OGRSpatialReference crs;
    ASSERT_EQ(crs.importFromEPSG(epsg), OGRERR_NONE);
    crs.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    OGRLayer* layer = dataset->CreateLayer("points", &crs, wkbPoint25D);
    const OGRFeatureUniquePtr feature(OGRFeature::CreateFeature(layer->GetLayerDefn()));
    OGRPoint point(x, y, z);
    feature->SetGeometry(&point);
    ASSERT_EQ(layer->CreateFeature(feature.get()), OGRERR_NONE);
  }
  // Whether the layer of a file is in that system; 0 for none.
  bool IsIn(const std::string& name, int epsg) {
    const GDALDatasetUniquePtr dataset = Open(name);
    const OGRSpatialReference* crs = dataset->GetLayer(0)->GetSpatialRef();
    const bool none = !crs || std::string(crs->GetName()).starts_with("Undefined ");
    if (none || epsg == 0) return none && epsg == 0;
    OGRSpatialReference wanted;
    EXPECT_EQ(wanted.importFromEPSG(epsg), OGRERR_NONE);
    const char* options[] = {"IGNORE_DATA_AXIS_TO_SRS_AXIS_MAPPING=YES",
                             "CRITERION=EQUIVALENT_EXCEPT_AXIS_ORDER_GEOGCRS", nullptr};
    return crs->IsSame(&wanted, options) != 0;
  }

  const ScratchFolder scratch_;
  const fs::path directory_ = scratch_.Path();
};

}  // namespace

TEST_F(Layers, AreInTheUnitsOfTheSystem) {
  Write("ny.csv", "lat,lon,h\n40.7,-74,10\n");
  ASSERT_EQ(Run("system --epsg 2263 -o ny.json").status, 0);
  for (const char* suffix : {"gpkg", "shp"}) {
    const std::string grid = std::string("ny.") + suffix;
    ASSERT_EQ(Run("convert --system ny.json ny.csv -o " + grid).status, 0);
    EXPECT_TRUE(IsIn(grid, 2263));
    const ProgramRun back =
        Run("convert --system ny.json --inverse --from-geometry " + grid + " -o - --decimals 3");
    EXPECT_TRUE(Contains(back.out, "40.700000000,-74.000000000,10.000")) << back.out << back.err;
  }
  ASSERT_EQ(Run("convert --system ny.json --unit m ny.csv -o metres.gpkg").status, 0);
  EXPECT_EQ(Open("metres.gpkg")->GetLayer(0)->GetSpatialRef()->GetLinearUnits(), 1);
  EXPECT_EQ(Run("convert --system ny.json --inverse --from-geometry metres.gpkg -o -").status, 2);
}

TEST_F(Layers, ResultsCarryTheirSystemSoThatAGisShowsThemInPlace) {
  for (const char* suffix : {"gpkg", "shp"}) {
    const std::string grid = std::string("grid.") + suffix, back = std::string("back.") + suffix;
    ASSERT_EQ(Run("convert --system gb.json in.csv -o " + grid).status, 0);
    EXPECT_TRUE(IsIn(grid, 27700)) << suffix;
    ASSERT_EQ(Run("convert --system gb.json --inverse " + grid + " -o " + back).status, 0);
    EXPECT_TRUE(IsIn(back, 4326)) << suffix;
  }
  // Metres where they are asked for: 2225 counts feet.
  ASSERT_EQ(Run("system --epsg 2225 --no-datum -o california.json").status, 0);
  Write("in.csv", "lat,lon,h\n40,-122,0\n");
  ASSERT_EQ(Run("convert --system california.json --unit m in.csv -o california.gpkg").status, 0);
  const GDALDatasetUniquePtr dataset = Open("california.gpkg");
  EXPECT_EQ(dataset->GetLayer(0)->GetSpatialRef()->GetLinearUnits(), 1);
  EXPECT_NEAR(dataset->GetLayer(0)->GetSpatialRef()->GetProjParm(SRS_PP_FALSE_EASTING), 2000000,
              1);  // 6561666.667 feet
  // Ground moves the grid away from what the code means.
  std::string ground = Read("gb.json");
  ground.insert(ground.find('{') + 1, R"("ground": {"scale": 1.0001},)");
  Write("ground.json", ground);
  Write("in.csv", kTp03);
  ASSERT_EQ(Run("convert --system ground.json in.csv -o ground.gpkg").status, 0);
  EXPECT_TRUE(IsIn("ground.gpkg", 0));
}

// Systems without "crs" get theirs from their parameters, and PROJ finds the positions with it.
TEST_F(Layers, ResultsCarryWhatTheParametersOfTheSystemSay) {
  constexpr double kSame = 1e-7;  // degrees, 1 cm
  const std::string wgs84 = R"({"global": {"ellipsoid": "WGS84"}, )",
                    zone =
                        R"("projection": {"name": "TMERC", "Central Meridian": -3, "Scale": 0.9996,
                             "Lat0": 0, "East0": 500000, "North0": 0})",
                    cone = R"("projection": {"name": "LC", "South Lat": 49, "North Lat": 52,
                             "Lon0": -3, "Lat0": 50, "East0": 0, "North0": 0, "Scale": )";
  const struct {
    const char* name;
    std::string text;
    bool described;
  } systems[] = {
      {"datum", BritainSystem(), true},
      {"zone", wgs84 + zone + "}", true},
      {"east", wgs84 + zone + R"(, "axes": {"grid": "EN"}})", true},
      {"cone", wgs84 + cone + "1}}", true},
      {"turned", wgs84 + R"("projection": {"name": "CASSINI", "Lat0": 50, "Lon0": -4,
                             "AxisAzimuth": 10, "East0": 0, "North0": 0}})",
       false},
      {"scaled", wgs84 + cone + "0.999}}", true},  // EPSG method 1051
      {"south", wgs84 + zone + R"(, "axes": {"grid": "SE"}})", false},
      {"other",
       R"({"global": {"ellipsoid": "GRS80"}, "local": {"ellipsoid": "Airy 1830"},
                    "datum": {"dX": 1, "dY": 2, "dZ": 3, "rX": 0, "rY": 0, "rZ": 0, "ppm": 0}, )" +
           zone + "}",
       false},
      {"site", wgs84 + zone + R"(, "ground": {"scale": 1.0001}})", false},
  };
  OGRSpatialReference positions;
  ASSERT_EQ(positions.importFromEPSG(4326), OGRERR_NONE);
  positions.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  for (const auto& system : systems) {
    const std::string file = std::string(system.name) + ".gpkg";
    Write("system.json", system.text);
    ASSERT_EQ(Run("convert --system system.json in.csv -o " + file).status, 0) << system.name;
    const GDALDatasetUniquePtr dataset = Open(file);
    const OGRSpatialReference* crs = dataset->GetLayer(0)->GetSpatialRef();
    ASSERT_NE(crs, nullptr);
    if (!system.described) {
      EXPECT_STREQ(crs->GetName(), "Undefined Cartesian SRS") << system.name;
      continue;
    }
    const OGRFeatureUniquePtr feature(dataset->GetLayer(0)->GetNextFeature());
    const std::unique_ptr<OGRCoordinateTransformation> change(
        OGRCreateCoordinateTransformation(crs, &positions));
    ASSERT_TRUE(change) << system.name;
    double x = feature->GetGeometryRef()->toPoint()->getX();
    double y = feature->GetGeometryRef()->toPoint()->getY();
    ASSERT_TRUE(change->Transform(1, &x, &y)) << system.name;
    EXPECT_NEAR(x, kLon, kSame) << system.name;
    EXPECT_NEAR(y, kLat, kSame) << system.name;
  }
  Write("system.json", BritainSystem());
  const ProgramRun shape = Run("convert --system system.json in.csv -o a.shp");
  EXPECT_TRUE(Contains(shape.err, "a.shp: a Shapefile has no place for the datum")) << shape.err;
  EXPECT_FALSE(fs::exists(directory_ / "a.prj"));
}

// PROJ may know a better transformation than the seven parameters of the system.
constexpr double kOtherTransformation = 5;  // metres; without conversion it is degrees or 100 m

TEST_F(Layers, AnotherSystemIsConvertedOrRefused) {
  WriteLayer("grid.gpkg", 27700, kEast, kNorth, 165.6607);
  const ProgramRun converted = Run("convert --system gb.json grid.gpkg -o out.csv");
  ASSERT_EQ(converted.status, 0) << converted.err;
  EXPECT_TRUE(Contains(converted.err, "(EPSG:27700); its positions are converted to WGS 84"));
  double n = 0, e = 0;
  ASSERT_EQ(std::sscanf(Lines(Read("out.csv")).at(1).c_str(), "%lf,%lf", &n, &e), 2);
  EXPECT_NEAR(n, kNorth, kOtherTransformation);
  EXPECT_NEAR(e, kEast, kOtherTransformation);

  const ProgramRun same = Run("convert --system gb.json --inverse grid.gpkg -o -");
  EXPECT_EQ(same.err, "");
  double lat = 0, lon = 0;
  ASSERT_EQ(std::sscanf(Lines(same.out).at(1).c_str(), "%lf,%lf", &lat, &lon), 2);
  EXPECT_NEAR(lat, kLat, 1e-7);
  EXPECT_NEAR(lon, kLon, 1e-7);

  WriteLayer("degrees.gpkg", 4326, kLon, kLat, kH);
  EXPECT_EQ(Run("convert --system gb.json degrees.gpkg -o -").err, "");
  const ProgramRun refused = Run("convert --system gb.json --inverse degrees.gpkg -o -");
  EXPECT_EQ(refused.status, 2);
  EXPECT_TRUE(Contains(refused.err, "degrees.gpkg is in WGS 84 (EPSG:4326): the system's grid is"))
      << refused.err;
  WriteLayer("other.gpkg", 32630, kEast, kNorth, 0);
  EXPECT_EQ(Run("convert --system gb.json --inverse other.gpkg -o -").status, 2);
  const ProgramRun ignored = Run("convert --system gb.json --inverse --ignore-crs other.gpkg -o -");
  EXPECT_EQ(ignored.status, 0);
  EXPECT_EQ(ignored.err, "");

  // Heights above the sea are not those above the ellipsoid.
  WriteLayer("sea.gpkg", 7405, kEast, kNorth, 165.6607);
  const ProgramRun sea = Run("convert --system gb.json sea.gpkg -o -");
  EXPECT_EQ(sea.status, 2);
  EXPECT_TRUE(Contains(sea.err, "heights are not above the ellipsoid")) << sea.err;
  EXPECT_EQ(Run("convert --system gb.json sea.gpkg --fixed-height 10 -o -").status, 0);
}

// A grid without a name is compared by its parameters; UTM by another name is the same grid.
TEST_F(Layers, TheGridOfASystemWithoutNameIsComparedByItsParameters) {
  Write("zone.json", R"({"global": {"ellipsoid": "WGS84"}, "projection": {"name": "TMERC",
      "Central Meridian": -3, "Scale": 0.9996, "Lat0": 0, "East0": 500000, "North0": 0}})");
  ASSERT_EQ(Run("convert --system zone.json in.csv -o own.gpkg").status, 0);
  WriteLayer("utm.gpkg", 32630, 421273.1338, 5588014.0582, kH);
  WriteLayer("national.gpkg", 27700, kEast, kNorth, 165.6607);
  const std::string inverse = "convert --system zone.json --inverse --from-geometry -o - ";
  for (const char* same : {"own.gpkg", "utm.gpkg"}) {
    const ProgramRun run = Run(inverse + same);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_FALSE(Contains(run.err, " is in ")) << run.err;
  }
  const ProgramRun other = Run(inverse + "national.gpkg");
  EXPECT_EQ(other.status, 2);
  EXPECT_TRUE(Contains(other.err, "(EPSG:27700): the system's grid is")) << other.err;
}

// Options that meet: a layer of texts with decimal commas, geometry that PROJ converts, gons whose
// place in GeoJSON is in degrees, a byte order mark where there is no header.
TEST_F(Layers, OptionsThatMeet) {
  Write("comma.csv", "lat;lon;h\n50,43885825610;-4,10864563561;215,251\n");
  ASSERT_EQ(Run("convert --system gb.json comma.csv -o comma.gpkg").status, 0);
  const ProgramRun comma =
      Run("convert --system gb.json comma.gpkg --decimal-comma --results x,y,z -o -");
  EXPECT_TRUE(Contains(comma.out, "\"62015,2106\"")) << comma.out << comma.err;

  WriteLayer("web.gpkg", 3857, -457372.3400, 6522628.1229, kH);  // PROJ 9.1.1
  double n = 0, e = 0;
  const ProgramRun web = Run("convert --system gb.json web.gpkg --from-geometry -o -");
  ASSERT_EQ(std::sscanf(Lines(web.out).at(1).c_str(), "%lf,%lf", &n, &e), 2) << web.err;
  EXPECT_NEAR(n, kNorth, kRegistrySet);
  EXPECT_NEAR(e, kEast, kRegistrySet);

  Write("gon.csv", "lat_gon,lon_gon,h\n56.0431758,-4.5651618,215.251\n");
  ASSERT_EQ(Run("convert --system gb.json gon.csv --angles gon -o gon.geojson").status, 0);
  EXPECT_TRUE(Contains(Read("gon.geojson"), "[ -4.108645")) << Read("gon.geojson");

  Write("mark.csv",
        "\xEF\xBB\xBF"
        "50.43885825610,-4.10864563561,215.251\n");
  const ProgramRun mark =
      Run("convert --system gb.json mark.csv --no-header --columns lat,lon,h -o -");
  EXPECT_TRUE(Contains(mark.out, ",62015.2106,250357.81")) << mark.out << mark.err;
}

TEST_F(Layers, PointsStandAtXEastYNorthZUp) {
  for (const char* suffix : {".geojson", ".gpkg"}) {
    for (const char* command :
         {"geoid --model pot.txt", "declination --date 2012-01-01 --points"}) {
      const std::string out = std::string("out") + suffix;
      ASSERT_EQ(Run(std::string(command) + " in.csv -o " + out).status, 0);
      const GDALDatasetUniquePtr dataset = Open(out);
      const OGRFeatureUniquePtr feature(dataset->GetLayer(0)->GetNextFeature());
      const OGRPoint* point = feature->GetGeometryRef()->toPoint();
      EXPECT_NEAR(point->getX(), kLon, kDegrees) << command << suffix;
      EXPECT_NEAR(point->getY(), kLat, kDegrees) << command << suffix;
      EXPECT_EQ(point->getZ(), kH) << command << suffix;
      EXPECT_TRUE(IsIn(out, 4326)) << command << suffix;
    }
    Write("grid.csv", "n,e,h_local\n62015.2109,250357.8185,165.6607\n");
    const std::string back = std::string("back") + suffix;
    Write("seven.json", BritainSystem());
    ASSERT_EQ(Run("convert --system seven.json --inverse grid.csv -o " + back).status, 0);
    const GDALDatasetUniquePtr dataset = Open(back);
    const OGRFeatureUniquePtr feature(dataset->GetLayer(0)->GetNextFeature());
    const OGRPoint* point = feature->GetGeometryRef()->toPoint();
    EXPECT_NEAR(point->getX(), kLon, 1e-7) << suffix;
    EXPECT_NEAR(point->getY(), kLat, 1e-7) << suffix;
    EXPECT_NEAR(point->getZ(), kH, kSeriesMetres) << suffix;
  }
}

TEST_F(Layers, TextsSurviveOrAreReported) {
  const std::string bytes254 = std::string(252, 'x') + "\u017a";  // the last is two bytes
  Write("in.csv", "lat,lon,h,name,a long column name\n50,0,0,\u0141\u00f3d\u017a," + bytes254 +
                      "\n50,0,0,b," + bytes254 + "y\n");
  const ProgramRun run = Run("convert --system gb.json in.csv -o out.shp");
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(Contains(run.err, "out.shp: the column \"a long column name\" is \"")) << run.err;
  EXPECT_TRUE(Contains(run.err, "out.shp: 1 text of the column \"a long column name\" is cut"))
      << run.err;
  EXPECT_EQ(Read("out.cpg"), "UTF-8");
  const GDALDatasetUniquePtr dataset = Open("out.shp");
  const OGRFeatureUniquePtr feature(dataset->GetLayer(0)->GetNextFeature());
  EXPECT_STREQ(feature->GetFieldAsString("name"), "\u0141\u00f3d\u017a");
  EXPECT_EQ(feature->GetFieldAsString(4), bytes254);

  Write("mark.csv", std::string("\xEF\xBB\xBF") + kTp03);
  ASSERT_EQ(Run("convert --system gb.json mark.csv -o mark_out.csv").status, 0);
  EXPECT_TRUE(Read("mark_out.csv").starts_with("\xEF\xBB\xBFlat,"));
}

TEST_F(Layers, BooleansAndIdsSurvive) {
  Write("in.geojson", R"({"type": "FeatureCollection", "features": [
    {"type": "Feature", "id": "T-3", "properties": {"lit": true}, "geometry":
     {"type": "Point", "coordinates": [-4.10864563561, 50.43885825610, 215.251]}}]})");
  const ProgramRun run = Run("convert --system gb.json in.geojson -o out.geojson");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_TRUE(Contains(Read("out.geojson"), "\"id\": \"T-3\""));
  EXPECT_TRUE(Contains(Read("out.geojson"), "\"lit\": true"));
  const ProgramRun csv = Run("convert --system gb.json in.geojson -o -");
  EXPECT_TRUE(Contains(csv.out, "T-3,true,")) << csv.out;
  Write("in.geojson", R"({"type": "FeatureCollection", "features": [
    {"type": "Feature", "id": 41, "properties": {"lit": false}, "geometry":
     {"type": "Point", "coordinates": [-4.10864563561, 50.43885825610, 215.251]}}]})");
  ASSERT_EQ(Run("convert --system gb.json in.geojson -o out.gpkg").status, 0);
  ASSERT_EQ(Run("convert --system gb.json --inverse out.gpkg -o back.geojson").status, 0);
  EXPECT_TRUE(Contains(Read("back.geojson"), "\"id\": 41"));
  EXPECT_TRUE(Contains(Read("back.geojson"), "\"lit\": false"));
}

// The grid is named as it is seen from where the new file stands.
TEST_F(Layers, ACalibratedSystemFindsItsGeoidFromAnotherFolder) {
  const fs::path site = fs::path(GEOMATH_SOURCE_DIR) / "examples/site";
  fs::create_directories(directory_ / "grids");
  fs::create_directories(directory_ / "sites/one");
  ASSERT_EQ(Run("geoid --model pot.txt --extent 0,-90,90,90 --step 1 -o grids/g.tif").status, 0);
  const std::string system = ReadText(site / "system.json");
  for (const std::string& grid :
       {std::string("grids/g.tif"), (directory_ / "grids/g.tif").string()}) {
    std::string text = system;
    text.insert(text.find('{') + 1, "\"geoid\": {\"grid\": \"" + grid + "\"},");
    Write("system.json", text);
    const std::string control = " '" + (site / "control.csv").string() + "' --system system.json";
    ASSERT_EQ(Run("calibrate" + control + " -o here.json").status, 0);
    ASSERT_EQ(Run("calibrate" + control + " -o sites/one/there.json").status, 0);
    const std::string points = " '" + (site / "check.csv").string() + "' -o -";
    const ProgramRun here = Run("convert --system here.json" + points);
    const ProgramRun there = Run("convert --system sites/one/there.json" + points);
    EXPECT_EQ(here.status, 0) << here.err;
    EXPECT_EQ(there.out, here.out) << there.err;
  }
}
