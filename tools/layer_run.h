#pragma once

#include "files/conversion/layer_conversion.h"
#include "tools/row_loop.h"

namespace geomath_files::program {

/// Throws UserError for options of points that layers of lines and polygons do not take.
void RefuseForShapes(const PointOptions& options);

/// A job with the files, layer and height that the user named.
LayerJob LayerJobOf(const PointOptions& options);

/// Converts layers, with progress and what the user should know on standard error. Returns the exit
/// status.
int RunLayers(LayerJob job);

}  // namespace geomath_files::program
