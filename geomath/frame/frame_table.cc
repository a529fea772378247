#include "geomath/frame/frame_table.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace zel_cs::geomath {
namespace {

using enum ReferenceFrame;

constexpr auto kVector = RotationSense::positionVector, kFrame = RotationSense::coordinateFrame;
constexpr std::size_t kFrames = static_cast<std::size_t>(natrf2022) + 1;

// Sources:
//   among ITRF         IERS/ITRF product centre, itrf.ign.fr, with the solutions of 2000 to 2020
//   ITRF to ETRF       Boucher and Altamimi 2011, memo "Specifications for reference frame fixing in
//                      the analysis of a EUREF GPS campaign", version 8; EUREF Technical Note 1
//   ITRF to GDA        Dawson and Woods 2010, Journal of Applied Geodesy 4; ICSM 2020, GDA2020
//                      Technical Manual
//   to NAD83(CSRS)     Natural Resources Canada, with the digits of EPSG 11.022 (2024): those that older
//                      registries have for 8265 are rounded and lie 0.6 mm away in 2026
//   to NATRF2022       National Geodetic Survey; NATRF2022e2020 in EPSG 13.102 (2026)
//   to NAD83(2011)     National Geodetic Survey, the digits that it computes with: those printed in
//                      EPSG 8970 are rounded and lie 0.6 mm away
// Rows: source, target, sense, shift (mm), rotation (mas), scale (ppb), their rates a year, epoch, code.
// clang-format off
constexpr FrameTransformation kTransformations[] = {
    {itrf2014, itrf2020, kVector, {1.4, 0.9, -1.4}, {0, 0, 0}, 0.42, {0, 0.1, -0.2}, {0, 0, 0}, 0, 2015, "EPSG:9991"},
    {itrf2020, etrf2020, kVector, {0, 0, 0}, {2.236, 13.494, -19.578}, 0, {0, 0, 0}, {0.086, 0.519, -0.753}, 0, 2015, "EPSG:10573"},
    {itrf2020, nad83CsrsV8, kVector, {1003.9, -1909.61, -541.17}, {-26.78138, 0.42027, -10.93206}, -0.05109, {0.79, -0.7, -1.24}, {-0.06667, 0.75744, 0.05133}, -0.07201, 2010, "EPSG:10415"},
    {itrf2020, natrf2022, kFrame, {0, 0, 0}, {0, 0, 0}, 0, {0, 0, 0}, {0.046, -0.704, -0.047}, 0, 2020, "EPSG:11485"},
    {itrf2014, gda2020, kFrame, {0, 0, 0}, {0, 0, 0}, 0, {0, 0, 0}, {1.50379, 1.18346, 1.20716}, 0, 2020, "EPSG:8049"},
    {itrf2014, gda94, kFrame, {-61.55, 10.87, 40.19}, {39.4924, 32.7221, 32.8979}, 9.994, {0, 0, 0}, {1.50379, 1.18346, 1.20716}, 0, 2020, "EPSG:9682"},
    {itrf2014, etrf2014, kVector, {0, 0, 0}, {1.785, 11.151, -16.17}, 0, {0, 0, 0}, {0.085, 0.531, -0.77}, 0, 2010, "EPSG:8880"},
    {itrf2014, etrf2000, kVector, {54.7, 52.2, -74.1}, {1.701, 10.29, -16.632}, 2.12, {0.1, 0.1, -1.9}, {0.081, 0.49, -0.792}, 0.11, 2010, "EPSG:8405"},
    {itrf2014, nad83CsrsV7, kVector, {1005.3, -1909.21, -541.57}, {-26.78138, 0.42027, -10.93206}, 0.36891, {0.79, -0.6, -1.44}, {-0.06667, 0.75744, 0.05133}, -0.07201, 2010, "EPSG:8265"},
    {itrf2014, nad83_2011, kFrame, {1005.3, -1909.21, -541.57}, {26.7815, -0.42078, 10.93254}, 0.36891, {0.79, -0.6, -1.44}, {0.06669, -0.75749, -0.05129}, -0.07201, 2010, "ESRI:108574"},
    {itrf2014, nad83Pa11, kFrame, {910.9, -2012.9, -586.3}, {22.749, 26.56, -25.706}, 2.12, {0.1, 0.1, -1.9}, {-0.384, 1.007, -2.186}, 0.11, 2010, "ESRI:108575"},
    {itrf2014, nad83Ma11, kFrame, {910.9, -2012.9, -586.3}, {28.711, 11.785, 4.417}, 2.12, {0.1, 0.1, -1.9}, {-0.02, 0.105, -0.347}, 0.11, 2010, "ESRI:108576"},
    {itrf2008, itrf2020, kVector, {-0.2, -1, -3.3}, {0, 0, 0}, 0.29, {0, 0.1, -0.1}, {0, 0, 0}, -0.03, 2015, "EPSG:9992"},
    {itrf2008, itrf2014, kVector, {-1.6, -1.9, -2.4}, {0, 0, 0}, 0.02, {0, 0, 0.1}, {0, 0, 0}, -0.03, 2010, "EPSG:7790"},
    {itrf2008, etrf2014, kVector, {-1.6, -1.9, -2.4}, {1.785, 11.151, -16.17}, 0.02, {0, 0, 0.1}, {0.085, 0.531, -0.77}, -0.03, 2010, "EPSG:8869"},
    {itrf2008, etrf2000, kVector, {52.1, 49.3, -58.5}, {0.891, 5.39, -8.712}, 1.34, {0.1, 0.1, -1.8}, {0.081, 0.49, -0.792}, 0.08, 2000, "EPSG:7951"},
    {itrf2008, nad83CsrsV6, kVector, {993.43, -1903.31, -526.55}, {-25.91467, -9.42645, -11.59935}, 1.71504, {0.79, -0.6, -1.34}, {-0.06667, 0.75744, 0.05133}, -0.102, 1997, "EPSG:8264"},
    {itrf2008, nad83_2011, kFrame, {993.43, -1903.31, -526.55}, {25.91467, 9.42645, 11.59935}, 1.71504, {0.79, -0.6, -1.34}, {0.06667, -0.75744, -0.05133}, -0.10201, 1997, "EPSG:7807"},
    {itrf2008, nad83Pa11, kFrame, {908, -2016.1, -565.3}, {27.741, 13.469, 2.712}, 1.1, {0.1, 0.1, -1.8}, {-0.384, 1.007, -2.186}, 0.08, 1997, "EPSG:7808"},
    {itrf2008, nad83Ma11, kFrame, {908, -2016.1, -565.3}, {28.971, 10.42, 8.928}, 1.1, {0.1, 0.1, -1.8}, {-0.02, 0.105, -0.347}, 0.08, 1997, "EPSG:7809"},
    {itrf2008, gda94, kFrame, {-84.68, -19.42, 32.01}, {-0.4254, 2.2578, 2.4015}, 9.71, {1.42, 1.34, 0.9}, {1.5461, 1.182, 1.1551}, 0.109, 1994, "EPSG:6276"},
    {itrf2005, itrf2020, kVector, {-2.7, -0.1, 1.4}, {0, 0, 0}, -0.65, {-0.3, 0.1, -0.1}, {0, 0, 0}, -0.03, 2015, "EPSG:9993"},
    {itrf2005, itrf2014, kVector, {-2.6, -1, 2.3}, {0, 0, 0}, -0.92, {-0.3, 0, 0.1}, {0, 0, 0}, -0.03, 2010, "EPSG:8079"},
    {itrf2005, etrf2005, kVector, {56, 48, -37}, {0, 0, 0}, 0, {0, 0, 0}, {0.054, 0.518, -0.781}, 0, 1989, "EPSG:5900"},
    {itrf2005, etrf2014, kVector, {-2.6, -1, 2.3}, {1.785, 11.151, -16.17}, -0.92, {-0.3, 0, 0.1}, {0.085, 0.531, -0.77}, -0.03, 2010, "EPSG:8870"},
    {itrf2005, etrf2000, kVector, {54.1, 50.2, -53.8}, {0.891, 5.39, -8.712}, 0.4, {-0.2, 0.1, -1.8}, {0.081, 0.49, -0.792}, 0.08, 2000, "EPSG:7950"},
    {itrf2005, nad83CsrsV5, kVector, {996.3, -1902.4, -521.9}, {-25.915, -9.426, -11.599}, 0.775, {0.5, -0.6, -1.3}, {-0.067, 0.757, 0.051}, -0.102, 1997, "EPSG:9227"},
    {itrf2005, gda94, kFrame, {-79.73, -6.86, 38.03}, {-0.0351, 2.1211, 2.1411}, 6.636, {2.25, -0.62, -0.56}, {1.4707, 1.1443, 1.1701}, 0.294, 1994, "EPSG:6277"},
    {itrf2000, itrf2020, kVector, {0.2, -0.8, 34.2}, {0, 0, 0}, -2.25, {-0.1, 0, 1.7}, {0, 0, 0}, -0.11, 2015, "EPSG:9994"},
    {itrf2000, itrf2014, kVector, {-0.7, -1.2, 26.1}, {0, 0, 0}, -2.12, {-0.1, -0.1, 1.9}, {0, 0, 0}, -0.11, 2010, "EPSG:8078"},
    {itrf2000, etrf2014, kVector, {-0.7, -1.2, 26.1}, {1.785, 11.151, -16.17}, -2.12, {-0.1, -0.1, 1.9}, {0.085, 0.531, -0.77}, -0.11, 2010, "EPSG:8871"},
    {itrf2000, etrf2000, kVector, {54, 51, -48}, {0.891, 5.39, -8.712}, 0, {0, 0, 0}, {0.081, 0.49, -0.792}, 0, 2000, "EPSG:7941"},
    {itrf2000, nad83CsrsV4, kVector, {995.6, -1901.3, -521.4}, {-25.915, -9.426, -11.599}, 0.615, {0.7, -0.7, 0.5}, {-0.067, 0.757, 0.051}, -0.182, 1997, "EPSG:8261"},
    {itrf2000, gda94, kFrame, {-45.91, -29.85, -20.37}, {-1.6705, 0.4594, 1.9356}, 7.07, {-4.66, 3.55, 11.24}, {1.7454, 1.4868, 1.224}, 0.249, 1994, "EPSG:6278"},
    {itrf97, itrf2020, kVector, {-6.5, 3.9, 77.9}, {0, 0, -0.36}, -3.98, {-0.1, 0.6, 3.1}, {0, 0, -0.02}, -0.12, 2015, "EPSG:9995"},
    {itrf97, itrf2014, kVector, {-7.4, 0.5, 62.8}, {0, 0, -0.26}, -3.8, {-0.1, 0.5, 3.3}, {0, 0, -0.02}, -0.12, 2010, "EPSG:8077"},
    {itrf97, etrf2014, kVector, {-7.4, 0.5, 62.8}, {1.785, 11.151, -16.43}, -3.8, {-0.1, 0.5, 3.3}, {0.085, 0.531, -0.79}, -0.12, 2010, "EPSG:8872"},
    {itrf97, etrf97, kVector, {41, 41, -49}, {0, 0, 0}, 0, {0, 0, 0}, {0.2, 0.5, -0.65}, 0, 1989, "EPSG:7939"},
    {itrf97, etrf2000, kVector, {47.3, 46.7, -25.3}, {0.891, 5.39, -8.772}, -1.58, {0, 0.6, 1.4}, {0.081, 0.49, -0.812}, -0.01, 2000, "EPSG:7949"},
    {itrf97, nad83CsrsV3, kVector, {988.9, -1907.4, -503}, {-25.915, -9.426, -11.599}, -0.935, {0.7, -0.1, 1.9}, {-0.067, 0.757, 0.031}, -0.192, 1997, "EPSG:8260"},
    {itrf97, gda94, kFrame, {-14.63, -27.62, -25.32}, {-1.7893, -0.6047, 0.9962}, 6.695, {-8.6, 0.36, 11.25}, {1.6394, 1.5198, 1.3801}, 0.007, 1994, "EPSG:6279"},
    {itrf96, itrf2020, kVector, {-6.5, 3.9, 77.9}, {0, 0, -0.36}, -3.98, {-0.1, 0.6, 3.1}, {0, 0, -0.02}, -0.12, 2015, "EPSG:9996"},
    {itrf96, itrf2014, kVector, {-7.4, 0.5, 62.8}, {0, 0, -0.26}, -3.8, {-0.1, 0.5, 3.3}, {0, 0, -0.02}, -0.12, 2010, "EPSG:8076"},
    {itrf96, etrf2014, kVector, {-7.4, 0.5, 62.8}, {1.785, 11.151, -16.43}, -3.8, {-0.1, 0.5, 3.3}, {0.085, 0.531, -0.79}, -0.12, 2010, "EPSG:8873"},
    {itrf96, etrf96, kVector, {41, 41, -49}, {0, 0, 0}, 0, {0, 0, 0}, {0.2, 0.5, -0.65}, 0, 1989, "EPSG:7938"},
    {itrf96, etrf2000, kVector, {47.3, 46.7, -25.3}, {0.891, 5.39, -8.772}, -1.58, {0, 0.6, 1.4}, {0.081, 0.49, -0.812}, -0.01, 2000, "EPSG:7948"},
    {itrf96, nad83CsrsV2, kVector, {991, -1907.2, -512.9}, {-25.79, -9.65, -11.66}, 0, {0, 0, 0}, {-0.0532, 0.7423, 0.0316}, 0, 1997, "EPSG:8259"},
    {itrf96, gda94, kFrame, {24.54, -36.43, -68.12}, {-2.7359, -2.0431, 0.3731}, 6.901, {-21.8, 4.71, 26.27}, {2.0203, 2.1735, 1.629}, 0.388, 1994, "EPSG:6280"},
    {itrf94, itrf2020, kVector, {-6.5, 3.9, 77.9}, {0, 0, -0.36}, -3.98, {-0.1, 0.6, 3.1}, {0, 0, -0.02}, -0.12, 2015, "EPSG:9997"},
    {itrf94, itrf2014, kVector, {-7.4, 0.5, 62.8}, {0, 0, -0.26}, -3.8, {-0.1, 0.5, 3.3}, {0, 0, -0.02}, -0.12, 2010, "EPSG:8075"},
    {itrf94, etrf2014, kVector, {-7.4, 0.5, 62.8}, {1.785, 11.151, -16.43}, -3.8, {-0.1, 0.5, 3.3}, {0.085, 0.531, -0.79}, -0.12, 2010, "EPSG:8874"},
    {itrf94, etrf94, kVector, {41, 41, -49}, {0, 0, 0}, 0, {0, 0, 0}, {0.2, 0.5, -0.65}, 0, 1989, "EPSG:7937"},
    {itrf94, etrf2000, kVector, {47.3, 46.7, -25.3}, {0.891, 5.39, -8.772}, -1.58, {0, 0.6, 1.4}, {0.081, 0.49, -0.812}, -0.01, 2000, "EPSG:7947"},
    {itrf93, itrf2020, kVector, {65.8, -1.9, 71.3}, {3.36, 4.33, -0.75}, -4.47, {2.8, 0.2, 2.3}, {0.11, 0.19, -0.07}, -0.12, 2015, "EPSG:9998"},
    {itrf93, itrf2014, kVector, {50.4, -3.3, 60.2}, {2.81, 3.38, -0.4}, -4.29, {2.8, 0.1, 2.5}, {0.11, 0.19, -0.07}, -0.12, 2010, "EPSG:8074"},
    {itrf93, etrf2014, kVector, {50.4, -3.3, 60.2}, {4.595, 14.531, -16.57}, -4.29, {2.8, 0.1, 2.5}, {0.195, 0.721, -0.84}, -0.12, 2010, "EPSG:8875"},
    {itrf93, etrf93, kVector, {19, 53, -21}, {0, 0, 0}, 0, {0, 0, 0}, {0.32, 0.78, -0.67}, 0, 1989, "EPSG:7936"},
    {itrf93, etrf2000, kVector, {76.1, 46.9, -19.9}, {2.601, 6.87, -8.412}, -2.07, {2.9, 0.2, 0.6}, {0.191, 0.68, -0.862}, -0.01, 2000, "EPSG:7946"},
    {itrf92, itrf2020, kVector, {-14.5, 1.9, 85.9}, {0, 0, -0.36}, -3.27, {-0.1, 0.6, 3.1}, {0, 0, -0.02}, -0.12, 2015, "EPSG:9999"},
    {itrf92, itrf2014, kVector, {-15.4, -1.5, 70.8}, {0, 0, -0.26}, -3.09, {-0.1, 0.5, 3.3}, {0, 0, -0.02}, -0.12, 2010, "EPSG:8073"},
    {itrf92, etrf2014, kVector, {-15.4, -1.5, 70.8}, {1.785, 11.151, -16.43}, -3.09, {-0.1, 0.5, 3.3}, {0.085, 0.531, -0.79}, -0.12, 2010, "EPSG:8876"},
    {itrf92, etrf92, kVector, {38, 40, -37}, {0, 0, 0}, 0, {0, 0, 0}, {0.21, 0.52, -0.68}, 0, 1989, "EPSG:7935"},
    {itrf92, etrf2000, kVector, {39.3, 44.7, -17.3}, {0.891, 5.39, -8.772}, -0.87, {0, 0.6, 1.4}, {0.081, 0.49, -0.812}, -0.01, 2000, "EPSG:7945"},
    {itrf91, itrf2020, kVector, {-26.5, -12.1, 91.9}, {0, 0, -0.36}, -4.67, {-0.1, 0.6, 3.1}, {0, 0, -0.02}, -0.12, 2015, "EPSG:10100"},
    {itrf91, itrf2014, kVector, {-27.4, -15.5, 76.8}, {0, 0, -0.26}, -4.49, {-0.1, 0.5, 3.3}, {0, 0, -0.02}, -0.12, 2010, "EPSG:8072"},
    {itrf91, etrf2014, kVector, {-27.4, -15.5, 76.8}, {1.785, 11.151, -16.43}, -4.49, {-0.1, 0.5, 3.3}, {0.085, 0.531, -0.79}, -0.12, 2010, "EPSG:8877"},
    {itrf91, etrf91, kVector, {21, 25, -37}, {0, 0, 0}, 0, {0, 0, 0}, {0.21, 0.52, -0.68}, 0, 1989, "EPSG:7934"},
    {itrf91, etrf2000, kVector, {27.3, 30.7, -11.3}, {0.891, 5.39, -8.772}, -2.27, {0, 0.6, 1.4}, {0.081, 0.49, -0.812}, -0.01, 2000, "EPSG:7944"},
    {itrf90, itrf2020, kVector, {-24.5, -8.1, 107.9}, {0, 0, -0.36}, -4.97, {-0.1, 0.6, 3.1}, {0, 0, -0.02}, -0.12, 2015, "EPSG:10103"},
    {itrf90, itrf2014, kVector, {-25.4, -11.5, 92.8}, {0, 0, -0.26}, -4.79, {-0.1, 0.5, 3.3}, {0, 0, -0.02}, -0.12, 2010, "EPSG:8071"},
    {itrf90, etrf2014, kVector, {-25.4, -11.5, 92.8}, {1.785, 11.151, -16.43}, -4.79, {-0.1, 0.5, 3.3}, {0.085, 0.531, -0.79}, -0.12, 2010, "EPSG:8878"},
    {itrf90, etrf90, kVector, {19, 28, -23}, {0, 0, 0}, 0, {0, 0, 0}, {0.11, 0.57, -0.71}, 0, 1989, "EPSG:7933"},
    {itrf90, etrf2000, kVector, {29.3, 34.7, 4.7}, {0.891, 5.39, -8.772}, -2.57, {0, 0.6, 1.4}, {0.081, 0.49, -0.812}, -0.01, 2000, "EPSG:7943"},
    {itrf89, itrf2020, kVector, {-29.5, -32.1, 145.9}, {0, 0, -0.36}, -8.37, {-0.1, 0.6, 3.1}, {0, 0, -0.02}, -0.12, 2015, "EPSG:10104"},
    {itrf89, itrf2014, kVector, {-30.4, -35.5, 130.8}, {0, 0, -0.26}, -8.19, {-0.1, 0.5, 3.3}, {0, 0, -0.02}, -0.12, 2010, "EPSG:8070"},
    {itrf89, etrf2014, kVector, {-30.4, -35.5, 130.8}, {1.785, 11.151, -16.43}, -8.19, {-0.1, 0.5, 3.3}, {0.085, 0.531, -0.79}, -0.12, 2010, "EPSG:8879"},
    {itrf89, etrf89, kVector, {0, 0, 0}, {0, 0, 0}, 0, {0, 0, 0}, {0.11, 0.57, -0.71}, 0, 1989, "EPSG:7932"},
    {itrf89, etrf2000, kVector, {24.3, 10.7, 42.7}, {0.891, 5.39, -8.772}, -5.97, {0, 0.6, 1.4}, {0.081, 0.49, -0.812}, -0.01, 2000, "EPSG:7942"},
    {itrf88, itrf2020, kVector, {-24.5, 3.9, 169.9}, {-0.1, 0, -0.36}, -11.47, {-0.1, 0.6, 3.1}, {0, 0, -0.02}, -0.12, 2015, "EPSG:10105"},
    {itrf88, itrf2014, kVector, {-25.4, 0.5, 154.8}, {-0.1, 0, -0.26}, -11.29, {-0.1, 0.5, 3.3}, {0, 0, -0.02}, -0.12, 2010, "EPSG:8069"},
    {gda94, gda2020, kFrame, {61.55, -10.87, -40.19}, {-39.4924, -32.7221, -32.8979}, -9.994, {0, 0, 0}, {0, 0, 0}, 0, 0, "EPSG:8048"},
};

constexpr TectonicPlate kPlates2014[] = {
    {"ANTA", {-0.248, -0.324, 0.675}},
    {"ARAB", {1.154, -0.136, 1.444}},
    {"AUST", {1.510, 1.182, 1.215}},
    {"EURA", {-0.085, -0.531, 0.770}},
    {"INDI", {1.154, -0.005, 1.454}},
    {"NAZC", {-0.333, -1.544, 1.623}},
    {"NOAM", {0.024, -0.694, -0.063}},
    {"NUBI", {0.099, -0.614, 0.733}},
    {"PCFC", {-0.409, 1.047, -2.169}},
    {"SOAM", {-0.270, -0.301, -0.140}},
    {"SOMA", {-0.121, -0.794, 0.884}},
};

constexpr TectonicPlate kPlates2020[] = {
    {"AMUR", {-0.131, -0.551, 0.837}},
    {"ANTA", {-0.269, -0.312, 0.678}},
    {"ARAB", {1.129, -0.146, 1.438}},
    {"AUST", {1.487, 1.175, 1.223}},
    {"CARB", {0.207, -1.422, 0.726}},
    {"EURA", {-0.085, -0.519, 0.753}},
    {"INDI", {1.137, 0.013, 1.444}},
    {"NAZC", {-0.327, -1.561, 1.605}},
    {"NOAM", {0.045, -0.666, -0.098}},
    {"NUBI", {0.090, -0.585, 0.717}},
    {"PCFC", {-0.404, 1.021, -2.154}},
    {"SOAM", {-0.261, -0.282, -0.157}},
    {"SOMA", {-0.081, -0.719, 0.864}},
};
// clang-format on

constexpr double kMetresPerMillimetre = 1e-3, kArcSecondsPerMas = 1e-3, kPerBillion = 1e-9;

}  // namespace

const char* FrameName(ReferenceFrame frame) {
  static constexpr const char* names[] = {
      "ITRF88",        "ITRF89",        "ITRF90",        "ITRF91",        "ITRF92",
      "ITRF93",        "ITRF94",        "ITRF96",        "ITRF97",        "ITRF2000",
      "ITRF2005",      "ITRF2008",      "ITRF2014",      "ITRF2020",      "ETRF89",
      "ETRF90",        "ETRF91",        "ETRF92",        "ETRF93",        "ETRF94",
      "ETRF96",        "ETRF97",        "ETRF2000",      "ETRF2005",      "ETRF2014",
      "ETRF2020",      "GDA94",         "GDA2020",       "NAD83(CSRS)v2", "NAD83(CSRS)v3",
      "NAD83(CSRS)v4", "NAD83(CSRS)v5", "NAD83(CSRS)v6", "NAD83(CSRS)v7", "NAD83(CSRS)v8",
      "NAD83(2011)",   "NAD83(PA11)",   "NAD83(MA11)",   "NATRF2022"};
  static_assert(std::size(names) == kFrames);
  const auto index = static_cast<std::size_t>(frame);
  return index < kFrames ? names[index] : "an unknown frame";
}

std::optional<ReferenceFrame> FrameNamed(std::string_view name) {
  for (std::size_t i = 0; i < kFrames; ++i)
    if (const auto frame = static_cast<ReferenceFrame>(i); name == FrameName(frame)) return frame;
  return std::nullopt;
}

TimeDependentParameters FrameTransformation::Parameters() const {
  TimeDependentParameters p;
  for (int i = 0; i < 3; ++i) {
    p.shift[i] = shift[i] * kMetresPerMillimetre;
    p.rotation[i] = rotation[i] * kArcSecondsPerMas;
    p.shiftRate[i] = shiftRate[i] * kMetresPerMillimetre;
    p.rotationRate[i] = rotationRate[i] * kArcSecondsPerMas;
  }
  p.scale = scale * kPerBillion;
  p.scaleRate = scaleRate * kPerBillion;
  p.epoch = epoch;
  p.sense = sense;
  return p;
}

std::span<const FrameTransformation> FrameTransformations() { return kTransformations; }

// A search in breadth, whose neighbours come in the order of the table.
std::vector<FrameStep> FrameSteps(ReferenceFrame from, ReferenceFrame to) {
  struct Visit {
    ReferenceFrame frame;
    std::size_t before;  // the visit that the step comes from
    FrameStep step;
  };
  std::vector<Visit> visits = {{from, 0, {}}};
  bool seen[kFrames] = {};
  seen[static_cast<std::size_t>(from)] = true;
  for (std::size_t at = 0; at < visits.size() && visits[at].frame != to; ++at) {
    const ReferenceFrame here = visits[at].frame;
    for (const FrameTransformation& row : kTransformations) {
      if (row.source != here && row.target != here) continue;
      const bool inverse = row.target == here;
      const ReferenceFrame next = inverse ? row.source : row.target;
      if (std::exchange(seen[static_cast<std::size_t>(next)], true)) continue;
      visits.push_back({next, at, {&row, inverse}});
    }
  }
  const auto arrived =
      std::find_if(visits.begin(), visits.end(), [to](const Visit& v) { return v.frame == to; });
  std::vector<FrameStep> steps;
  if (arrived == visits.end()) return steps;
  for (auto at = static_cast<std::size_t>(arrived - visits.begin()); at != 0;
       at = visits[at].before)
    steps.push_back(visits[at].step);
  std::reverse(steps.begin(), steps.end());
  return steps;
}

std::span<const TectonicPlate> Plates(PlateModel model) {
  if (model == PlateModel::itrf2014) return kPlates2014;
  return kPlates2020;
}

}  // namespace zel_cs::geomath
