#pragma once

// The records of a run in memory. Everything above this layer reads them from here; docs/formats.md
// describes the file that they come from.
//
// A million records of 60 variables take less than 30 MB: cells are packed, and the keys of records
// stay in memory only where a run writes them.

#include <cstdint>

#include "foundation/growable_array.h"
#include "foundation/string.h"
#include "linalg/bit_matrix.h"
#include "linalg/string_array.h"
#include "linalg/ternary_matrix.h"
#include "linalg/vector.h"

namespace Hovar {

/// A data file in memory: n records of h hospitals with V variables, the intercept included.
///
/// A variable is a pair of columns, one of Z (what the hospital recorded) and one of X (the
/// patient's condition), with a name each; the two are only ever removed together. Records of one
/// hospital stand together, and hospitals are numbered in the order of the file. All numbers count
/// from 0; the comments give the number of entries.
///
/// ReadDataFile fills it, column elimination and reconciliation remove variables, and imputation
/// changes the values, never the missing marks, of p and x.
struct DataSet {
  std::int32_t hospitalCount = 0;  // h
  std::int32_t recordCount = 0;    // n
  std::int32_t variableCount = 0;  // V

  Vell::BitVector y;      // n: the outcome
  Vell::TernaryVector p;  // n: present on admission, the OR of the file's indicators
  Vell::BitMatrix z;      // n x V, column 0 is the intercept (1)
  Vell::TernaryMatrix x;  // n x V, column 0 is the intercept (1, never missing)

  Vell::GrowableArray<Vell::String> hospitalIds;  // h
  Vell::IndexVector hospitalStart;                // h + 1: first record of each hospital, then n
  Vell::IndexVector recordHospital;               // n
  Vell::IndexVector hospitalSize;                 // h: records
  Vell::IndexVector hospitalComplete;             // h: records without a missing value
  Vell::IndexVector hospitalCompleteP0;           // h: and with P = 0
  std::int32_t completeCount = 0;                 // records without a missing value
  std::int32_t completeP0Count = 0;               // and with P = 0
  std::int32_t contradictionCount = 0;            // records with Y = 0 and P = 1, now P = 0
  Vell::BitVector hospitalHasMissing;             // h
  Vell::BitVector recordHasMissing;               // n: P or some X cell is missing

  /// The keys of the records, each followed by a line feed, where the reader was asked to keep
  /// them, the file is plain (plain_data_reader.h) and one array holds them; otherwise empty.
  Vell::GrowableArray<char> keys;

  Vell::StringArray zNames;  // V, the first one is "ZIntercept"
  Vell::StringArray xNames;  // V, the first one is "XIntercept"

  bool HasIncompleteRecords() const noexcept { return completeCount != recordCount; }
  /// Complete and not present on admission: a record of the [Y|X,P=0] model.
  bool IsCompleteWithoutP(std::int32_t record) const noexcept {
    return !recordHasMissing.Get(record) && !p.Value(record);
  }
};

/// Recomputes the missing flags and the counts of complete records, in all and per hospital, from P
/// and X, and logs the counts. `recordHospital` and the numbers of records and hospitals must be
/// set; one pass over the cells.
/// Errors: "Out of memory"; "IO Exception".
void CountNonMissing(DataSet& dataSet);

}  // namespace Hovar
