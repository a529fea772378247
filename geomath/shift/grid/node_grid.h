#pragma once

#include <memory>
#include <string>
#include <vector>

#include "geomath/shift/grid/part_raster.h"
#include "geomath/shift/grid/shift_kernel.h"
#include "geomath/shift/shift_grid.h"

namespace zel_cs::geomath {

/// The nodes of nested grids, checked and put in order, and the loops over them.
class NodeGrid {
 public:
  struct Definition {
    std::vector<ShiftGridPart> parts;
    bool turns;  // positions are latitudes and longitudes
    std::size_t components;
    double units[3];  // of each component
    double northOffset = 0, eastOffset = 0;
    ShiftInterpolation interpolation = ShiftInterpolation::bilinear;
  };
  /// Null, with a reason, when the definition is not sound. Throws only what a vector throws.
  static std::unique_ptr<NodeGrid> Make(Definition definition, std::string& reason);
  NodeGrid(const NodeGrid&) = delete;
  NodeGrid& operator=(const NodeGrid&) = delete;

  /// As ShiftKernel, on the instruction set in force.
  void Values(const double* north, const double* east, double* const* values, std::size_t count,
              ShiftStatus* status) const;
  void Surface(const double* north, const double* east, const NodeSurface& surface,
               std::size_t count, ShiftStatus* status) const;
  /// Of bilinear grids.
  void Cells(const double* north, const double* east, const CellSurface& surface, std::size_t count,
             ShiftStatus* status) const;
  void Forward(double* const* point, std::size_t count, ShiftStatus* status) const;
  void Inverse(double* const* point, std::size_t count, ShiftStatus* status) const;

  bool HasAccuracies() const { return !accuracies_.empty(); }
  bool Accuracy(double north, double east, double* accuracies) const;

 private:
  NodeGrid() = default;
  void Collect(std::vector<ShiftGridPart>& parts);
  template <class Run>
  static void RunAs(ShiftInterpolation interpolation, std::size_t components, Run run);

  std::vector<PartFrame> frames_;
  PartRasterLists raster_;
  std::vector<float> values_, accuracies_;
  std::size_t components_ = 0;
  ShiftInterpolation interpolation_ = ShiftInterpolation::bilinear;
  ShiftNodes nodes_{};
};

}  // namespace zel_cs::geomath
