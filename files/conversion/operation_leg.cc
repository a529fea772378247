#include "files/conversion/operation_leg.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <span>

#include "files/epsg/operation_chooser.h"
#include "files/epsg/projjson.h"
#include "files/epsg/publisher_routes.h"
#include "files/system/system_document.h"
#include "files/words/user_error.h"

using namespace zel_cs::geomath;
using nlohmann::json;
using nlohmann::ordered_json;

namespace geomath_files {
namespace {

bool IsGeocentric(const OperationStep& step) { return step.space == ShiftSpace::geocentric; }

// A chain has two ellipsoids, and so one row of geocentric steps: the end of the part that begins with
// a step.
std::size_t EndOfPart(const std::vector<OperationStep>& steps, std::size_t begin) {
  const auto from = steps.begin() + static_cast<std::ptrdiff_t>(begin);
  const auto first = std::find_if(from, steps.end(), IsGeocentric);
  const auto behind = std::find_if_not(first, steps.end(), IsGeocentric);
  const bool last = std::none_of(behind, steps.end(), IsGeocentric);
  return static_cast<std::size_t>((last ? steps.end() : behind) - steps.begin());
}

// The steps from `begin` to `end` as a system file that leads the other way.
std::unique_ptr<CoordinateSystem> PartOf(const CandidateOperation& candidate, std::size_t begin,
                                         std::size_t end) {
  const auto steps = std::span(candidate.steps).subspan(begin, end - begin);
  const auto files = std::span(candidate.files).subspan(begin, end - begin);
  // Steps of latitude and longitude do not look at the ellipsoid.
  const auto first = std::find_if(steps.begin(), steps.end(), IsGeocentric);
  const auto last = std::find_if(steps.rbegin(), steps.rend(), IsGeocentric);
  const bool any = first != steps.end();
  const Ellipsoid source = any ? first->source : MakeEllipsoid(kWgs84A, kWgs84InvF);
  const Ellipsoid target = any ? last->target : source;
  const auto entries = EntriesOf(steps, files, source, target, "");
  if (!entries) throw UserError(candidate.Title() + ": its steps stand on too many ellipsoids");
  json document = {{"local", EllipsoidFigures(source)}, {"shifts", entries->shifts}};
  if (entries->twoEllipsoids) {
    document["global"] = EllipsoidFigures(target);
    document["datum"] = SevenParameters{}.Section();
  }
  return MakeSystem(document, candidate.Title(), ProjectionNeed::optional);
}

// Runs parts one after the other; the first step that fails counts.
template <class Run>
void RunParts(std::size_t parts, double* l, std::size_t count, ChainStep* failed, Run run) {
  if (parts == 0) {
    for (std::size_t i = 0; i < count; ++i)
      failed[i] = l[i] - l[i] == 0 ? ChainStep::none : ChainStep::input;
    return;
  }
  run(0, failed);
  if (parts == 1) return;
  std::array<ChainStep, OperationLeg::kMostPoints> later;
  for (std::size_t part = 1; part < parts; ++part) {
    run(part, later.data());
    for (std::size_t i = 0; i < count; ++i)
      if (failed[i] == ChainStep::none) failed[i] = later[i];
  }
}

}  // namespace

OperationLeg::OperationLeg(const EpsgRegistry& registry, const CandidateOperation& candidate)
    : title_(fmt::format("{}, {}", candidate.Title(), candidate.Accuracy())),
      accuracy_(candidate.operation.accuracy),
      area_(candidate.operation.area),
      hasGrid_(candidate.HasGrid()),
      changesHeights_(std::any_of(candidate.steps.begin(), candidate.steps.end(), IsGeocentric)),
      files_(candidate.Found()) {
  if (candidate.route) TakeRoute(registry, candidate);
  for (std::size_t begin = 0; begin < candidate.steps.size();) {
    const std::size_t end = EndOfPart(candidate.steps, begin);
    parts_.push_back({PartOf(candidate, begin, end)});
    begin = end;
  }
}

// From positions on the datum of the route to its plane, where it stands behind one, and by the route
// from there to positions of its target.
void OperationLeg::TakeRoute(const EpsgRegistry& registry, const CandidateOperation& candidate) {
  const PublisherRoute& route = *candidate.route;
  if (route.projection)
    parts_.push_back({MakeSystem(PlaneOfRoute(registry, route), candidate.Title()), false});
  const ordered_json sections = RouteSections(registry, route, *candidate.routeFile);
  parts_.push_back({MakeSystem(sections, candidate.Title(), ProjectionNeed::optional)});
  // What its publisher has defined outside of the grid serves there too.
  hasGrid_ = sections.at("shifts").at(0).value("outside", "") != "identity";
  if (!candidate.routeReversed) return;
  std::reverse(parts_.begin(), parts_.end());
  for (Part& part : parts_) part.toGlobal = !part.toGlobal;
}

bool OperationLeg::NeedsDates() const {
  return std::any_of(parts_.begin(), parts_.end(),
                     [](const Part& part) { return part.system->Chain().NeedsDates(); });
}

void OperationLeg::RunPart(const Part& part, bool inverse, double* b, double* l, double* h,
                           std::size_t count, PointDates dates, ChainStep* failed) {
  const CoordinateChain& chain = part.system->Chain();
  if (part.toGlobal != inverse)
    chain.ToGlobalDatedBatch(dates, b, l, h, count, 1, failed);
  else
    chain.ToLocalDatedBatch(dates, b, l, h, count, 1, failed);
}

void OperationLeg::Forward(double* b, double* l, double* h, std::size_t count, PointDates dates,
                           ChainStep* failed) const {
  RunParts(parts_.size(), l, count, failed, [&](std::size_t i, ChainStep* to) {
    RunPart(parts_[i], false, b, l, h, count, dates, to);
  });
}

void OperationLeg::Inverse(double* b, double* l, double* h, std::size_t count, PointDates dates,
                           ChainStep* failed) const {
  const std::size_t parts = parts_.size();
  RunParts(parts, l, count, failed, [&](std::size_t i, ChainStep* to) {
    RunPart(parts_[parts - 1 - i], true, b, l, h, count, dates, to);
  });
}

}  // namespace geomath_files
