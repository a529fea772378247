#pragma once

#include <ogrsf_frmts.h>

#include <string>

namespace geomath_tools {

/// Readies GDAL/OGR, once: registers its formats and keeps its messages off standard error.
void PrepareOgr();

/// The last complaint of GDAL/OGR as the end of a message: ": text", or nothing.
std::string OgrComplaint();

/// While it lives, hears the failures that GDAL tells in this thread.
class GdalErrors {
 public:
  GdalErrors();
  ~GdalErrors();
  GdalErrors(const GdalErrors&) = delete;
  GdalErrors& operator=(const GdalErrors&) = delete;

  /// The first one, or nothing.
  const std::string& First() const { return first_; }

 private:
  std::string first_;
};

}  // namespace geomath_tools
