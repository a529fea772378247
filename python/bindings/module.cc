#include <pybind11/pybind11.h>

#include "files/words/user_error.h"
#include "python/bindings/adjustment.h"
#include "python/bindings/extra.h"
#include "python/bindings/keywords.h"
#include "python/bindings/objects.h"

namespace py = pybind11;
using namespace geomath_python;

// The compiled part of the package: python/geomath/__init__.py gives its names to the user.
PYBIND11_MODULE(_geomath, module) {
  py::options options;
  options.disable_function_signatures();  // each docstring has its own, in the words of Python

  static py::exception<geomath_files::UserError> error(module, "Error", PyExc_ValueError);
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      if (thrown) std::rethrow_exception(thrown);
    } catch (const geomath_files::UserError& reason) {
      PyErr_SetObject(error.ptr(), TextOf(reason.what()).ptr());
    }
  });
  error.attr("__module__") = "geomath";
  error.doc() =
      "What has to be put right before the work can go on: a description that makes no sense, a\n"
      "file that cannot be read, shapes that do not go together. The text says what, where, and\n"
      "what would be right, in the words of the geomath program. A point that cannot be converted\n"
      "is no error: it becomes NaN.";
  module.attr("__version__") = GEOMATH_VERSION;

  ReadRastersByExtra();
  BindEllipsoid(module);
  BindDatum(module);
  BindProjection(module);
  BindGeoid(module);
  BindGeodesic(module);
  BindShift(module);
  BindLocal(module);
  BindMagnetic(module);
  BindChain(module);
  BindAdjustment(module);
  BindCalibration(module);
  BindDesign(module);
}
