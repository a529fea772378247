#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "files/gdal/checked_files.h"
#include "files/words/output_file.h"

class GDALDataset;

namespace geomath_files {

/// Nodes in steps from a south-western corner, degrees. Row 0 is the southernmost.
struct NodeGrid {
  double south, west, step;
  int rows, columns;

  double Latitude(int row) const { return south + row * step; }
  double Longitude(int column) const { return west + column * step; }
};

/// The nodes of a rectangle, its corners included where the step meets them. Nothing when the
/// rectangle is not on the Earth (longitudes from −360° to 360°), is turned around, has a step that
/// is not positive, or more than `mostNodes` nodes on a side.
std::optional<NodeGrid> NodesOf(double south, double west, double north, double east, double step,
                                int mostNodes);

/// A GeoTIFF of single-precision values whose pixels have the nodes as centres, north up, on WGS84.
/// What fails throws UserError.
class RasterGrid {
 public:
  /// Begins a file with one band for each description, which replaces one that exists when it is
  /// closed.
  RasterGrid(const std::string& path, const NodeGrid& grid,
             std::span<const char* const> descriptions);
  ~RasterGrid();

  /// The value that stands for none, in all bands.
  void SetNoData(double value);
  /// The values of one row, from the west; bands count from 0.
  void Write(int band, int row, const std::vector<double>& values);
  /// Writes out what is still held back and puts the file in its place.
  void Close();

 private:
  struct CloseDataset {
    void operator()(GDALDataset* dataset) const;
  };

  // With what the system said, or GDAL where it said nothing.
  [[noreturn]] void Complain(const std::string& gdal) const;

  OutputFile file_;
  CheckedFiles written_;
  NodeGrid grid_;
  std::unique_ptr<GDALDataset, CloseDataset> dataset_;
};

}  // namespace geomath_files
