#pragma once

#include <memory>
#include <string>
#include <vector>

#include "geomath/geoid/global_geoid.h"

namespace geomath_files {

/// A spherical-harmonic model in memory: fully normalised coefficients in triangular order.
struct GeoidCoefficients {
  std::vector<double> C;            ///< of the cosines
  std::vector<double> S;            ///< of the sines
  std::vector<double> correctionC;  ///< centimetres, those of the correction; empty without one
  std::vector<double> correctionS;  ///< the same of the sines
  int degrees = 0;                  ///< maximum degree plus 1
};

/// Which files a model is read from, and how.
struct CoefficientFiles {
  std::string model;                 ///< lines "n m C S", or ICGEM's .gfc
  std::string correction;            ///< lines "n m C S" in centimetres, or none
  bool subtractNormalField = false;  ///< of WGS84, where the model is of the whole potential
};

/// What they hold.
struct CoefficientSet {
  GeoidCoefficients coefficients;  ///< ready for MakeHarmonicModel
  std::string warning;             ///< what the user should know, empty when there is nothing
};

/// Reads a model strictly. Numbers have a decimal point, whatever the locale, and an exponent after
/// E or D; every term from degree 2 on (of the correction from degree 0 on) stands there once, up to
/// the degree that the head of a .gfc file states. Coefficients of a .gfc file are scaled from its GM
/// and radius, which must be those of the Earth in m³/s² and m, to those of WGS84; others are used as
/// given. Throws UserError with the file and line.
CoefficientSet ReadCoefficients(const CoefficientFiles& files);

/// The model of coefficients, which must outlive it.
std::unique_ptr<zel_cs::geomath::GlobalGeoid> MakeHarmonicModel(const GeoidCoefficients& c);

}  // namespace geomath_files
