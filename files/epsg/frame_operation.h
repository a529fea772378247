#pragma once

#include <optional>
#include <string>

#include "files/epsg/epsg_registry.h"
#include "files/epsg/grid_folders.h"
#include "files/epsg/operation_chooser.h"

namespace geomath_files {

/// The way between two geographic systems of the registry, by their codes, that the library's table of
/// frames has: ITRF2014 to ETRS89, which is taken for ETRF2000. Its accuracy is nobody's; a deformation
/// model belongs to it where the frame of one has its positions at an epoch (NZGD2000). Nothing where
/// one of the two is no frame of the table, or nothing leads from one to the other.
std::optional<CandidateOperation> FrameOperation(const EpsgRegistry& registry,
                                                 const GridFolders& folders,
                                                 const std::string& source,
                                                 const std::string& target);

}  // namespace geomath_files
