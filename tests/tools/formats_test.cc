// Formats of GDAL/OGR: what the program writes is read here by GDAL itself, and read back by the
// program.
#include <gtest/gtest.h>
#include <ogrsf_frmts.h>

#include <filesystem>
#include <string>

#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

namespace {

namespace fs = std::filesystem;

// TP03 and TP04 of the published points of Great Britain; grid coordinates of TP03 by an
// independent evaluation of the seven-parameter chain, to 0.1 mm.
constexpr const char* kPoints =
    "name,count,lat,lon,h\n"
    "TP03,007,50.43885825610,-4.10864563561,215.251\n"
    "bad,8,x,-4,0\n"
    "TP04,9,50.57563665000,-1.29782277240,94.688\n";
constexpr double kNorth = 62015.2109, kEast = 250357.8185, kHeight = 165.6607;
constexpr double kSeriesMetres = 3e-4;  // TTMProj against an exact TM
constexpr double kBackDegrees = 3e-8;   // its inverse ends the footpoint search at 1 mm: 3 mm
constexpr double kTextDegrees = 1e-15;  // GeoJSON text of a degree value

class Formats : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    GDALAllRegister();
    WriteText(directory_ / "system.json", BritainSystem());
    WriteText(directory_ / "in.csv", kPoints);
  }

  ProgramRun Run(const std::string& arguments) {
    return RunProgram(directory_, "convert --system system.json " + arguments);
  }
  GDALDatasetUniquePtr Open(const std::string& name) {
    return GDALDatasetUniquePtr(GDALDataset::Open((directory_ / name).c_str(), GDAL_OF_VECTOR));
  }

  const std::string file_ = std::string("grid.") + GetParam();
  const ScratchFolder scratch_;
  const fs::path directory_ = scratch_.Path();
};

}  // namespace

TEST_P(Formats, HoldEveryRowWithResultsAndGeometry) {
  ASSERT_EQ(Run("in.csv -o " + file_).status, 1);  // the bad row
  const GDALDatasetUniquePtr dataset = Open(file_);
  ASSERT_NE(dataset, nullptr);
  OGRLayer* layer = dataset->GetLayer(0);
  ASSERT_EQ(layer->GetFeatureCount(), 3);

  OGRFeatureUniquePtr feature(layer->GetNextFeature());
  EXPECT_STREQ(feature->GetFieldAsString("name"), "TP03");
  EXPECT_STREQ(feature->GetFieldAsString("count"), "007");
  EXPECT_STREQ(feature->GetFieldAsString("lat"), "50.43885825610");
  EXPECT_NEAR(feature->GetFieldAsDouble("n"), kNorth, kSeriesMetres);
  EXPECT_NEAR(feature->GetFieldAsDouble("e"), kEast, kSeriesMetres);
  EXPECT_NEAR(feature->GetFieldAsDouble("h_local"), kHeight, kSeriesMetres);
  const OGRPoint* point = feature->GetGeometryRef()->toPoint();
  if (std::string(GetParam()) == "geojson") {  // geographic by definition
    EXPECT_NEAR(point->getX(), -4.10864563561, kTextDegrees);
    EXPECT_NEAR(point->getY(), 50.43885825610, 8 * kTextDegrees);
    EXPECT_EQ(point->getZ(), 215.251);
  } else {
    EXPECT_NEAR(point->getX(), kEast, kSeriesMetres);
    EXPECT_NEAR(point->getY(), kNorth, kSeriesMetres);
    EXPECT_NEAR(point->getZ(), kHeight, kSeriesMetres);
  }

  feature.reset(layer->GetNextFeature());
  EXPECT_STREQ(feature->GetFieldAsString("name"), "bad");
  EXPECT_FALSE(feature->IsFieldSetAndNotNull(feature->GetFieldIndex("n")));
  EXPECT_EQ(feature->GetGeometryRef(), nullptr);
}

TEST_P(Formats, AreReadBackByColumnsAndByGeometry) {
  WriteText(directory_ / "in.csv", "lat,lon,h\n50.43885825610,-4.10864563561,215.251\n");
  ASSERT_EQ(Run("in.csv -o " + file_).status, 0);
  const ProgramRun byColumns = Run(file_ + " --inverse -o -");
  ASSERT_EQ(byColumns.status, 0) << byColumns.err;
  EXPECT_EQ(Lines(byColumns.out).at(0), "lat,lon,h,n,e,h_local,lat_2,lon_2,h_global_2");
  double lat = 0, lon = 0, h = 0;
  ASSERT_EQ(std::sscanf(Lines(byColumns.out).at(1).c_str(),
                        "%*[^,],%*[^,],%*[^,],%*[^,],%*[^,],%*[^,],%lf,%lf,%lf", &lat, &lon, &h),
            3)
      << byColumns.out;
  EXPECT_NEAR(lat, 50.43885825610, kBackDegrees);
  EXPECT_NEAR(lon, -4.10864563561, kBackDegrees);
  EXPECT_NEAR(h, 215.251, 1e-4);

  // Without the columns the geometry is the point.
  const bool geographic = std::string(GetParam()) == "geojson";
  {
    const GDALDatasetUniquePtr dataset(
        GDALDataset::Open((directory_ / file_).c_str(), GDAL_OF_VECTOR | GDAL_OF_UPDATE));
    OGRLayer* layer = dataset->GetLayer(0);
    for (const char* name : {"lat", "lon", "h", "n", "e", "h_local"})
      ASSERT_EQ(layer->DeleteField(layer->GetLayerDefn()->GetFieldIndex(name)), OGRERR_NONE);
  }
  const ProgramRun byGeometry = Run(file_ + (geographic ? "" : " --inverse") + " -o -");
  ASSERT_EQ(byGeometry.status, 0) << byGeometry.err;
  ASSERT_EQ(std::sscanf(Lines(byGeometry.out).at(1).c_str(), "%lf,%lf,%lf", &lat, &lon, &h), 3)
      << byGeometry.out;
  EXPECT_NEAR(lat, geographic ? kNorth : 50.43885825610, geographic ? kSeriesMetres : kBackDegrees);
  EXPECT_NEAR(lon, geographic ? kEast : -4.10864563561, geographic ? kSeriesMetres : kBackDegrees);
}

TEST_P(Formats, KeepTypesFromOneToTheOther) {
  WriteText(directory_ / "typed.geojson", R"({"type": "FeatureCollection", "features": [
    {"type": "Feature", "properties": {"id": 12345678901, "factor": 0.1, "when": "2016-02-29"},
     "geometry": {"type": "Point", "coordinates": [-4.10864563561, 50.43885825610, 215.251]}},
    {"type": "Feature", "properties": {"id": 1}, "geometry": null}]})");
  const std::string file = std::string("typed_out.") + GetParam();
  const ProgramRun run = Run("typed.geojson -o " + file);
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find("feature 1: not converted: the feature has no point geometry"),
            std::string::npos)
      << run.err;
  const GDALDatasetUniquePtr dataset = Open(file);
  ASSERT_NE(dataset, nullptr);
  const OGRFeatureUniquePtr feature(dataset->GetLayer(0)->GetNextFeature());
  EXPECT_EQ(feature->GetFieldAsInteger64("id"), 12345678901);
  EXPECT_EQ(feature->GetFieldAsDouble("factor"), 0.1);
  EXPECT_EQ(feature->GetFieldDefnRef(feature->GetFieldIndex("when"))->GetType(), OFTDate);
  EXPECT_NEAR(feature->GetFieldAsDouble("n"), kNorth, kSeriesMetres);
}

INSTANTIATE_TEST_SUITE_P(Ogr, Formats, ::testing::Values("geojson", "gpkg", "shp"),
                         [](const auto& format) { return std::string(format.param); });
