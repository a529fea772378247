#include "files/models/magnetic_file.h"
#include "geomath/base/angle.h"
#include "geomath/magnetic/magnetic_field.h"
#include "js/bindings/offered_files.h"

using namespace zel_cs::geomath;
using namespace geomath_files;

namespace geomath_js {
namespace {

enum FieldOperation { kElements, kYearlyChange };

/// One model, or several of years that follow each other. Never empty.
class ModelObject : public Object {
 public:
  explicit ModelObject(MagneticModelSeries of) : parts(std::move(of)) {}
  void Convert(int, const Block&) const override {}
  json Describe() const override {
    const std::string &first = parts.front().modelName, &last = parts.back().modelName;
    return {{"name", first == last ? first : first + " to " + last},
            {"epoch", parts.front().epoch},
            {"end", parts.back().coefficientFileEndDate}};
  }

  MagneticModelSeries parts;
};

// Elements in the order of JavaScript's object.
constexpr double MagneticElements::*kFields[] = {
    &MagneticElements::x,           &MagneticElements::y,
    &MagneticElements::z,           &MagneticElements::h,
    &MagneticElements::f,           &MagneticElements::declination,
    &MagneticElements::inclination, &MagneticElements::gridVariation};
constexpr std::size_t kFirstAngle = 5;

class FieldObject : public Object {
 public:
  FieldObject(const WMMtype_MagneticModel& model, double year, std::string doubt)
      : field_(model, year), name_(model.modelName), warning_(std::move(doubt)) {}

  void Convert(int operation, const Block& block) const override {
    TakeDegrees(block, 0, AngleKind::latitude);
    TakeDegrees(block, 1, AngleKind::longitude);
    Multiply(block, 2, 1e-3);  // to kilometres
    const auto part = operation == kElements ? &MagneticPoint::field : &MagneticPoint::yearlyChange;
    constexpr std::size_t kPart = 64;  // points whose results stay in the cache
    MagneticPoint found[kPart];
    auto& c = block.columns;
    for (std::size_t first = 0; first < block.count; first += kPart) {
      const std::size_t n = std::min(kPart, block.count - first);
      field_.AtBatch(c[0] + first, c[1] + first, c[2] + first, n, found);
      for (std::size_t k = 0; k < std::size(kFields); ++k)
        for (std::size_t i = 0; i < n; ++i) c[k][first + i] = found[i].*part.*kFields[k];
    }
    for (std::size_t k = kFirstAngle; k < std::size(kFields) && !block.degrees; ++k)
      Multiply(block, k, kRadPerDeg);
  }
  json Describe() const override {
    return {{"model", name_}, {"decimalYear", field_.DecimalYear()}, {"warning", warning_}};
  }

 private:
  MagneticField field_;
  std::string name_, warning_;
};

}  // namespace

std::shared_ptr<Object> MakeMagneticModel(const json& given) {
  const OfferedFiles files(given.at("files"));
  return std::make_shared<ModelObject>(OpenMagneticModels(given.value("name", "")));
}

std::shared_ptr<Object> MakeMagneticField(const json& given) {
  const auto model = PartAt<ModelObject>(given, "model");
  const MagneticModelSeries& parts = model->parts;
  const json& date = given.at("date");
  const double year =
      date.is_number() ? date.get<double>() : YearOfDate(date.get<std::string>(), "date");
  const std::string written = date.is_number() ? date.dump() : date.get<std::string>();
  return std::make_shared<FieldObject>(ModelOfYear(parts, year), year,
                                       YearsWarning(parts, year, written));
}

}  // namespace geomath_js
