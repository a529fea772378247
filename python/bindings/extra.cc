#include "python/bindings/extra.h"

#include <fmt/format.h>

#include "files/models/raster_reader.h"
#include "files/words/user_error.h"

namespace py = pybind11;
using namespace geomath_files;

namespace geomath_python {
namespace {

// Imports the extra part at the first raster. Called with or without the interpreter's lock.
class ExtraRasterReader : public RasterReader {
 public:
  GeoidRaster ReadGeoid(const std::string& path) const override {
    return Reader(path).ReadGeoid(path);
  }

  std::unique_ptr<zel_cs::geomath::CoordinateShift> ParseShift(
      const std::string& bytes, const ShiftChoice& choice) const override {
    return Reader(choice.file).ParseShift(bytes, choice);
  }

  std::vector<zel_cs::geomath::ShiftGridPart> ParseDisplacements(
      const std::string& bytes, const std::string& file,
      const DisplacementSamples& samples) const override {
    return Reader(file).ParseDisplacements(bytes, file, samples);
  }

  std::optional<zel_cs::geomath::ShiftSpace> SpaceOf(const std::string& crs) const override {
    try {
      return Reader(crs).SpaceOf(crs);
    } catch (const UserError&) {
      return {};  // the caller then asks for the kind of coordinates
    }
  }

  std::optional<zel_cs::geomath::Ellipsoid> EllipsoidOf(const std::string& crs) const override {
    return Reader(crs).EllipsoidOf(crs);
  }

 private:
  static const RasterReader& Reader(const std::string& subject) {
    const py::gil_scoped_acquire locked;
    const py::capsule reader = ImportExtra(subject).attr("raster_reader")();
    return *reader.get_pointer<const RasterReader>();
  }
};

}  // namespace

py::module_ ImportExtra(const std::string& subject) {
  try {
    return py::module_::import("geomath._files");
  } catch (py::error_already_set& error) {
    if (!error.matches(PyExc_ImportError)) throw;
    throw UserError(
        fmt::format("{}: needs the part of the package that stands on GDAL and PROJ, which is not "
                    "here: {}",
                    subject, std::string(py::str(error.value()))));
  }
}

void ReadRastersByExtra() {
  static const ExtraRasterReader reader;
  SetRasterReader(&reader);
}

}  // namespace geomath_python
