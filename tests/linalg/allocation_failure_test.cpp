// Every operation of the layer that allocates, with each of its allocations failing in turn.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "linalg/bit_matrix.h"
#include "linalg/cholesky.h"
#include "linalg/kernels/cross_counts.h"
#include "linalg/matrix.h"
#include "linalg/row_echelon.h"
#include "linalg/string_array.h"
#include "linalg/svd.h"
#include "linalg/symmetric_matrix.h"
#include "linalg/ternary_matrix.h"
#include "support/allocation_fault.h"
#include "support/matrices.h"

namespace {

using Testing::AllocationFault;
using Testing::MakeIndexVector;
using Testing::MakeMatrix;
using Testing::MakeSymmetric;
using Testing::MakeVector;

struct Operation {
  std::string name;
  std::function<void()> run;
};

void PrintTo(const Operation& operation, std::ostream* stream) { *stream << operation.name; }

class AllocationFailureTest : public testing::TestWithParam<Operation> {};

TEST_P(AllocationFailureTest, EndsInOutOfMemory) {
  Testing::ExpectOutOfMemoryAtEachAllocation(GetParam().run);
}

template <typename T>
std::function<void()> Copying(const T& original) {
  return [original] { const T copy = original; };
}

// The inputs are made here, before any allocation fails.
std::vector<Operation> Operations() {
  const Vell::SymmetricMatrix factor = MakeSymmetric(2, {2, 1, 3});
  const Vell::Vector vector = MakeVector({1, 2});
  const Vell::Matrix matrix = MakeMatrix(2, 3, {1, 2, 3, 4, 5, 6});
  const Vell::IndexVector list = MakeIndexVector({2, 0});
  const Vell::BitMatrix bits(3, 5);
  const Vell::TernaryMatrix cells(3, 5);
  return {
      {"Vector", [] { Vell::Vector{5}; }},
      {"VectorCopy", Copying(vector)},
      {"VectorAppend",
       [] {
         Vell::IndexVector indices;
         for (std::int32_t i = 0; i < 9; ++i) {
           indices.Append(i);
         }
       }},
      {"Matrix", [] { Vell::Matrix(2, 3); }},
      {"MatrixCopy", Copying(matrix)},
      {"MatrixColumn", [matrix] { static_cast<void>(matrix.Column(1)); }},
      {"SymmetricMatrix", [] { Vell::SymmetricMatrix{4}; }},
      {"ToFullMatrix", [factor] { Vell::ToFullMatrix(factor); }},
      {"BitVector", [] { Vell::BitVector{9}; }},
      {"BitVectorOfNothing", [] { Vell::BitVector{0}; }},
      {"BitMatrix", [] { Vell::BitMatrix(3, 4); }},
      {"BitMatrixCopy", Copying(bits)},
      {"BitMatrixRemoveColumns",
       [list] {
         Vell::BitMatrix matrix(3, 5);
         matrix.RemoveColumns(list);
       }},
      {"TernaryVector", [] { Vell::TernaryVector{9}; }},
      {"TernaryMatrix", [] { Vell::TernaryMatrix(3, 4); }},
      {"TernaryMatrixCopy", Copying(cells)},
      {"TernaryMatrixRemoveColumns",
       [list] {
         Vell::TernaryMatrix matrix(3, 5);
         matrix.RemoveColumns(list);
       }},
      {"StringArray", [] { Vell::StringArray{3}; }},
      {"StringArrayOfTexts",
       [list] {
         Vell::StringArray texts(3);
         for (std::int32_t i = 0; i < 3; ++i) {
           texts[i] = Vell::String("text");
         }
         const Vell::StringArray copy = texts;
         texts.RemoveElements(list);
       }},
      {"Cholesky", [factor] { Vell::Cholesky(factor); }},
      {"CholeskySolve", [factor, vector] { Vell::CholeskySolve(factor, vector); }},
      {"SolveTransposed", [factor, vector] { Vell::SolveTransposed(factor, vector); }},
      {"CholeskyInverse", [factor] { Vell::CholeskyInverse(factor); }},
      {"Decompose",
       [matrix] {
         Vell::SvdResult result;
         Vell::Decompose(result, matrix);
       }},
      {"ReduceToRowEchelon", [matrix] { Vell::ReduceToRowEchelon(matrix); }},
      {"CrossCountsOfBits", [bits] { Vell::CrossCounts(bits); }},
      {"CrossCountsOfCells",
       [cells] { Vell::CrossCounts(cells, [](std::int32_t) { return true; }); }},
  };
}

INSTANTIATE_TEST_SUITE_P(Operations, AllocationFailureTest, testing::ValuesIn(Operations()),
                         [](const testing::TestParamInfo<Operation>& info) {
                           return info.param.name;
                         });

// A container that could not be resized holds no block.
TEST(FailedResizeTest, AVectorIsEmpty) {
  Vell::Vector vector(3);
  Testing::ExpectRaises<Vell::Exceptions::OutOfMemoryException>("Out of memory", [&] {
    const AllocationFault fault(1);
    vector.Resize(4);
  });
  EXPECT_EQ(vector.Size(), 0);
  EXPECT_EQ(vector.Capacity(), 0);
  EXPECT_EQ(vector.begin(), nullptr);
}

TEST(FailedResizeTest, ABitVectorIsEmpty) {
  Vell::BitVector vector(30);
  Testing::ExpectRaises<Vell::Exceptions::OutOfMemoryException>("Out of memory", [&] {
    const AllocationFault fault(1);
    vector.Resize(40);
  });
  EXPECT_EQ(vector.Size(), 0);
  EXPECT_EQ(vector.ByteCount(), 0);
}

TEST(FailedResizeTest, ATernaryVectorIsEmpty) {
  Vell::TernaryVector vector(30);
  Testing::ExpectRaises<Vell::Exceptions::OutOfMemoryException>("Out of memory", [&] {
    const AllocationFault fault(1);
    vector.Resize(40);
  });
  EXPECT_EQ(vector.Size(), 0);
  EXPECT_EQ(vector.ByteCount(), 0);
}

}  // namespace
