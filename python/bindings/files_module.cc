#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include "files/conversion/conversion.h"
#include "files/epsg/epsg_system.h"
#include "files/gdal/use_gdal.h"
#include "files/models/raster_reader.h"

namespace py = pybind11;
using namespace geomath_files;

namespace {

// Read by the core of the package, which may hold the library of files a second time.
py::capsule Reader() {
  UseGdal();
  return py::capsule(FindRasterReader());
}

std::string EpsgSystemText(const std::string& code, bool datum, const std::string& operation,
                           const std::optional<std::pair<double, double>>& near,
                           const std::vector<std::string>& grids, const std::string& fromFrame,
                           const std::string& toFrame) {
  UseGdal();  // grids are opened before they are named
  DatumWish wish;
  wish.none = !datum;
  wish.operation = operation;
  wish.grids = grids;
  wish.fromFrame = fromFrame;
  wish.toFrame = toFrame;
  if (near) wish.near = Position{near->first, near->second};
  const py::gil_scoped_release unlocked;
  return MakeEpsgSystem(code, wish).document.dump();
}

std::unique_ptr<Conversion> MakeConversion(const std::string& source, const std::string& target,
                                           const std::string& operation,
                                           const std::optional<std::pair<double, double>>& near,
                                           const std::vector<std::string>& grids) {
  UseGdal();
  ConversionWish wish;
  wish.operation = operation;
  wish.grids = grids;
  if (near) wish.near = Position{near->first, near->second};
  const py::gil_scoped_release unlocked;
  return std::make_unique<Conversion>(source, target, wish);
}

using Column = py::array_t<double, py::array::c_style>;

// In place, columns of one length.
void RunConversion(const Conversion& conversion, Column& a, Column& b, Column& c,
                   const std::optional<Column>& years, bool inverse) {
  const auto count = static_cast<std::size_t>(a.size());
  double *const first = a.mutable_data(), *const second = b.mutable_data();
  double* const third = c.mutable_data();
  const auto dates =
      years ? zel_cs::geomath::PointDates(years->data()) : zel_cs::geomath::PointDates();
  const py::gil_scoped_release unlocked;
  if (inverse)
    conversion.ToSource(first, second, third, count, nullptr, dates);
  else
    conversion.ToTarget(first, second, third, count, nullptr, dates);
}

bool IsGeographic(const ConversionEnd& end) { return end.Kind() == EndKind::geographic; }

void BindConversion(py::module_& module) {
  const auto kept = py::return_value_policy::copy;
  py::class_<Conversion>(module, "Conversion")
      .def(py::init(&MakeConversion), py::arg("source"), py::arg("target"), py::kw_only(),
           py::arg("operation"), py::arg("near"), py::arg("grids"))
      .def("run", &RunConversion, py::arg("a").noconvert(), py::arg("b").noconvert(),
           py::arg("c").noconvert(), py::arg("years").noconvert(), py::arg("inverse"))
      .def_property_readonly("needs_dates", &Conversion::NeedsDates)
      .def_property_readonly("operations", &Conversion::Operations, kept)
      .def_property_readonly("notes", &Conversion::Notes, kept)
      .def_property_readonly("source_geographic",
                             [](const Conversion& c) { return IsGeographic(c.Source()); })
      .def_property_readonly("target_geographic",
                             [](const Conversion& c) { return IsGeographic(c.Target()); })
      .def_property_readonly("source_title", [](const Conversion& c) { return c.Source().Title(); })
      .def_property_readonly("target_title",
                             [](const Conversion& c) { return c.Target().Title(); });
}

}  // namespace

// What of the package stands on GDAL and PROJ. The core, _geomath, imports it when it needs it.
PYBIND11_MODULE(_files, module) {
  module.def("raster_reader", &Reader, "The reader of rasters, for the core of the package.");
  module.def("epsg_system", &EpsgSystemText, py::arg("code"), py::kw_only(), py::arg("datum"),
             py::arg("operation"), py::arg("near"), py::arg("grids"), py::arg("from_frame"),
             py::arg("to_frame"), "A system file, as text, of a code of the EPSG registry.");
  BindConversion(module);
}
