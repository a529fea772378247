#include "files/design/design_problem.h"

using namespace zel_cs::geomath;

namespace geomath_files {

std::string DesignProblem(DesignStatus status) {
  switch (status) {
    case DesignStatus::done:
      return "";
    case DesignStatus::noPoints:
      return "no point has a height and a weight";
    case DesignStatus::onePlace:
      return "all heights are at one place; a zone needs an area";
    case DesignStatus::badValue:
      return "a latitude is beyond a pole, or a height, a weight or an option is none";
    case DesignStatus::atPole:
      return "the area reaches a pole, where no zone of these families belongs; a polar "
             "stereographic projection does";
    case DesignStatus::tooLarge:
      return "the area is more than 2000 km across; no zone is right there: choose a part of it";
    case DesignStatus::acrossDateLine:
      return "the area lies across the date line, where only transverse Mercator and Lambert zones "
             "serve";
    case DesignStatus::impossible:
      return "no projection of these families serves all of the area";
    case DesignStatus::stopped:
      return "interrupted";
  }
  return "";
}

}  // namespace geomath_files
