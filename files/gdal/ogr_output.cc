#include "files/gdal/ogr_output.h"

#include <fmt/format.h>

#include <utility>

#include "files/gdal/ogr.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"

namespace geomath_files {
namespace {

constexpr int kTransactionSize = 10000;  // features

}  // namespace

bool ChecksItself(const std::string& driver) { return driver == "GPKG"; }  // by SQLite

OgrOutput::OgrOutput(const std::string& path, const std::string& driver, const char* const* options)
    : file_(path) {
  PrepareOgr();
  RequireLocalPath(path);
  GDALDriver* its = GetGDALDriverManager()->GetDriverByName(driver.c_str());
  if (!its) throw UserError(fmt::format("{}: this GDAL has no {}", path, driver));
  const std::string target = ChecksItself(driver) ? file_.Path() : written_.NameFor(file_.Path());
  dataset_.reset(its->Create(target.c_str(), 0, 0, 0, GDT_Unknown, const_cast<char**>(options)));
  if (!dataset_) Complain();
}

OgrOutput::~OgrOutput() {
  if (dataset_ && hasTransaction_) dataset_->RollbackTransaction();
  const GdalErrors unheard;
  dataset_.reset();
}

void OgrOutput::Complain(const std::string& gdal) const {
  const std::string system = written_.Failure();
  const std::string& why = system.empty() ? gdal : system;
  throw UserError(file_.Name() + ": cannot be written" + (why.empty() ? "" : ": " + why));
}

OGRLayer& OgrOutput::CreateLayer(const std::string& name, const OGRSpatialReference* crs,
                                 OGRwkbGeometryType type, const char* const* options) {
  Commit();
  OGRLayer* layer = dataset_->CreateLayer(name.c_str(), const_cast<OGRSpatialReference*>(crs), type,
                                          const_cast<char**>(options));
  if (!layer) Complain();
  return *layer;
}

void OgrOutput::CreateFeature(OGRLayer& layer, OGRFeature& feature) {
  if (!hasTransaction_) StartTransaction();
  if (layer.CreateFeature(&feature) != OGRERR_NONE || !written_.Failure().empty()) Complain();
  if (++inTransaction_ == kTransactionSize) Commit();
}

void OgrOutput::Close() {
  Commit();
  const GdalErrors errors;
  dataset_.reset();
  if (!written_.Failure().empty()) Complain();
  if (!errors.First().empty()) Complain(errors.First());
  file_.Place();
}

void OgrOutput::StartTransaction() {
  inTransaction_ = 0;
  hasTransaction_ =
      dataset_->TestCapability(ODsCTransactions) && dataset_->StartTransaction() == OGRERR_NONE;
}

void OgrOutput::Commit() {
  if (!std::exchange(hasTransaction_, false)) return;
  if (dataset_->CommitTransaction() != OGRERR_NONE) Complain();
}

}  // namespace geomath_files
