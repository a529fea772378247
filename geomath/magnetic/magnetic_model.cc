#include "geomath/magnetic/magnetic_model.h"

#include <new>

namespace zel_cs::geomath {

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

std::unique_ptr<WMMtype_MagneticModel> Wmm2010Model() noexcept {
  auto model = AllocateMagneticModel(kWmm2010Degree);
  if (!model) return nullptr;
  model->modelName = kWmm2010Name;  // short enough to need no memory of its own
  model->epoch = kWmm2010Epoch;
  model->coefficientFileEndDate = kWmm2010Epoch + kModelYears;
  for (const GaussTerm& term : Wmm2010Terms()) StoreTerm(*model, term);
  return model;
}

}  // namespace zel_cs::geomath
