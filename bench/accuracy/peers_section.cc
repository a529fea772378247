#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <ostream>
#include <string>

#include "bench/accuracy/markdown.h"
#include "bench/accuracy/sections.h"
#include "bench/peers.h"
#include "geomath/base/angle.h"

#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
#include <GeographicLib/Config.h>

#include <GeographicLib/CassiniSoldner.hpp>
#include <GeographicLib/TransverseMercatorExact.hpp>
#endif

// The references of the page beside other programs, so that a mistake of their own would show.
namespace {

using exact::Real;

struct Peer {
  std::string name;
  exact::Projection projection;
};

[[maybe_unused]] void WritePeer(std::ostream& out, const Subject& subject, const Peer& peer) {
  Real worst = 0;
  for (const Band& band : subject.bands)
    for (const exact::Geographic& p : band.points) {
      const exact::Plane ours = subject.reference(p), theirs = peer.projection(p);
      worst = std::max(worst, std::hypot(ours.north - theirs.north, ours.east - theirs.east));
    }
  WriteRow(out, {subject.name, peer.name, Length(worst)});
}

#ifdef GEOMATH_HAVE_PROJ
Peer Proj(const std::string& definition) {
  const auto proj = std::make_shared<ProjPeer>(definition.c_str());
  return {"PROJ", [proj](exact::Geographic p) -> exact::Plane {
            double x = static_cast<double>(p.lambda), y = static_cast<double>(p.phi);
            proj->Convert(PJ_FWD, &x, &y, nullptr, 1);
            return {y, x};
          }};
}
#endif

#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
double Degrees(Real radians) {
  return static_cast<double>(radians * 180 / std::numbers::pi_v<Real>);
}

Peer ExactTransverseMercator() {
  return {"GeographicLib", [](exact::Geographic p) -> exact::Plane {
            double x, y;
            GeographicLib::TransverseMercatorExact::UTM().Forward(9, Degrees(p.phi),
                                                                  Degrees(p.lambda), x, y);
            return {y, x};
          }};
}
#endif

std::string Versions() {
  std::string text;
#ifdef GEOMATH_HAVE_PROJ
  text += std::string("PROJ ") + proj_info().version;
#endif
#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
  text += std::string(text.empty() ? "" : ", ") + "GeographicLib " + GEOGRAPHICLIB_VERSION_STRING;
#endif
  return text.empty() ? "None is here." : text + ".";
}

}  // namespace

void WritePeers(std::ostream& out, const std::vector<Family>& families) {
  out << "\n"
      << kPeersHeading << "\n\n"
      << Versions() << "\n\n"
      << R"(The worst difference between the references of this page and these programs, over all the points of
the class above. The programs reckon in doubles; the references do not.

)";
  WriteHead(out, {"reference", "program", "difference"});
  for (const Family& family : families)
    for (const Subject& subject : family.subjects) {
#ifdef GEOMATH_HAVE_PROJ
      if (!subject.projPipeline.empty()) WritePeer(out, subject, Proj(subject.projPipeline));
#endif
#ifdef GEOMATH_HAVE_GEOGRAPHICLIB
      if (subject.name == "TUTMProj") WritePeer(out, subject, ExactTransverseMercator());
#endif
    }
}
