#pragma once

// What a logistic fit reads. The models differ in nothing else: which cells are the response, which
// the design, and which records take part. All arithmetic is shared and works on the columns that
// are set in a record.

#include <concepts>
#include <cstdint>

#include "data/data_set.h"
#include "linalg/kernels/set_columns.h"

namespace Hovar {

/// Records, and the columns of the design, count from 0. A fit asks for each record once, in their
/// order. A record's word `word` has bit b set where column 64 * word + b is set; there is one for
/// every 64 columns or part of them.
template <typename T>
concept RowSource = requires(const T& rows, std::int32_t record, std::int32_t word) {
  { rows.RecordCount() } -> std::same_as<std::int32_t>;
  { rows.ColumnCount() } -> std::same_as<std::int32_t>;
  { rows.Includes(record) } -> std::same_as<bool>;  // takes part in this fit
  { rows.Response(record) } -> std::same_as<bool>;  // asked only of records that take part
  { rows.SetColumnWord(record, word) } -> std::same_as<std::uint64_t>;
};

/// A row source over a packed design, which must outlive it; `Response` and `Includes` are
/// functions of a record's index.
template <typename Design, typename ResponseOf, typename IncludesRecord>
class DesignRows {
 public:
  DesignRows(const Design& design, ResponseOf response, IncludesRecord includes)
      : design_(design), response_(response), includes_(includes) {}

  std::int32_t RecordCount() const noexcept { return design_.Rows(); }
  std::int32_t ColumnCount() const noexcept { return design_.Columns(); }
  bool Includes(std::int32_t record) const noexcept { return includes_(record); }
  bool Response(std::int32_t record) const noexcept { return response_(record); }
  /// The set columns among the 64 for which a word stands.
  std::uint64_t SetColumnWord(std::int32_t record, std::int32_t word) const noexcept {
    return Vell::SetColumnWord(design_.Row(record), word);
  }

 private:
  const Design& design_;
  ResponseOf response_;
  IncludesRecord includes_;
};

// The five models. Each refers to the data set, which must outlive it.

/// [P|X]: present on admission given the patient's conditions, complete records.
inline auto RowsOfPGivenX(const DataSet& data) {
  return DesignRows(
      data.x, [&data](std::int32_t i) { return data.p.Value(i); },
      [&data](std::int32_t i) { return !data.recordHasMissing.Get(i); });
}

/// [Y|Z]: outcome given what the hospital recorded, all records.
inline auto RowsOfYGivenZ(const DataSet& data) {
  return DesignRows(
      data.z, [&data](std::int32_t i) { return data.y.Get(i); }, [](std::int32_t) { return true; });
}

/// [Y|X]: outcome given the patient's conditions, complete records.
inline auto RowsOfYGivenX(const DataSet& data) {
  return DesignRows(
      data.x, [&data](std::int32_t i) { return data.y.Get(i); },
      [&data](std::int32_t i) { return !data.recordHasMissing.Get(i); });
}

/// [Y|X,P=0]: the same for complete records whose condition was not present on admission.
inline auto RowsOfYGivenXWithoutP(const DataSet& data) {
  return DesignRows(
      data.x, [&data](std::int32_t i) { return data.y.Get(i); },
      [&data](std::int32_t i) { return data.IsCompleteWithoutP(i); });
}

/// [Y|X,P=0] on the data as currently imputed: every record whose current P is 0, complete or not.
inline auto RowsOfYGivenXWithoutImputedP(const DataSet& data) {
  return DesignRows(
      data.x, [&data](std::int32_t i) { return data.y.Get(i); },
      [&data](std::int32_t i) { return !data.p.Value(i); });
}

}  // namespace Hovar
