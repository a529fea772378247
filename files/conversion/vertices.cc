#include "files/conversion/vertices.h"

#include <algorithm>
#include <cmath>

#include "geomath/base/angle.h"

using zel_cs::geomath::kRadPerDeg;

namespace geomath_files {
namespace {

// Points stand alone; the vertices of all other kinds are those of their simple curves.
template <class OnPoint, class OnCurve>
class CurveVisitor : public OGRDefaultGeometryVisitor {
 public:
  CurveVisitor(OnPoint onPoint, OnCurve onCurve) : onPoint_(onPoint), onCurve_(onCurve) {}

  void visit(OGRPoint* point) override {
    if (!point->IsEmpty()) onPoint_(*point);
  }
  void visit(OGRLineString* line) override { onCurve_(*line); }
  void visit(OGRLinearRing* ring) override { onCurve_(*ring); }
  void visit(OGRCircularString* arc) override { onCurve_(*arc); }

 private:
  OnPoint onPoint_;
  OnCurve onCurve_;
};

struct Vertex {
  double x, y, z, m;
};

Vertex At(const OGRSimpleCurve& curve, int i) {
  return {curve.getX(i), curve.getY(i), curve.getZ(i), curve.getM(i)};
}

Vertex Between(const Vertex& a, const Vertex& b, double share) {
  const auto mix = [&](double from, double to) { return from + share * (to - from); };
  return {mix(a.x, b.x), mix(a.y, b.y), mix(a.z, b.z), mix(a.m, b.m)};
}

void SetVertices(OGRSimpleCurve& curve, const std::vector<Vertex>& vertices) {
  const bool is3D = curve.Is3D(), isMeasured = curve.IsMeasured();
  curve.setNumPoints(static_cast<int>(vertices.size()), FALSE);
  for (int i = 0; i < curve.getNumPoints(); ++i) {
    const Vertex& v = vertices[static_cast<std::size_t>(i)];
    curve.setPoint(i, v.x, v.y);
    if (is3D) curve.setZ(i, v.z);
    if (isMeasured) curve.setM(i, v.m);
  }
}

}  // namespace

void AppendVertices(const OGRGeometry& geometry, double height, VertexColumns& to) {
  const auto append = [&](double x, double y, double z, bool is3D) {
    to.x.push_back(x);
    to.y.push_back(y);
    to.z.push_back(is3D ? z : height);
    to.flat.push_back(!is3D);
  };
  CurveVisitor gather(
      [&](const OGRPoint& point) {
        append(point.getX(), point.getY(), point.getZ(), point.Is3D());
      },
      [&](const OGRSimpleCurve& curve) {
        for (int i = 0; i < curve.getNumPoints(); ++i)
          append(curve.getX(i), curve.getY(i), curve.getZ(i), curve.Is3D());
      });
  const_cast<OGRGeometry&>(geometry).accept(&gather);  // which only reads
}

std::size_t TakeVertices(OGRGeometry& geometry, const VertexColumns& from, std::size_t at) {
  CurveVisitor scatter(
      [&](OGRPoint& point) {
        point.setX(from.x[at]);
        point.setY(from.y[at]);
        if (point.Is3D()) point.setZ(from.z[at]);
        ++at;
      },
      [&](OGRSimpleCurve& curve) {
        const bool is3D = curve.Is3D(), closed = curve.get_IsClosed() != 0;
        const std::size_t first = at;
        for (int i = 0; i < curve.getNumPoints(); ++i, ++at) {
          const std::size_t taken = closed && i + 1 == curve.getNumPoints() ? first : at;
          curve.setPoint(i, from.x[taken], from.y[taken]);
          if (is3D) curve.setZ(i, from.z[taken]);
        }
      });
  geometry.accept(&scatter);
  return at;
}

bool Densify(OGRGeometry& geometry, double longest, const VertexDistance& distance) {
  bool within = true;
  CurveVisitor densify(
      [](OGRPoint&) {},
      [&](OGRSimpleCurve& curve) {
        const bool straight = wkbFlatten(curve.getGeometryType()) != wkbCircularString;
        if (!straight || curve.getNumPoints() < 2) return;
        std::vector<Vertex> dense = {At(curve, 0)};
        for (int i = 1; i < curve.getNumPoints(); ++i) {
          const Vertex from = At(curve, i - 1), to = At(curve, i);
          const double parts = std::ceil(distance(from.x, from.y, to.x, to.y) / longest);
          within = within && parts <= kMostParts;
          for (double part = 1; within && part < parts; ++part)
            dense.push_back(Between(from, to, part / parts));
          dense.push_back(to);
        }
        SetVertices(curve, dense);
      });
  geometry.accept(&densify);
  return within;
}

VertexDistance DistanceOnSphere() {
  return [](double x1, double y1, double x2, double y2) {
    constexpr double kRadius = 6371008.8;  // metres, mean of the axes
    const double sinB = std::sin((y2 - y1) / 2 * kRadPerDeg);
    const double sinL = std::sin((x2 - x1) / 2 * kRadPerDeg);
    const double cosines = std::cos(y1 * kRadPerDeg) * std::cos(y2 * kRadPerDeg);
    return 2 * kRadius * std::asin(std::min(1.0, std::hypot(sinB, std::sqrt(cosines) * sinL)));
  };
}

VertexDistance DistanceInPlane(double metres) {
  return [metres](double x1, double y1, double x2, double y2) {
    return metres * std::hypot(x2 - x1, y2 - y1);
  };
}

}  // namespace geomath_files
