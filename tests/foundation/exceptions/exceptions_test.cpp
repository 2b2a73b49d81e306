#include "foundation/exceptions/exceptions.h"

#include <gtest/gtest.h>

#include "support/raised.h"

namespace {

using Testing::ExpectRaises;
using namespace Vell::Exceptions;

TEST(ExceptionsTest, EndOfStreamPrintsOneLineOnStandardErrorOnly) {
  Testing::OutputCapture capture;
  try {
    throw EndOfStreamException("Unexpected end of stream");
  } catch (const IOException&) {
  }
  EXPECT_EQ(capture.TakeError(), "Error: Unexpected end of stream\n");
  EXPECT_EQ(capture.TakeOutput(), "");
}

}  // namespace
