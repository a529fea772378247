#include "tools/layer_run.h"

#include <fmt/format.h>

#include "files/words/user_error.h"
#include "tools/exit_status.h"
#include "tools/interrupt.h"
#include "tools/progress.h"

namespace geomath_files::program {

void RefuseForShapes(const PointOptions& options) {
  const auto refuse = [](bool given, const char* option) {
    if (given)
      throw UserError(
          fmt::format("{}: belongs to points; lines and polygons are converted "
                      "vertex by vertex and keep their columns",
                      option));
  };
  refuse(!options.columns.empty(), "--columns");
  refuse(!options.results.empty(), "--results");
  refuse(options.angles != "degrees", "--angles");
}

LayerJob LayerJobOf(const PointOptions& options) {
  LayerJob job;
  job.input = options.input;
  job.output = options.output;
  job.layer = options.layer;
  job.ignoreCrs = options.ignoreCrs;
  job.height = options.fixedHeight.value_or(0);
  return job;
}

int RunLayers(LayerJob job) {
  CatchInterrupts();
  Progress progress("features");
  job.tell = [&](const std::string& text) { progress.Print("geomath: " + text); };
  job.progress = [&](long long features) { progress.Update(features, -1); };
  job.interrupted = [] { return Interrupted(); };
  const LayerResult result = ConvertLayers(job);
  if (result.failures == 0) return kExitDone;
  job.tell(fmt::format("{} of {} features could not be converted; they have no geometry",
                       result.failures, result.features));
  return kExitSomeFailed;
}

}  // namespace geomath_files::program
