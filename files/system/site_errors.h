#pragma once

#include "geomath/local/local_to_grid.h"
#include "geomath/local/site_covariance.h"

namespace geomath_files {

/// What a system file says of the uncertainty of its site's parameters.
struct SiteErrors {
  zel_cs::geomath::SiteCovariance covariance;  ///< zeros in what is not known
  /// The parts that it is known of, as LocalToGrid::mode counts them.
  unsigned char parts = zel_cs::geomath::LocalToGrid::kNotSetUp;
};

}  // namespace geomath_files
