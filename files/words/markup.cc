#include "files/words/markup.h"

#include <fmt/format.h>

namespace geomath_files {
namespace {

constexpr const char* kStyle =
    "body{font:15px/1.5 sans-serif;margin:2em auto;max-width:60em;padding:0 1em;color:#222}"
    "table{border-collapse:collapse;margin:1em 0}td,th{padding:.2em .7em;text-align:right;"
    "border-bottom:1px solid #ddd}td:first-child,th:first-child{text-align:left}"
    ".wide{overflow-x:auto}.warning{background:#fff3cd;border-left:4px solid #c90;padding:.5em 1em}"
    "svg{max-width:100%;height:auto;background:#fafafa;border:1px solid #ddd}"
    "svg text{font:12px sans-serif;fill:#333}"
    ".verdict{background:#f8d7da;border-left:4px solid #c01c28;padding:.5em 1em;font-weight:bold}"
    ".verdict.usable{background:#d8f0dd;border-color:#26a269}";

}  // namespace

std::string Escaped(const std::string& text) {
  std::string safe;
  for (const char c : text) {
    switch (c) {
      case '&':
        safe += "&amp;";
        break;
      case '<':
        safe += "&lt;";
        break;
      case '>':
        safe += "&gt;";
        break;
      case '"':
        safe += "&quot;";
        break;
      default:
        safe += c;
    }
  }
  return safe;
}

std::string PageHead(const std::string& title, const std::string& style) {
  return fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n<meta name=\"viewport\" "
      "content=\"width=device-width\">\n<title>{0}</title>\n<style>{1}{2}</style></head><body>\n"
      "<h1>{0}</h1>\n",
      Escaped(title), kStyle, style);
}

std::string Table(const char* id, const std::vector<std::string>& header,
                  const std::vector<std::vector<std::string>>& rows) {
  std::string table = fmt::format("<div class=\"wide\"><table id=\"{}\">\n", id);
  const auto add = [&](const std::vector<std::string>& row, const char* cell) {
    table += "<tr>";
    for (const std::string& text : row) table += fmt::format("<{0}>{1}</{0}>", cell, Escaped(text));
    table += "</tr>\n";
  };
  if (!header.empty()) add(header, "th");
  for (const std::vector<std::string>& row : rows) add(row, "td");
  return table + "</table></div>\n";
}

}  // namespace geomath_files
