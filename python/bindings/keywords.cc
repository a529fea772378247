#include "python/bindings/keywords.h"

#include "files/system/system_sections.h"
#include "files/words/user_error.h"
#include "python/bindings/objects.h"

using namespace zel_cs::geomath;
using nlohmann::json;

namespace geomath_python {
namespace {

json ValueOf(const py::handle& value) {
  if (PyFloat_Check(value.ptr()) || (PyLong_Check(value.ptr()) && !PyBool_Check(value.ptr())))
    return value.cast<double>();
  if (!py::isinstance<py::str>(value) && !PyBool_Check(value.ptr()) &&
      PyNumber_Check(value.ptr())) {
    const auto number = py::reinterpret_steal<py::object>(PyNumber_Float(value.ptr()));
    if (number) return number.cast<double>();
    PyErr_Clear();
  }
  return std::string(py::isinstance<py::str>(value) ? py::str(value) : py::repr(value));
}

}  // namespace

json SectionOf(const py::dict& keywords) {
  json section = json::object();
  for (const auto& [key, value] : keywords)
    if (!value.is_none()) section[std::string(py::str(key))] = ValueOf(value);
  return section;
}

json SectionOf(std::initializer_list<std::pair<const char*, py::object>> keywords) {
  json section = json::object();
  for (const auto& [key, value] : keywords)
    if (!value.is_none()) section[key] = ValueOf(value);
  return section;
}

std::shared_ptr<Ellipsoid> EllipsoidFrom(const py::object& given) {
  using namespace geomath_files;
  if (py::isinstance<Ellipsoid>(given)) return given.cast<std::shared_ptr<Ellipsoid>>();
  if (!py::isinstance<py::str>(given))
    throw py::type_error("ellipsoid: must be an Ellipsoid or the name of one");
  const json section = SectionOf({{"ellipsoid", given}});
  return std::make_shared<Ellipsoid>(
      ReadEllipsoid(JsonSection("Ellipsoid", "", section, kEllipsoidKeys)));
}

std::string PathOf(const py::object& path) {
  if (path.is_none()) return {};
  auto name = py::module_::import("os").attr("fsencode")(path).cast<std::string>();
  if (name.find('\0') != std::string::npos) throw py::value_error("path: holds a null character");
  return name;
}

py::str TextOf(const std::string& text) {
  PyObject* const decoded =
      PyUnicode_DecodeUTF8(text.data(), static_cast<py::ssize_t>(text.size()), "surrogateescape");
  if (!decoded) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(decoded);
}

void Warn(const std::string& text) {
  if (!text.empty() && PyErr_WarnFormat(PyExc_UserWarning, 1, "%U", TextOf(text).ptr()) != 0)
    throw py::error_already_set();
}

std::string NumberText(double value) { return py::repr(py::float_(value)); }

}  // namespace geomath_python
