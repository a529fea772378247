#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "bench/accuracy/subjects.h"

/// The parts of the page, in its order.
void WriteProjections(std::ostream& out, const std::vector<Family>& families);
void WriteFactors(std::ostream& out, const std::vector<Family>& families);
void WriteGeocentric(std::ostream& out);
void WriteDatum(std::ostream& out);
void WriteGeoid(std::ostream& out);
void WritePeers(std::ostream& out, const std::vector<Family>& families);

/// How the last part begins; a line with the versions of the other programs follows it.
inline constexpr const char* kPeersHeading = "## Beside other programs";
