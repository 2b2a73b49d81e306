#include <gtest/gtest.h>
#include <windows.h>

#include "support/huge_text.h"

namespace Testing {

HugeText::HugeText(std::size_t size)
    : bytes_(VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READONLY)), size_(size) {
  EXPECT_NE(bytes_, nullptr);
}

HugeText::~HugeText() { VirtualFree(bytes_, 0, MEM_RELEASE); }

}  // namespace Testing
