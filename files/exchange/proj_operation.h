#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct PJconsts;
struct pj_ctx;

namespace geomath_files {

/// Points by coordinate: latitudes, longitudes (radians) and heights, or northings, eastings and
/// heights (metres).
struct CoordinateColumns {
  explicit CoordinateColumns(std::size_t count) : first(count), second(count), height(count) {}
  std::size_t Count() const { return first.size(); }

  std::vector<double> first, second, height;
};

/// An operation of PROJ from positions to a grid, run in a context of its own.
class ProjOperation {
 public:
  /// Throws UserError when PROJ does not take the definition.
  explicit ProjOperation(const std::string& definition);
  ~ProjOperation();
  ProjOperation(const ProjOperation&) = delete;
  ProjOperation& operator=(const ProjOperation&) = delete;

  /// In place. A point that PROJ refuses becomes infinite.
  void Forward(CoordinateColumns& points) const;
  void Inverse(CoordinateColumns& points) const;

 private:
  pj_ctx* context_;
  PJconsts* operation_;
};

}  // namespace geomath_files
