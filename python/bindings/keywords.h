#pragma once

#include <pybind11/pybind11.h>

#include <initializer_list>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "geomath/base/ellipsoid.h"

namespace geomath_python {

namespace py = pybind11;

/// Keyword arguments as a section of a system file has them, so that one reader serves both and
/// complains in the same words. Arguments that are None are left out.
nlohmann::json SectionOf(const py::dict& keywords);
nlohmann::json SectionOf(std::initializer_list<std::pair<const char*, py::object>> keywords);

/// An Ellipsoid, or the name of one.
std::shared_ptr<zel_cs::geomath::Ellipsoid> EllipsoidFrom(const py::object& given);

/// A path as the file system spells it; empty for None. Throws ValueError for one that no system has.
std::string PathOf(const py::object& path);

/// A text that may hold a path: bytes that are no UTF-8 become what Python's paths have for them.
py::str TextOf(const std::string& text);

/// Gives a text that is not empty as a UserWarning.
void Warn(const std::string& text);

/// A number as Python writes it, with all its digits.
std::string NumberText(double value);

}  // namespace geomath_python
