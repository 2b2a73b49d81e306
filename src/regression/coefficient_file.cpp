#include "regression/coefficient_file.h"

#include <algorithm>

#include "data/column_elimination.h"
#include "foundation/exceptions/exceptions.h"
#include "foundation/io/csv_reader.h"
#include "foundation/io/csv_writer.h"
#include "foundation/io/number_text.h"
#include "messages/error_texts.h"

namespace Hovar {
namespace {

using Vell::IO::ReadWholeField;
using Vell::IO::SkipField;
using Vell::IO::WriteField;

void WriteStandardError(double value, Vell::IO::TextWriter& writer) {
  writer.Write(',');
  if (value >= 0.0) {
    writer.Write(value);
  }
}

void WriteXzTable(const XzTable& table, Vell::IO::TextWriter& writer) {
  for (const double probability : table.probability) {
    writer.Write(',');
    writer.Write(1 - probability);
    writer.Write(',');
    writer.Write(probability);
  }
}

/// Reads a whole cell that holds a standard error or nothing.
double ReadStandardErrorCell(Vell::IO::Stream& stream, Vell::String& scratch) {
  ReadWholeField(scratch, stream);
  return scratch.Length() == 0 ? -1.0 : Vell::IO::ParseReal(scratch);
}

/// The names, sorted byte for byte.
class SortedNames {
 public:
  explicit SortedNames(const Vell::StringArray& names) : names_(names), order_(names.Count()) {
    for (std::int32_t i = 0; i < names.Count(); ++i) {
      order_[i] = i;
    }
    std::sort(order_.begin(), order_.end(), [&names](std::int32_t a, std::int32_t b) {
      return names[a].View() < names[b].View();
    });
  }

  bool Contains(std::string_view name) const {
    const auto* const found = std::lower_bound(
        order_.begin(), order_.end(), name,
        [this](std::int32_t i, std::string_view wanted) { return names_[i].View() < wanted; });
    return found != order_.end() && names_[*found].View() == name;
  }

 private:
  const Vell::StringArray& names_;
  Vell::IndexVector order_;
};

}  // namespace

void WriteCoefficientFile(const RegressionResults& results, Vell::IO::TextWriter& writer) {
  writer.Write("Variables Names,,[X|Z],,,");
  for (const std::string_view label : kModelLabels) {
    writer.Write(',');
    WriteField(writer, label);
    writer.Write(",mse,ese");
  }
  writer.EndLine();
  for (std::int32_t i = 0; i < results.VariableCount(); ++i) {
    WriteField(writer, results.xNames[i]);
    writer.Write(',');
    WriteField(writer, results.zNames[i]);
    if (i == 0) {
      writer.Write(",,,,");
    } else {
      WriteXzTable(results.xzTables[i - 1], writer);
    }
    for (const CoefficientEstimates& block : results.blocks) {
      writer.Write(',');
      writer.Write(block[i].estimate);
      WriteStandardError(block[i].modelStandardError, writer);
      WriteStandardError(block[i].empiricalStandardError, writer);
    }
    writer.EndLine();
  }
}

void ReadCoefficientFile(RegressionResults& results, Vell::IO::Stream& stream) {
  const std::int32_t variables = Vell::IO::MeasureCsv(stream).lineCount - 1;
  results.xNames = Vell::StringArray(variables);
  results.zNames = Vell::StringArray(variables);
  results.xzTables.Resize(variables);  // the last one stays empty: the intercept has no table
  for (CoefficientEstimates& block : results.blocks) {
    block.Resize(variables);
  }
  stream.Seek(0);
  Vell::IO::SkipLine(stream);
  Vell::String scratch;
  for (std::int32_t i = 0; i < variables; ++i) {
    ReadWholeField(results.xNames[i], stream);
    ReadWholeField(results.zNames[i], stream);
    for (std::size_t z = 0; z < XzTable().probability.size(); ++z) {
      SkipField(stream);  // the complement
      if (i == 0) {
        SkipField(stream);
      } else {
        results.xzTables[i - 1].probability[z] = Vell::IO::ReadRealField(stream);
      }
    }
    for (CoefficientEstimates& block : results.blocks) {
      block[i].estimate = Vell::IO::ReadRealField(stream);
      block[i].modelStandardError = ReadStandardErrorCell(stream, scratch);
      block[i].empiricalStandardError = ReadStandardErrorCell(stream, scratch);
    }
  }
}

void ReconcileVariables(DataSet& dataSet, const RegressionResults& results) {
  const SortedNames xNames(results.xNames);
  const SortedNames zNames(results.zNames);
  Vell::IndexVector unmatched;
  for (std::int32_t i = 0; i < dataSet.variableCount; ++i) {
    if (!xNames.Contains(dataSet.xNames[i]) || !zNames.Contains(dataSet.zNames[i])) {
      unmatched.Append(i);
    }
  }
  if (!unmatched.IsEmpty()) {
    RemoveColumns(dataSet, unmatched);
  }
  if (dataSet.variableCount != results.VariableCount()) {
    throw Vell::Exceptions::Exception(Messages::kErrors.variablesMismatch);
  }
}

}  // namespace Hovar
