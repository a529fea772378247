#include "geomath/magnetic/magnetic_declination.h"

#include <cmath>
#include <memory>
#include <new>

#include "geomath/magnetic/coefficient_file.h"
#include "geomath/platform/decimal_year.h"
#include "geomath/platform/zel_logging.h"

#if defined(_WIN32)
#if !defined(WIN32_LEAN_AND_MEAN)
#define WIN32_LEAN_AND_MEAN
#endif
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>
#endif

namespace zel_cs::geomath {
namespace {

// Messages name this file and these lines whatever the source looks like.
constexpr const char* kLogFile = "MagneticDeclination";
constexpr int kModelEndedLine = 88;
constexpr int kBadDateLine = 124;
constexpr int kNoMemoryLine = 0;
constexpr const char* kNoMemoryText = "\nError allocating in WMM_AllocateModelMemory.\n";

constexpr int kLastYear = 2015;  // of the built-in model

void Log(int line, const char* text = "") { zel_logging::zel_err_log(kLogFile, line, text); }

double YearOf(const SYSTEMTIME& date) {
  if (date.wMonth == 0) return date.wYear;
  if (const auto year = DecimalYear(date.wYear, date.wMonth, date.wDay)) return *year;
  Log(kBadDateLine);
  return date.wYear;
}

}  // namespace

zel_vector<zel_vector<double>> TMagneticDeclination::defaultMagModel_;
bool TMagneticDeclination::defaultMagModelInitialized_ = false;

TMagneticDeclination::TMagneticDeclination(const char* path) : path_(path) {
  initDefaultMagneticModelVector();
}

void TMagneticDeclination::initDefaultMagneticModelVector() {
  try {
    [[maybe_unused]] static const bool once = [] {
      zel_vector<zel_vector<double>> rows;
      for (const GaussTerm& t : Wmm2010Terms())
        rows.push_back({double(t.n), double(t.m), t.g, t.h, t.gDot, t.hDot});
      defaultMagModel_ = std::move(rows);
      return defaultMagModelInitialized_ = true;
    }();
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

// Never destroyed: a host's statics may ask in their destructors.
const MagneticField& TMagneticDeclination::builtInField() const {
  static const MagneticField& field = *[this] {
    WMMtype_MagneticModel* record = nullptr;
    if (!loadDefaultMagModels(&record)) throw std::bad_alloc();
    const std::unique_ptr<WMMtype_MagneticModel> model(record);
    return new MagneticField(*model, model->epoch);
  }();
  return field;
}

bool TMagneticDeclination::computeMagneticDeclination(const float& lat, const float& lon,
                                                      const float& height, const SYSTEMTIME& date,
                                                      float& decl, float& incl, float& total) {
  const auto elementsOf = [&](const MagneticField& field) {
    return field.At(lat, lon, height, YearOf(date)).field;
  };
  try {
    MagneticElements at;
    // Reading fails by an exception inside, which costs more than a field.
    if (const auto model = path_ ? ReadCoefficientFile(path_) : nullptr) {
      at = elementsOf(MagneticField(*model, model->epoch));
    } else {
      if (date.wYear > kLastYear) Log(kModelEndedLine);
      at = elementsOf(builtInField());
    }
    decl = static_cast<float>(at.declination);
    incl = static_cast<float>(at.inclination);
    total = static_cast<float>(std::sqrt(at.z * at.z + at.h * at.h));
    return true;
  } catch (const std::bad_alloc&) {
    Log(kNoMemoryLine, kNoMemoryText);
    return false;
  }
}

}  // namespace zel_cs::geomath
