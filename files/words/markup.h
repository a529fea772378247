#pragma once

#include <string>
#include <vector>

namespace geomath_files {

/// Text as it stands in HTML and SVG, in attributes too.
std::string Escaped(const std::string& text);

/// A page up to its heading, which is its title too; `style` comes behind the one that all reports share.
std::string PageHead(const std::string& title, const std::string& style = "");

/// A table; without a header when that is empty. All cells are plain text.
std::string Table(const char* id, const std::vector<std::string>& header,
                  const std::vector<std::vector<std::string>>& rows);

}  // namespace geomath_files
