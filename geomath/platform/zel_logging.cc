#include "geomath/platform/zel_logging.h"

#include <atomic>
#include <cstdio>

namespace zel_logging {
namespace {

void WriteToStandardError(const char* file, int line, const char* message) {
  std::fprintf(stderr, "%s:%d: %s\n", file ? file : "", line, message ? message : "");
}

std::atomic<ErrorLogSink> currentSink{&WriteToStandardError};

}  // namespace

ErrorLogSink SetErrorLogSink(ErrorLogSink sink) noexcept {
  return currentSink.exchange(sink ? sink : &WriteToStandardError);
}

void zel_err_log(const char* file, int line, const char* message) {
  currentSink.load()(file, line, message);
}

}  // namespace zel_logging
