#include "files/epsg/national_frames.h"

namespace geomath_files {
namespace {

using namespace zel_cs::geomath;
using enum ReferenceFrame;

struct Row {
  const char* system;
  NationalFrame frame;
};

// Systems whose names are those of no frame. ETRS89 is realised by ETRF2000 in most countries, as
// the EUREF governing board recommends. NZGD2000 is ITRF96 at 2000.0, to which the deformation
// model of Land Information New Zealand leads.
constexpr Row kRows[] = {
    {"ETRS89", {etrf2000, "ETRS89 is taken for ETRF2000"}},
    {"ETRF2000-PL", {etrf2000}},
    {"NAD83(CSRS)", {nad83CsrsV7, "NAD83(CSRS) is taken for NAD83(CSRS)v7"}},
    {"NATRF2022e2020", {natrf2022}},
    {"NZGD2000", {itrf96, nullptr, "nz_linz_nzgd2000-20180701.json"}},
};

// ETRS89, NAD83(2011), NAD83(CSRS)v7, GDA2020, GDA94, NZGD2000.
constexpr const char* kSystems[] = {"4258", "6318", "8255", "7844", "4283", "4167"};

struct Code {
  ReferenceFrame frame;
  const char* code;
};
constexpr Code kCodes[] = {
    {itrf88, "8988"},      {itrf89, "8989"},      {itrf90, "8990"},      {itrf91, "8991"},
    {itrf92, "8992"},      {itrf93, "8993"},      {itrf94, "8994"},      {itrf96, "8995"},
    {itrf97, "8996"},      {itrf2000, "8997"},    {itrf2005, "8998"},    {itrf2008, "8999"},
    {itrf2014, "9000"},    {itrf2020, "9990"},    {etrf89, "9059"},      {etrf90, "9060"},
    {etrf91, "9061"},      {etrf92, "9062"},      {etrf93, "9063"},      {etrf94, "9064"},
    {etrf96, "9065"},      {etrf97, "9066"},      {etrf2000, "9067"},    {etrf2005, "9068"},
    {etrf2014, "9069"},    {gda94, "4283"},       {gda2020, "7844"},     {nad83CsrsV2, "8237"},
    {nad83CsrsV3, "8240"}, {nad83CsrsV4, "8246"}, {nad83CsrsV5, "8249"}, {nad83CsrsV6, "8252"},
    {nad83CsrsV7, "8255"}, {nad83_2011, "6318"},  {nad83Pa11, "6322"},   {nad83Ma11, "6325"},
};

}  // namespace

std::optional<NationalFrame> NationalFrameOf(const std::string& system) {
  for (const Row& row : kRows)
    if (row.system == system) return row.frame;
  if (const auto frame = FrameNamed(system)) return NationalFrame{*frame};
  return std::nullopt;
}

std::span<const char* const> NationalSystems() { return kSystems; }

std::string CodeOfFrame(ReferenceFrame frame) {
  for (const Code& row : kCodes)
    if (row.frame == frame) return row.code;
  return {};
}

}  // namespace geomath_files
