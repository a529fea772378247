#include "geomath/magnetic/magnetic_model.h"

#include <new>
#include <span>
#include <utility>

#include "geomath/magnetic/wmm_tables.h"
#include "geomath/platform/decimal_year.h"

namespace zel_cs::geomath {
namespace {

/// A model that the library carries; all of them are of degree 12.
struct BuiltIn {
  const char* name;  // short enough to need no memory of its own
  double epoch;
  int released[3];  // year, month, day
  std::span<const GaussTerm> (*terms)();
};

constexpr BuiltIn kBuiltIn[] = {
    {kWmm2010Name, kWmm2010Epoch, {2009, 11, 20}, Wmm2010Terms},
    {"WMM-2015v2", 2015, {2018, 9, 18}, Wmm2015v2Terms},
    {"WMM-2020", 2020, {2019, 12, 10}, Wmm2020Terms},
    {"WMM-2025", 2025, {2024, 11, 13}, Wmm2025Terms},
};

/// The last row whose epoch is not after the date, else the first.
template <class Row>
const Row& OfYear(std::span<const Row> rows, double decimalYear) {
  const Row* of = rows.data();
  for (const Row& row : rows)
    if (row.epoch <= decimalYear) of = &row;
  return *of;
}

std::unique_ptr<WMMtype_MagneticModel> ModelOf(const BuiltIn& row) noexcept {
  auto model = AllocateMagneticModel(kWmm2010Degree);
  if (!model) return nullptr;
  model->modelName = row.name;
  model->epoch = row.epoch;
  model->coefficientFileEndDate = row.epoch + kModelYears;
  const auto [year, month, day] = row.released;
  model->editionDate = DecimalYear(year, month, day).value_or(0);
  for (const GaussTerm& term : row.terms()) StoreTerm(*model, term);
  return model;
}

}  // namespace

std::unique_ptr<WMMtype_MagneticModel> AllocateMagneticModel(int degree) noexcept {
  try {
    auto model = std::make_unique<WMMtype_MagneticModel>();
    for (auto* terms : {&model->g, &model->h, &model->gDot, &model->hDot})
      terms->resize(TermCount(degree));
    model->nMax = model->nMaxSecVar = degree;
    return model;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

bool StoreTerm(WMMtype_MagneticModel& model, const GaussTerm& term) noexcept {
  if (term.n < 1 || term.n > model.nMax || term.m < 0 || term.m > term.n) return false;
  const std::size_t index = TermIndex(term.n, term.m);
  model.g[index] = term.g;
  model.h[index] = term.h;
  model.gDot[index] = term.gDot;
  model.hDot[index] = term.hDot;
  return true;
}

std::unique_ptr<WMMtype_MagneticModel> Wmm2010Model() noexcept { return ModelOf(kBuiltIn[0]); }

const WMMtype_MagneticModel& ModelOfYear(std::span<const WMMtype_MagneticModel> models,
                                         double decimalYear) noexcept {
  return OfYear(models, decimalYear);
}

MagneticModelSeries BuiltInMagneticModels() {
  MagneticModelSeries models;
  for (const BuiltIn& row : kBuiltIn) {
    auto model = ModelOf(row);
    if (!model) throw std::bad_alloc();
    models.push_back(std::move(*model));
  }
  return models;
}

std::unique_ptr<WMMtype_MagneticModel> BuiltInMagneticModel(double decimalYear) noexcept {
  return ModelOf(OfYear<BuiltIn>(kBuiltIn, decimalYear));
}

}  // namespace zel_cs::geomath
