#pragma once

#include <ogr_geometry.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace geomath_files {

/// Vertices in columns, as layers have them: x to the east or a longitude, y to the north or a
/// latitude, degrees.
struct VertexColumns {
  std::vector<double> x, y, z;
  std::vector<char> flat;  ///< whether it has no z of its own

  std::size_t Count() const { return x.size(); }
};

/// Appends the vertices of a geometry of any kind, those that define a curve for a curve. A vertex
/// without z gets `height`.
void AppendVertices(const OGRGeometry& geometry, double height, VertexColumns& to);

/// Gives a geometry new vertices from `at` on, in the order of AppendVertices; what was closed stays
/// so, and what has no z gets none. Returns the place behind its last one. Measures stay.
std::size_t TakeVertices(OGRGeometry& geometry, const VertexColumns& from, std::size_t at);

/// Metres between two vertices.
using VertexDistance = std::function<double(double x1, double y1, double x2, double y2)>;
/// Of those in degrees, on a sphere, which does for deciding how finely a line is divided; of those in a
/// plane whose unit is so many metres.
VertexDistance DistanceOnSphere();
VertexDistance DistanceInPlane(double metres);

/// Puts vertices into straight segments that are longer than `longest` metres, evenly along them.
/// False, and nothing of use done, where a segment would get more than kMostParts.
inline constexpr int kMostParts = 1'000'000;
bool Densify(OGRGeometry& geometry, double longest, const VertexDistance& distance);

}  // namespace geomath_files
