#pragma once

#include "geomath/export.h"

namespace zel_logging {

/// Receives one log record: source file, line in it, message. All texts are only valid during
/// the call. A sink may be called from any thread that uses the library.
using ErrorLogSink = void (*)(const char* file, int line, const char* message);

/// Installs the sink of all later records and returns the previous one. Null restores the
/// default, which writes "file:line: message" as one line to standard error. Safe to call while
/// other threads log.
GEOMATH_API ErrorLogSink SetErrorLogSink(ErrorLogSink sink) noexcept;

/// Hands one record to the installed sink.
GEOMATH_API void zel_err_log(const char* file, int line, const char* message);

}  // namespace zel_logging
