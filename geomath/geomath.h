#pragma once

/// The whole library: every public header.

#include "geomath/base/angle.h"
#include "geomath/base/axis_rotation.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/base/grid_rgn.h"
#include "geomath/base/metric_unit.h"
#include "geomath/base/rect_rgn.h"
#include "geomath/chain/coordinate_chain.h"
#include "geomath/chain/geoid_height.h"
#include "geomath/datum/datum.h"
#include "geomath/platform/system_time.h"
#include "geomath/platform/zel_logging.h"
#include "geomath/platform/zel_math.h"
#include "geomath/platform/zel_memory.h"
#include "geomath/platform/zel_string.h"
#include "geomath/platform/zel_vector.h"
#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/o_mercator_proj.h"
#include "geomath/proj/methods/tm_proj.h"
#include "geomath/proj/methods/utm_proj.h"
#include "geomath/proj/proj_type.h"
