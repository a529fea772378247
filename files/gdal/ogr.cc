#include "files/gdal/ogr.h"

#include <cpl_error.h>

namespace geomath_tools {

void PrepareOgr() {
  static const bool ready = [] {
    CPLSetErrorHandler(CPLQuietErrorHandler);
    GDALAllRegister();
    return true;
  }();
  static_cast<void>(ready);
  CPLErrorReset();
}

std::string OgrComplaint() {
  const std::string text = CPLGetLastErrorMsg();
  return text.empty() ? text : ": " + text;
}

GdalErrors::GdalErrors() {
  CPLPushErrorHandlerEx(
      [](CPLErr kind, CPLErrorNum, const char* text) {
        auto& first = *static_cast<std::string*>(CPLGetErrorHandlerUserData());
        if (kind >= CE_Failure && first.empty()) first = text;
      },
      &first_);
}

GdalErrors::~GdalErrors() { CPLPopErrorHandler(); }

}  // namespace geomath_tools
