#pragma once

#include <memory>
#include <string>
#include <vector>

#include "bench/accuracy/exact.h"
#include "geomath/proj/geo_proj.h"

/// Points at a certain distance from the centre of a projection. The first half of them stands on
/// the outer edge, where most errors are largest, the rest is spread over the band.
struct Band {
  std::string label;
  std::vector<exact::Geographic> points;  // each a pair of doubles exactly
};

/// A projection of ours, its definition in extended precision, and where the two are compared.
struct Subject {
  std::string name;
  std::shared_ptr<zel_cs::geomath::TGeoProj> projection;
  exact::Projection reference;
  std::vector<Band> bands;
  std::size_t inUse;         // so many bands from the first make up the domain of use
  std::string projPipeline;  // PROJ's definition of the reference, or empty
};

struct Family {
  std::string title, text;
  std::vector<Subject> subjects;
};

std::vector<Family> Families();
