#pragma once

#include <string>

#include "files/site/site_judgement.h"

namespace geomath_files {

/// Drawings of a judged site as SVG, north up: the radius within which positions are certain (95 %)
/// as shading, with the error ellipses of the control points enlarged; and the height plane as
/// shading from low to high with the heights' residuals. Empty where there is nothing to draw.
std::string UncertaintyMap(const SiteSolution& solution, const SiteJudgement& judgement);
std::string HeightPlan(const SiteSolution& solution, const SiteJudgement& judgement);

}  // namespace geomath_files
