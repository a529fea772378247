#pragma once

#include <pybind11/pybind11.h>

#include <array>
#include <memory>
#include <string>

#include "files/site/site_judgement.h"

namespace geomath_python {

namespace py = pybind11;

/// The adjustment of a solved site; throws UserError for unknown names and for what is not determined.
std::shared_ptr<zel_cs::geomath::SiteAdjustment> Adjust(const geomath_files::SiteSolution& solution,
                                                        const std::string& model,
                                                        const std::string& heights, bool sigmaKnown,
                                                        const std::array<double, 3>& common,
                                                        bool robust);

/// The class that Adjust gives.
void BindAdjustment(py::module_& module);

}  // namespace geomath_python
