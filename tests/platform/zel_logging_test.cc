#include "geomath/platform/zel_logging.h"

#include <gtest/gtest.h>

#include <string>

namespace zel_logging {
namespace {

std::string lastRecord;

void Remember(const char* file, int line, const char* message) {
  lastRecord = std::string(file) + "|" + std::to_string(line) + "|" + message;
}

TEST(ErrorLog, GoesToTheInstalledSinkAndBackToTheDefault) {
  const ErrorLogSink standard = SetErrorLogSink(&Remember);
  ASSERT_NE(standard, nullptr);
  zel_err_log("MagneticDeclination", 88, "");
  EXPECT_EQ(lastRecord, "MagneticDeclination|88|");

  EXPECT_EQ(SetErrorLogSink(nullptr), &Remember);
  testing::internal::CaptureStderr();
  zel_err_log("file", 7, "text");
  zel_err_log(nullptr, 8, nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "file:7: text\n:8: \n");
  EXPECT_EQ(lastRecord, "MagneticDeclination|88|");
  EXPECT_EQ(SetErrorLogSink(standard), standard);
}

}  // namespace
}  // namespace zel_logging
