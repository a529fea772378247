#pragma once

#include <ogrsf_frmts.h>

#include <string>

#include "files/gdal/checked_files.h"
#include "files/words/output_file.h"

namespace geomath_files {

/// A file of layers in a format of GDAL/OGR, which stands in its place when it is whole and not
/// before. Features are written in transactions where the format has them.
class OgrOutput {
 public:
  /// Throws UserError, also for a driver that this GDAL does not have.
  OgrOutput(const std::string& path, const std::string& driver,
            const char* const* options = nullptr);
  ~OgrOutput();
  OgrOutput(const OgrOutput&) = delete;
  OgrOutput& operator=(const OgrOutput&) = delete;

  const std::string& Name() const { return file_.Name(); }
  GDALDataset& Dataset() { return *dataset_; }
  /// Throws UserError when that fails.
  OGRLayer& CreateLayer(const std::string& name, const OGRSpatialReference* crs,
                        OGRwkbGeometryType type, const char* const* options = nullptr);
  void CreateFeature(OGRLayer& layer, OGRFeature& feature);
  /// Writes out what is held back and puts the file in its place. Throws UserError when that fails.
  void Close();

 private:
  /// With what the system said, or GDAL where it said nothing.
  [[noreturn]] void Complain(const std::string& gdal = CPLGetLastErrorMsg()) const;
  void StartTransaction();
  void Commit();

  OutputFile file_;
  CheckedFiles written_;
  GDALDatasetUniquePtr dataset_;
  int inTransaction_ = 0;  // features
  bool hasTransaction_ = false;
};

/// Whether a driver looks at every write itself, and wants the locks of a file of the system.
bool ChecksItself(const std::string& driver);

}  // namespace geomath_files
