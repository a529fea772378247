#include "geomath/magnetic/magnetic_declination.h"

#include <cmath>
#include <memory>
#include <mutex>
#include <new>

#include "geomath/magnetic/coefficient_file.h"
#include "geomath/magnetic/decimal_year.h"
#include "geomath/magnetic/magnetic_field.h"
#include "geomath/platform/zel_logging.h"

namespace zel_cs::geomath {
namespace {

// Messages name this file and these lines whatever the source looks like.
constexpr const char* kLogFile = "MagneticDeclination";
constexpr int kModelEndedLine = 88;
constexpr int kBadDateLine = 124;
constexpr int kNoMemoryLine = 0;
constexpr const char* kNoMemoryText = "\nError allocating in WMM_AllocateModelMemory.\n";

constexpr int kLastYear = 2015;  // of the built-in model

std::mutex initialization;

void Log(int line, const char* text = "") { zel_logging::zel_err_log(kLogFile, line, text); }

double YearOf(const SYSTEMTIME& date) {
  if (const auto year = DecimalYear(date.wYear, date.wMonth, date.wDay)) return *year;
  Log(kBadDateLine);
  return date.wYear;
}

}  // namespace

zel_vector<zel_vector<double>> TMagneticDeclination::defaultMagModel_;
bool TMagneticDeclination::defaultMagModelInitialized_ = false;

TMagneticDeclination::TMagneticDeclination(const char* path) : path_(path) {
  const std::lock_guard lock(initialization);
  if (!defaultMagModelInitialized_) initDefaultMagneticModelVector();
}

void TMagneticDeclination::initDefaultMagneticModelVector() {
  try {
    zel_vector<zel_vector<double>> rows;
    for (const GaussTerm& t : Wmm2010Terms())
      rows.push_back({double(t.n), double(t.m), t.g, t.h, t.gDot, t.hDot});
    defaultMagModel_ = std::move(rows);
    defaultMagModelInitialized_ = true;
  } catch (const std::bad_alloc&) {
    // The table stays empty and the next object tries again.
  }
}

bool TMagneticDeclination::loadDefaultMagModels(WMMtype_MagneticModel** out) const {
  auto model = defaultMagModelInitialized_ ? AllocateMagneticModel(kWmm2010Degree) : nullptr;
  if (!model) return false;
  model->modelName = kWmm2010Name;
  model->epoch = kWmm2010Epoch;
  for (const auto& row : defaultMagModel_)
    StoreTerm(*model, {int(row[0]), int(row[1]), row[2], row[3], row[4], row[5]});
  model->coefficientFileEndDate = model->epoch + kModelYears;
  *out = model.release();
  return true;
}

bool TMagneticDeclination::computeMagneticDeclination(const float& lat, const float& lon,
                                                      const float& height, const SYSTEMTIME& date,
                                                      float& decl, float& incl, float& total) {
  std::unique_ptr<WMMtype_MagneticModel> model = ReadCoefficientFile(path_);
  if (!model) {
    if (date.wYear > kLastYear) Log(kModelEndedLine);
    WMMtype_MagneticModel* builtIn = nullptr;
    if (!loadDefaultMagModels(&builtIn)) {
      Log(kNoMemoryLine, kNoMemoryText);
      return false;
    }
    model.reset(builtIn);
  }

  const double year = YearOf(date);
  try {
    const MagneticElements field = MagneticField(*model, year).At(lat, lon, height).field;
    decl = static_cast<float>(field.declination);
    incl = static_cast<float>(field.inclination);
    total = static_cast<float>(std::sqrt(field.z * field.z + field.h * field.h));
    return true;
  } catch (const std::bad_alloc&) {
    Log(kNoMemoryLine, kNoMemoryText);
    return false;
  }
}

}  // namespace zel_cs::geomath
