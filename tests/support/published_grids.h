#pragma once

#include <gdal_priv.h>

#include <fstream>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/frame/deformation_model.h"
#include "geomath/platform/decimal_year.h"

/// Published velocity and deformation grids as GDAL reads them, for tests. What is wrong throws.
namespace zel_cs::geomath {

/// The pages of a TIFF whose samples have these names, in this order; smaller ones inside of larger.
inline std::vector<ShiftGridPart> ReadParts(const std::string& path,
                                            std::initializer_list<const char*> samples) {
  GDALAllRegister();
  std::vector<ShiftGridPart> parts;
  for (int page = 1;; ++page) {
    const std::string name = "GTIFF_DIR:" + std::to_string(page) + ":" + path;
    CPLPushErrorHandler(CPLQuietErrorHandler);
    const GDALDatasetUniquePtr data(GDALDataset::Open(name.c_str(), GDAL_OF_RASTER));
    CPLPopErrorHandler();
    if (!data) break;
    double t[6];
    data->GetGeoTransform(t);
    ShiftGridPart part;
    part.columns = data->GetRasterXSize();
    part.rows = data->GetRasterYSize();
    part.northStep = -t[5] * kRadPerDeg;
    part.eastStep = t[1] * kRadPerDeg;
    part.south = (t[3] + (part.rows - 0.5) * t[5]) * kRadPerDeg;
    part.west = (t[0] + 0.5 * t[1]) * kRadPerDeg;
    const auto width = static_cast<std::size_t>(part.columns);
    const std::size_t components = samples.size();
    part.values.resize(width * static_cast<std::size_t>(part.rows) * components);
    std::size_t k = 0;
    for (const char* sample : samples) {
      int band = 1;
      while (data->GetRasterBand(band)->GetDescription() != std::string(sample))
        if (++band > data->GetRasterCount()) throw std::runtime_error(path + ": no " + sample);
      std::vector<float> line(width);
      for (int row = 0; row < part.rows; ++row) {
        if (data->GetRasterBand(band)->RasterIO(GF_Read, 0, part.rows - 1 - row, part.columns, 1,
                                                line.data(), part.columns, 1, GDT_Float32, 0,
                                                0) != CE_None)
          throw std::runtime_error(path);
        for (std::size_t i = 0; i < width; ++i)
          part.values[(static_cast<std::size_t>(row) * width + i) * components + k] = line[i];
      }
      ++k;
    }
    parts.push_back(std::move(part));
  }
  if (parts.empty()) throw std::runtime_error(path);
  const auto north = [](const ShiftGridPart& p) { return p.south + (p.rows - 1) * p.northStep; };
  const auto east = [](const ShiftGridPart& p) { return p.west + (p.columns - 1) * p.eastStep; };
  constexpr double kRounding = 1e-9;
  for (ShiftGridPart& inner : parts)
    for (const ShiftGridPart& outer : parts)
      inner.level += &inner != &outer && inner.south > outer.south - kRounding &&
                     inner.west > outer.west - kRounding &&
                     north(inner) < north(outer) + kRounding &&
                     east(inner) < east(outer) + kRounding &&
                     inner.northStep < outer.northStep * (1 - kRounding);
  return parts;
}

/// "2010-09-04T00:00:00Z" as a decimal year.
inline double YearOf(const std::string& date) {
  return DecimalYear(std::stoi(date.substr(0, 4)), std::stoi(date.substr(5, 2)),
                     std::stoi(date.substr(8, 2)))
      .value();
}

inline GeographicExtent ExtentOf(const nlohmann::json& extent) {
  const auto box = extent.at("parameters").at("bbox").get<std::vector<double>>();
  return {box[1] * kRadPerDeg, box[0] * kRadPerDeg, box[3] * kRadPerDeg, box[2] * kRadPerDeg};
}

inline TimeFunction TimeFunctionOf(const nlohmann::json& json) {
  const std::string type = json.at("type");
  const nlohmann::json parameters = json.value("parameters", nlohmann::json::object());
  const auto date = [&](const char* key) { return YearOf(parameters.at(key)); };
  TimeFunction f;
  using enum TimeFunctionKind;
  if (type == "constant") {
    f.kind = constant;
  } else if (type == "velocity") {
    f.kind = velocity;
    f.epoch = date("reference_epoch");
  } else if (type == "step" || type == "reverse_step") {
    f.kind = type == "step" ? step : reverseStep;
    f.epoch = date("step_epoch");
  } else if (type == "exponential") {
    f.kind = exponential;
    f.epoch = date("reference_epoch");
    if (parameters.contains("end_epoch")) f.end = date("end_epoch");
    f.relaxation = parameters.at("relaxation_constant");
    f.beforeFactor = parameters.at("before_scale_factor");
    f.initialFactor = parameters.at("initial_scale_factor");
    f.finalFactor = parameters.at("final_scale_factor");
  } else {
    f.kind = piecewise;
    const auto beyond = [&](const char* key) {
      const std::string text = parameters.at(key);
      return text == "zero"       ? BeyondPoints::zero
             : text == "constant" ? BeyondPoints::constant
                                  : BeyondPoints::linear;
    };
    f.before = beyond("before_first");
    f.after = beyond("after_last");
    for (const auto& point : parameters.at("model"))
      f.points.push_back({YearOf(point.at("epoch")), point.at("scale_factor")});
  }
  return f;
}

/// A master file and the grids beside it.
inline DeformationModelDefinition ReadModel(const std::string& path) {
  const auto json = nlohmann::json::parse(std::ifstream(path));
  const std::string folder = path.substr(0, path.rfind('/') + 1);
  DeformationModelDefinition model;
  model.ellipsoid = MakeEllipsoid(6378137, 298.257222101);
  model.extent = ExtentOf(json.at("extent"));
  model.years = {YearOf(json.at("time_extent").at("first")),
                 YearOf(json.at("time_extent").at("last"))};
  model.angles = json.value("horizontal_offset_unit", "metre") == std::string("degree");
  if (model.angles) model.horizontalUnit = kRadPerDeg;
  if (json.value("horizontal_offset_method", "addition") == std::string("geocentric"))
    model.method = HorizontalMethod::geocentric;
  for (const auto& given : json.at("components")) {
    DeformationComponent component;
    const std::string type = given.at("displacement_type");
    const auto& spatial = given.at("spatial_model");
    const std::string file = folder + spatial.at("filename").get<std::string>();
    if (type == "vertical") {
      component.displacement = ShiftComponents::vertical;
      component.parts = ReadParts(file, {"vertical_offset"});
    } else if (type == "horizontal") {
      component.displacement = ShiftComponents::horizontal;
      component.parts = ReadParts(file, {"north_offset", "east_offset"});
    } else {
      component.displacement = ShiftComponents::horizontalAndVertical;
      component.parts = ReadParts(file, {"north_offset", "east_offset", "vertical_offset"});
    }
    if (spatial.at("interpolation_method") == "geocentric_bilinear")
      component.interpolation = DisplacementInterpolation::geocentricBilinear;
    component.extent = ExtentOf(given.at("extent"));
    component.time = TimeFunctionOf(given.at("time_function"));
    model.components.push_back(std::move(component));
  }
  return model;
}

}  // namespace zel_cs::geomath
