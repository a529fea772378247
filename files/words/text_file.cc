#include "files/words/text_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <deque>
#include <filesystem>
#include <utility>

#include "files/words/name_match.h"
#include "files/words/user_error.h"

namespace geomath_files {

void CloseInput::operator()(std::FILE* file) const {
  if (file != stdin) std::fclose(file);
}

InputHandle OpenInput(const std::string& path) {
  if (path == "-") return InputHandle(stdin);
  if (std::filesystem::is_directory(path)) throw UserError(path + ": is a directory");
  InputHandle file(std::fopen(path.c_str(), "rb"));
  if (!file) throw UserError(fmt::format("{}: cannot be read: {}", path, std::strerror(errno)));
  return file;
}

void RequireLocalPath(const std::string& path) {
  if (path.starts_with("/vsi"))
    throw UserError(path + ": is no local file; addresses and archives are not opened");
}

std::string InputName(const std::string& path) { return path == "-" ? "standard input" : path; }

std::string SuffixOf(const std::string& path) {
  return LowerCase(std::filesystem::path(path).extension().string());
}

TextOutput::TextOutput(const std::string& path)
    : name_(path == "-" ? "standard output" : path), file_(stdout) {
  if (path == "-") return;
  place_.emplace(path);
  file_ = std::fopen(place_->Path().c_str(), "wb");
  if (!file_) Complain();
}

TextOutput::~TextOutput() {
  if (file_ && file_ != stdout) std::fclose(file_);
}

void TextOutput::Write(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) Complain();
}

void TextOutput::Flush() {
  if (std::fflush(file_) != 0) Complain();
}

void TextOutput::End() {
  std::FILE* file = std::exchange(file_, nullptr);
  if (file == stdout ? std::fflush(file) != 0 : std::fclose(file) != 0) Complain();
}

void TextOutput::Close(const std::vector<TextOutput*>& outputs) {
  std::vector<OutputFile*> places;
  for (TextOutput* output : outputs) {
    output->End();
    if (output->place_) places.push_back(&*output->place_);
  }
  OutputFile::Place(places);
}

void TextOutput::Complain() const {
  throw UserError(fmt::format("{}: cannot be written: {}", name_, std::strerror(errno)));
}

void WriteTextFiles(const std::vector<NamedText>& files) {
  std::deque<TextOutput> outputs;
  std::vector<TextOutput*> all;
  for (const NamedText& file : files) all.push_back(&outputs.emplace_back(file.path));
  for (std::size_t i = 0; i < files.size(); ++i) outputs[i].Write(files[i].text);
  TextOutput::Close(all);
}

}  // namespace geomath_files
