#include <gtest/gtest.h>
#include <sys/mman.h>

#include "support/huge_text.h"

namespace Testing {

HugeText::HugeText(std::size_t size)
    : bytes_(mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)),
      size_(size) {
  EXPECT_NE(bytes_, MAP_FAILED);
}

HugeText::~HugeText() { munmap(bytes_, size_); }

}  // namespace Testing
