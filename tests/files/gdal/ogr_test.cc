#include "files/gdal/ogr.h"

#include <cpl_vsi.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "files/models/geoid_file.h"
#include "files/points/point_source.h"
#include "files/words/user_error.h"
#include "tests/support/scratch_folder.h"

using namespace geomath_files;

namespace {

constexpr const char* kGrid =
    "ncols 3\nnrows 2\nxllcorner 8.5\nyllcorner 49.5\ncellsize 1\n47 47 47\n47 47 47\n";
constexpr const char* kPoint =
    R"({"type": "FeatureCollection", "features": [{"type": "Feature", "properties": {},
        "geometry": {"type": "Point", "coordinates": [9, 50, 100]}}]})";

class LocalFiles : public testing::Test {
 protected:
  std::string Write(const char* name, const std::string& text) const {
    const std::string path = (directory_ / name).string();
    std::ofstream(path) << text;
    return path;
  }

  const ScratchFolder scratch_;
  const std::filesystem::path directory_ = scratch_.Path();
};

template <class Open>
std::string Complaint(Open open) {
  try {
    open();
  } catch (const UserError& error) {
    return error.what();
  }
  return "no complaint";
}

std::string GridComplaint(const std::string& path) {
  return Complaint([&] { OpenGeoid({path, "", "", "", false}); });
}

std::string PointComplaint(const std::string& path) {
  return Complaint([&] { OpenPoints(path, ""); });
}

// The control of the next test: what the references lead to is good.
TEST_F(LocalFiles, AreRead) {
  EXPECT_EQ(GridComplaint(Write("grid.asc", kGrid)), "no complaint");
  EXPECT_EQ(PointComplaint(Write("points.geojson", kPoint)), "no complaint");
}

TEST_F(LocalFiles, AreNotFollowedToOtherPlaces) {
  const std::string grid = Write("grid.asc", kGrid), points = Write("points.geojson", kPoint);
  const std::string virtualGrid =
      Write("virtual.tif", R"(<VRTDataset rasterXSize="3" rasterYSize="2"><SRS>EPSG:4326</SRS>
        <GeoTransform>8.5, 1, 0, 51.5, 0, -1</GeoTransform><VRTRasterBand dataType="Float32"
        band="1"><SimpleSource><SourceFilename>)" +
                               grid +
                               "</SourceFilename><SourceBand>1</SourceBand></SimpleSource>"
                               "</VRTRasterBand></VRTDataset>");
  const std::string virtualPoints =
      Write("virtual.shp", "<OGRVRTDataSource><OGRVRTLayer name=\"points\"><SrcDataSource>" +
                               points + "</SrcDataSource></OGRVRTLayer></OGRVRTDataSource>");
  EXPECT_NE(GridComplaint(virtualGrid).find("is no grid that can be read"), std::string::npos);
  EXPECT_NE(PointComplaint(virtualPoints).find("is no point file"), std::string::npos);
}

TEST_F(LocalFiles, AreNotAddressesOrArchives) {
  PrepareOgr();
  const auto store = [](const char* path, const std::string& text) {
    VSILFILE* file = VSIFOpenL(path, "wb");
    VSIFWriteL(text.data(), 1, text.size(), file);
    VSIFCloseL(file);
  };
  store("/vsimem/grid.asc", kGrid);
  store("/vsimem/points.geojson", kPoint);
  const std::string refusal = ": is no local file";
  for (const std::string path : {"/vsimem/grid.asc", "/vsicurl/http://127.0.0.1:9/grid.tif"})
    EXPECT_NE(GridComplaint(path).find(refusal), std::string::npos) << path;
  EXPECT_NE(PointComplaint("/vsimem/points.geojson").find(refusal), std::string::npos);
  EXPECT_NE(GridComplaint("http://127.0.0.1:9/grid.tif").find("No such file"), std::string::npos);
  EXPECT_NE(PointComplaint(kPoint).find("cannot be read"), std::string::npos);  // no text of a file
  VSIUnlink("/vsimem/grid.asc");
  VSIUnlink("/vsimem/points.geojson");
}

}  // namespace
