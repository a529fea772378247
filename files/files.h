#pragma once

/// Everything of the library of files, `geomath::files`: coordinate systems from files and from the
/// EPSG registry, conversions between any two, geoids and shifts, control points, site calibrations
/// with their reports, and PROJ pipelines. What is wrong with a file throws
/// `geomath_files::UserError`.
#include "files/conversion/conversion.h"
#include "files/conversion/conversion_end.h"
#include "files/epsg/load_system.h"
#include "files/exchange/grid_wkt.h"
#include "files/exchange/proj_pipeline.h"
#include "files/gdal/use_gdal.h"
#include "files/models/coefficient_file.h"
#include "files/models/geoid_file.h"
#include "files/models/geoid_schemes.h"
#include "files/models/magnetic_file.h"
#include "files/models/raster_reader.h"
#include "files/models/shift_file.h"
#include "files/site/calibration.h"
#include "files/site/calibration_report.h"
#include "files/site/control_file.h"
#include "files/site/site_judgement.h"
#include "files/site/site_solution.h"
#include "files/system/axis_pair.h"
#include "files/system/ellipsoid_names.h"
#include "files/system/geo_box.h"
#include "files/system/length_unit.h"
#include "files/system/projection_names.h"
#include "files/system/site_errors.h"
#include "files/system/system_file.h"
#include "files/system/system_shift.h"
#include "files/words/output_file.h"
#include "files/words/text_file.h"
#include "files/words/user_error.h"
