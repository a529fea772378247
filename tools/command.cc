#include "tools/command.h"

#include "tools/calibrate_command.h"
#include "tools/completion_command.h"
#include "tools/convert_command.h"
#include "tools/declination_command.h"
#include "tools/design_command.h"
#include "tools/factors_command.h"
#include "tools/geoid_command.h"
#include "tools/help_command.h"
#include "tools/info_command.h"
#include "tools/measure_command.h"
#include "tools/projections_command.h"
#include "tools/system_command.h"
#include "tools/traverse_command.h"

namespace geomath_files::program {

std::span<const Command> Commands() {
  static constexpr Command commands[] = {
      {"calibrate", "Solve a site calibration from control points", PrepareCalibrate},
      {"completion", "Print a script that completes commands and options in a shell",
       PrepareCompletion},
      {"convert", "Convert points between global and local coordinates", PrepareConvert},
      {"declination", "Magnetic declination and the other elements of the field",
       PrepareDeclination},
      {"design", "A projection made for a terrain: grid distances as on the ground", PrepareDesign},
      {"factors", "Scale, convergence and Tissot's ellipse at points", PrepareFactors},
      {"geoid", "Geoid heights of points or as a grid", PrepareGeoid},
      {"help", "Say what a command takes", PrepareHelp},
      {"info", "Say what a coordinate system is, or the layers of a file", PrepareInfo},
      {"measure", "Lines between points: bearings, distances and all factors", PrepareMeasure},
      {"projections", "List the projections that a system file may name", PrepareProjections},
      {"system", "Write a system file from an EPSG code", PrepareSystem},
      {"traverse", "Coordinates from field angles and distances, adjusted", PrepareTraverse},
  };
  return commands;
}

}  // namespace geomath_files::program
