#include "files/epsg/frame_operation.h"

#include <fmt/format.h>

#include "files/epsg/national_frames.h"
#include "files/epsg/projjson.h"
#include "geomath/frame/frame_change.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

void AddStep(CandidateOperation& operation, OperationStep step,
             std::optional<StepFile> file = std::nullopt) {
  step.known = step.dated = true;
  operation.steps.push_back(std::move(step));
  operation.files.push_back(std::move(file));
}

// A motion is published from its epoch to the date.
void AddMotion(CandidateOperation& operation, const GridFolders& folders, const char* model,
               bool toEpoch) {
  OperationStep step;
  step.method = "deformation model";
  step.inverse = toEpoch;
  step.grids = {{model}};
  const auto found = folders.Find(model);
  AddStep(operation, std::move(step), found ? std::optional(StepFile{found->path}) : std::nullopt);
}

std::string NameOf(const FrameChange& change, const NationalFrame& from, const NationalFrame& to) {
  std::string name = fmt::format("{} to {}", FrameName(from.frame), FrameName(to.frame));
  const char* joint = " by ";
  for (const FrameStep& step : change.Steps()) {
    name +=
        fmt::format("{}{}{}", joint, step.inverse ? "inverse of " : "", step.transformation->code);
    joint = ", ";
  }
  for (const NationalFrame& each : {from, to})
    if (each.remark) name += fmt::format(" ({})", each.remark);
  return name;
}

}  // namespace

std::optional<CandidateOperation> FrameOperation(const EpsgRegistry& registry,
                                                 const GridFolders& folders,
                                                 const std::string& source,
                                                 const std::string& target) {
  const RegisteredCrs &here = registry.Crs(source), &there = registry.Crs(target);
  const auto from = NationalFrameOf(here.name), to = NationalFrameOf(there.name);
  if (!from || !to) return std::nullopt;
  const auto change = FrameChange::Make(from->frame, to->frame);
  if (!change) return std::nullopt;
  CandidateOperation operation;
  operation.target = target;
  operation.operation.name = NameOf(*change, *from, *to);
  const bool smaller = here.area.Surface() < there.area.Surface();
  operation.operation.area = smaller ? here.area : there.area;
  operation.operation.areaName = smaller ? here.name : there.name;
  if (from->model) AddMotion(operation, folders, from->model, false);
  OperationStep step;
  step.method = "published parameters between frames";
  step.space = ShiftSpace::geocentric;
  step.entry["frame"] = {{"from", FrameName(from->frame)}, {"to", FrameName(to->frame)}};
  step.source = EllipsoidOf(here.document);
  step.target = EllipsoidOf(there.document);
  AddStep(operation, std::move(step));
  if (to->model) AddMotion(operation, folders, to->model, true);
  return operation;
}

}  // namespace geomath_files
