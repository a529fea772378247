#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "files/models/geoid_file.h"
#include "js/bindings/objects.h"

/// There is no file system: files are bytes that the caller offers under the names by which a system
/// file, or a reader of the library, asks for them.
namespace geomath_js {

/// The files of one call: an object of names with the places of their bytes.
class OfferedFiles {
 public:
  explicit OfferedFiles(const json& places);
  ~OfferedFiles();
  OfferedFiles(const OfferedFiles&) = delete;
  OfferedFiles& operator=(const OfferedFiles&) = delete;
};

/// The bytes of a file. Throws UserError when it was not offered.
std::string_view OfferedFile(const std::string& name);

/// The geoid of a GTX grid (NOAA VDatum): south, west and steps in degrees, rows and columns, heights
/// from the south, all with the most significant byte first; −88.8888 is a hole.
std::shared_ptr<GeoidObject> GtxGeoid(const std::string& file, const std::string& interpolation);

/// That of a system that was read here, for objects that outlive the system.
std::shared_ptr<GeoidObject> SharedGeoid(const geomath_files::LoadedGeoid& geoid);

}  // namespace geomath_js
