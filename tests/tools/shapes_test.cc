// Lines, polygons and collections, converted vertex by vertex.
#include <gtest/gtest.h>
#include <ogrsf_frmts.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

namespace {

namespace fs = std::filesystem;

// The grid coordinates of TP03 of the published points of Great Britain by an independent
// evaluation of the seven-parameter chain, to 0.1 mm.
constexpr double kNorth = 62015.2109, kEast = 250357.8185, kLocalH = 165.6607;
constexpr double kPrintedMetres = 1e-4;  // of that evaluation, and what TMERC leaves
constexpr double kBackDegrees = 1e-10;   // 0.01 mm
constexpr double kBackMetres = 1e-5;

// Of a layer with the one geometry, and its attributes.
struct Shape {
  const char* layer;
  const char* wkt;
};
const Shape kShapes[] = {
    {"stations", "POINT Z (-4.10864563561 50.4388582561 215.251)"},
    {"cables", "LINESTRING ZM (-4.10864563561 50.4388582561 215.251 1,-4.1 50.44 200 2)"},
    {"parcels",
     "MULTIPOLYGON (((-4.1 50.4,-4 50.4,-4 50.5,-4.1 50.4),(-4.03 50.42,-4.01 50.42,-4.01 50.44,"
     "-4.03 50.42)),((-3 51,-3 51.1,-3.1 51,-3 51)))"},
};
constexpr const char* kArc = "CIRCULARSTRING (-4.1 50.4,-4.05 50.45,-4 50.4)";

class Shapes : public ::testing::Test {
 protected:
  void SetUp() override {
    GDALAllRegister();
    // TMERC, whose inverse is exact: that of TM costs millimetres.
    std::string system = BritainSystem();
    system.replace(system.find("\"TM\""), 4, "\"TMERC\"");
    WriteText(directory_ / "system.json", system);
    std::vector<Shape> shapes(std::begin(kShapes), std::end(kShapes));
    WriteShapes("in.gpkg", shapes);
  }

  std::string Path(const std::string& name) const { return (directory_ / name).string(); }
  ProgramRun Run(const std::string& arguments) {
    return RunProgram(directory_, "convert --system system.json " + arguments);
  }
  GDALDatasetUniquePtr Open(const std::string& name) {
    return GDALDatasetUniquePtr(GDALDataset::Open(Path(name).c_str(), GDAL_OF_VECTOR));
  }

  void WriteShapes(const std::string& name, const std::vector<Shape>& shapes, int epsg = 4326) {
    const GDALDatasetUniquePtr dataset(GetGDALDriverManager()->GetDriverByName("GPKG")->Create(
        Path(name).c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    OGRSpatialReference crs;
    ASSERT_EQ(crs.importFromEPSG(epsg), OGRERR_NONE);
    crs.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    for (const Shape& shape : shapes) {
      OGRGeometry* geometry = nullptr;
      ASSERT_EQ(OGRGeometryFactory::createFromWkt(shape.wkt, nullptr, &geometry), OGRERR_NONE);
      OGRLayer* layer = dataset->CreateLayer(shape.layer, &crs, geometry->getGeometryType());
      OGRFieldDefn text("owner", OFTString), number("id", OFTInteger64), day("seen", OFTDate);
      for (OGRFieldDefn* field : {&text, &number, &day})
        ASSERT_EQ(layer->CreateField(field), OGRERR_NONE);
      const OGRFeatureUniquePtr feature(OGRFeature::CreateFeature(layer->GetLayerDefn()));
      feature->SetField("owner", "Sm\xC3\xADth, \"J\"");
      feature->SetField("id", GIntBig{12345678901});
      feature->SetField("seen", 2016, 2, 29);
      feature->SetGeometryDirectly(geometry);
      ASSERT_EQ(layer->CreateFeature(feature.get()), OGRERR_NONE);
    }
  }

  // The first feature of a layer, by its name or the first.
  OGRFeatureUniquePtr First(GDALDataset& dataset, const char* layer = nullptr) {
    OGRLayer* its = layer ? dataset.GetLayerByName(layer) : dataset.GetLayer(0);
    return OGRFeatureUniquePtr(its ? its->GetNextFeature() : nullptr);
  }

  const ScratchFolder scratch_;
  const fs::path directory_ = scratch_.Path();
};

// Largest difference of vertices and of heights of two geometries of one kind; NaN for two kinds.
struct Difference {
  double plane = 0, height = 0;
};
Difference Compare(const OGRGeometry& a, const OGRGeometry& b) {
  Difference largest;
  std::vector<OGRPoint> points[2];
  class Gather : public OGRDefaultGeometryVisitor {
   public:
    explicit Gather(std::vector<OGRPoint>& to) : to_(to) {}
    void visit(OGRPoint* point) override { to_.push_back(*point); }

   private:
    std::vector<OGRPoint>& to_;
  };
  Gather first(points[0]), second(points[1]);
  const_cast<OGRGeometry&>(a).accept(&first);
  const_cast<OGRGeometry&>(b).accept(&second);
  if (a.getGeometryType() != b.getGeometryType() || points[0].size() != points[1].size())
    return {NAN, NAN};
  for (std::size_t i = 0; i < points[0].size(); ++i) {
    const OGRPoint &p = points[0][i], &q = points[1][i];
    largest.plane =
        std::max({largest.plane, std::abs(p.getX() - q.getX()), std::abs(p.getY() - q.getY())});
    largest.height = std::max(largest.height, std::abs(p.getZ() - q.getZ()));
    EXPECT_EQ(p.getM(), q.getM());
  }
  return largest;
}

}  // namespace

TEST_F(Shapes, AllLayersOfAFileComeBackWithTheirAttributes) {
  const ProgramRun run = Run("in.gpkg -o grid.gpkg");
  ASSERT_EQ(run.status, 0) << run.err;
  ASSERT_EQ(Run("--inverse grid.gpkg -o back.gpkg").status, 0);
  const GDALDatasetUniquePtr in = Open("in.gpkg"), grid = Open("grid.gpkg"),
                             back = Open("back.gpkg");
  ASSERT_EQ(grid->GetLayerCount(), 3);
  const OGRFeatureUniquePtr line = First(*grid, "cables");
  const OGRLineString* converted = line->GetGeometryRef()->toLineString();
  EXPECT_NEAR(converted->getX(0), kEast, kPrintedMetres);
  EXPECT_NEAR(converted->getY(0), kNorth, kPrintedMetres);
  EXPECT_NEAR(converted->getZ(0), kLocalH, kPrintedMetres);
  for (const Shape& shape : kShapes) {
    EXPECT_TRUE(grid->GetLayerByName(shape.layer)->GetSpatialRef()->IsProjected());
    const OGRFeatureUniquePtr given = First(*in, shape.layer), returned = First(*back, shape.layer);
    const Difference difference = Compare(*given->GetGeometryRef(), *returned->GetGeometryRef());
    EXPECT_LE(difference.plane, kBackDegrees) << shape.layer;
    EXPECT_LE(difference.height, kBackMetres) << shape.layer;
    for (const char* field : {"owner", "id", "seen"})
      EXPECT_STREQ(returned->GetFieldAsString(field), given->GetFieldAsString(field));
  }
}

TEST_F(Shapes, GoIntoEveryFormat) {
  for (const char* name : {"a.shp", "a.fgb", "a.dxf", "a.csv"}) {
    const ProgramRun run = Run(std::string("in.gpkg --layer cables -o ") + name);
    ASSERT_EQ(run.status, 0) << name << run.err;
    const GDALDatasetUniquePtr made = Open(name);
    ASSERT_NE(made, nullptr) << name;
    const OGRFeatureUniquePtr feature = First(*made);
    ASSERT_NE(feature->GetGeometryRef(), nullptr) << name;
    EXPECT_NEAR(feature->GetGeometryRef()->toLineString()->getX(0), kEast, kPrintedMetres) << name;
  }
  for (const char* name : {"p.fgb", "p.dxf"}) {
    const ProgramRun run = Run(std::string("in.gpkg --layer stations -o ") + name);
    ASSERT_EQ(run.status, 0) << name << run.err;
    const GDALDatasetUniquePtr made = Open(name);
    EXPECT_NEAR(First(*made)->GetGeometryRef()->toPoint()->getX(), kEast, kPrintedMetres) << name;
  }
  ASSERT_EQ(Run("in.gpkg -o grid.gpkg").status, 0);
  for (const char* name : {"b.geojson", "b.kml"}) {
    const ProgramRun run =
        Run(std::string("--inverse grid.gpkg --layer parcels --densify 500 -o ") + name);
    ASSERT_EQ(run.status, 0) << name << run.err;
    const GDALDatasetUniquePtr made = Open(name);
    const OGRFeatureUniquePtr feature = First(*made);
    const auto* parcels = feature->GetGeometryRef()->toMultiPolygon();
    EXPECT_NEAR(parcels->getGeometryRef(0)->getExteriorRing()->getX(0), -4.1, kBackDegrees);
    EXPECT_TRUE(parcels->getGeometryRef(0)->getExteriorRing()->get_IsClosed());
    EXPECT_TRUE(made->GetLayer(0)->GetSpatialRef()->IsGeographic());
  }
}

// A parallel of 0.1 degrees is 7.1 km there; its middle lies north of the straight line in the grid.
TEST_F(Shapes, DensifyFollowsTheLineOfTheInput) {
  WriteShapes("line.gpkg", {{"line", "LINESTRING (-4.1 50.4,-4 50.4)"}});
  ASSERT_EQ(Run("line.gpkg -o plain.gpkg").status, 0);
  ASSERT_EQ(Run("line.gpkg --densify 4000 -o dense.gpkg").status, 0);
  const GDALDatasetUniquePtr plain = Open("plain.gpkg"), dense = Open("dense.gpkg");
  const OGRFeatureUniquePtr a = First(*plain), b = First(*dense);
  EXPECT_EQ(a->GetGeometryRef()->toLineString()->getNumPoints(), 2);
  const OGRLineString* line = b->GetGeometryRef()->toLineString();
  ASSERT_EQ(line->getNumPoints(), 3);
  const ProgramRun middle = Run("50.4 -4.05 0");
  EXPECT_NEAR(line->getY(1), std::stod(middle.out.substr(12)), 1e-4);
  EXPECT_TRUE(Contains(Run("line.gpkg --densify 1e-9 -o x.gpkg").err, "--densify would make more"));
  EXPECT_FALSE(fs::exists(directory_ / "x.gpkg"));
}

TEST_F(Shapes, CurvesKeepTheirKindOrAreRefused) {
  WriteShapes("arc.gpkg", {{"arcs", kArc}});
  ASSERT_EQ(Run("arc.gpkg -o grid.gpkg").status, 0);
  const GDALDatasetUniquePtr grid = Open("grid.gpkg");
  const OGRFeatureUniquePtr arc = First(*grid);
  EXPECT_EQ(arc->GetGeometryRef()->getGeometryType(), wkbCircularString);
  EXPECT_EQ(arc->GetGeometryRef()->toCircularString()->getNumPoints(), 3);
  const ProgramRun refused = Run("arc.gpkg -o grid.shp");
  EXPECT_EQ(refused.status, 2);
  EXPECT_TRUE(Contains(refused.err, "a Shapefile cannot hold its CIRCULARSTRING")) << refused.err;
  EXPECT_FALSE(fs::exists(directory_ / "grid.shp"));
}

TEST_F(Shapes, WhatCannotBeIsRefusedAndNothingIsWritten) {
  WriteShapes("mixed.gpkg",
              {{"all", "GEOMETRYCOLLECTION (POINT (-4 50),LINESTRING (-4 50,-4 51))"}});
  struct Case {
    const char *arguments, *output, *complaint;
  };
  const Case cases[] = {
      {"in.gpkg -o x.shp", "x.shp", "choose one with --layer"},
      {"in.gpkg --layer none -o x.gpkg", "x.gpkg", "no layer \"none\""},
      {"mixed.gpkg -o x.shp", "x.shp", "cannot be written"},
      {"in.gpkg --layer cables -o x.geojson", "x.geojson", "not grid coordinates"},
      {"in.gpkg --layer cables -o x.kml", "x.kml", "not grid coordinates"},
      {"in.gpkg --layer cables -o x.xyz", "x.xyz", "the suffix chooses the format"},
      {"in.gpkg --layer cables -o x.parquet", "x.parquet", "this GDAL has no Parquet"},
      {"in.gpkg --layer cables --with scale -o x.gpkg", "x.gpkg", "--with: belongs to points"},
      {"in.gpkg -o in.gpkg", "", "in.gpkg"},
      {"--inverse in.gpkg -o x.gpkg", "x.gpkg", "not degrees"},
  };
  for (const Case& each : cases) {
    const bool lacking = Contains(each.output, "parquet") &&
                         GetGDALDriverManager()->GetDriverByName("Parquet") != nullptr;
    if (lacking) continue;
    const ProgramRun run = Run(each.arguments);
    EXPECT_EQ(run.status, 2) << each.arguments;
    EXPECT_TRUE(Contains(run.err, each.complaint)) << each.arguments << "\n" << run.err;
    EXPECT_EQ(fs::exists(directory_ / each.output), *each.output == 0) << each.arguments;
  }
}

// A vertex beyond the pole has no place in the grid.
TEST_F(Shapes, AFeatureThatCannotBeConvertedKeepsItsAttributes) {
  WriteShapes("far.gpkg", {{"far", "LINESTRING (-4 50,-4 95)"}});
  const ProgramRun run = Run("far.gpkg -o grid.gpkg");
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.err, "feature 1: not converted")) << run.err;
  const GDALDatasetUniquePtr grid = Open("grid.gpkg");
  const OGRFeatureUniquePtr feature = First(*grid);
  EXPECT_EQ(feature->GetGeometryRef(), nullptr);
  EXPECT_EQ(feature->GetFieldAsInteger64("id"), 12345678901);
  const ProgramRun drawing = Run("far.gpkg -o grid.dxf");
  EXPECT_EQ(drawing.status, 1);
  EXPECT_TRUE(Contains(drawing.err, "DXF has no room for features without geometry, of which"))
      << drawing.err;
  EXPECT_TRUE(fs::exists(directory_ / "grid.dxf"));
}
