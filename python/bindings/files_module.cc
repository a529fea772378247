#include <pybind11/stl.h>

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

}  // namespace

// What of the package stands on GDAL and PROJ. The core, _geomath, imports it when it needs it.
PYBIND11_MODULE(_files, module) {
  module.def("raster_reader", &Reader, "The reader of rasters, for the core of the package.");
  module.def("epsg_system", &EpsgSystemText, py::arg("code"), py::kw_only(), py::arg("datum"),
             py::arg("operation"), py::arg("near"), py::arg("grids"), py::arg("from_frame"),
             py::arg("to_frame"), "A system file, as text, of a code of the EPSG registry.");
}
