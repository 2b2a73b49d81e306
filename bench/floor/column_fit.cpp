#include "column_fit.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "normal_solve.h"

#if defined(__AVX512DQ__)
#include <immintrin.h>
#endif

namespace Hovar::Floor {

namespace {

constexpr std::size_t kBlock = ArrangedDesign::kBlock;
constexpr std::size_t kDigits = 16;  // of four bits, to a word

/// Products of one factor for every set bit.
class FactorTables {
 public:
  static constexpr std::size_t kAtOnce = 32;

  explicit FactorTables(const Coefficients& factors) noexcept {
    for (std::size_t digit = 0; digit < kDigits; ++digit) {
      std::array<double, 16>& table = tables_[digit];
      table[0] = 1;
      for (std::size_t bit = 0; bit < 4; ++bit) {
        for (std::size_t i = 0; i < std::size_t{1} << bit; ++i) {
          table[i + (std::size_t{1} << bit)] = table[i] * factors[4 * digit + bit];
        }
      }
    }
  }

  /// The products of kAtOnce words.
  void Products(double* products, const std::uint64_t* words) const noexcept {
#if defined(__AVX512DQ__)
    constexpr std::size_t kVectors = kAtOnce / 8;
    __m512i word[kVectors];
    __m512d product[kVectors];
    for (std::size_t v = 0; v < kVectors; ++v) {
      word[v] = _mm512_loadu_si512(words + 8 * v);
      product[v] = _mm512_set1_pd(1);
    }
    for (const std::array<double, 16>& table : tables_) {
      const __m512d low = _mm512_load_pd(table.data());
      const __m512d high = _mm512_load_pd(table.data() + 8);
      for (std::size_t v = 0; v < kVectors; ++v) {
        // The look-up uses the lowest four bits of each word.
        product[v] = _mm512_mul_pd(product[v], _mm512_permutex2var_pd(low, word[v], high));
        // The form with a mask of ones, as g++ 12 warns of its own header otherwise.
        word[v] = _mm512_maskz_srli_epi64(0xFF, word[v], 4);
      }
    }
    for (std::size_t v = 0; v < kVectors; ++v) {
      _mm512_storeu_pd(products + 8 * v, product[v]);
    }
#else
    for (std::size_t i = 0; i < kAtOnce; ++i) {
      std::array<double, 2> product = {1, 1};
      for (std::size_t digit = 0; digit < kDigits; digit += 2) {
        product[0] *= tables_[digit][words[i] >> 4 * digit & 15];
        product[1] *= tables_[digit + 1][words[i] >> 4 * (digit + 1) & 15];
      }
      products[i] = product[0] * product[1];
    }
#endif
  }

 private:
  alignas(64) std::array<std::array<double, 16>, kDigits> tables_{};
};

/// What a pass computes for each record of a block.
struct Block {
  std::size_t first = 0;
  std::size_t count = 0;
  alignas(64) std::array<double, kBlock> weight{};
  alignas(64) std::array<double, kBlock> residual{};
  alignas(64) std::array<double, kBlock> root{};     // sqrt(w), for correlated records
  alignas(64) std::array<double, kBlock> pearson{};  // (y - mu) / sqrt(w), for correlated records
};

struct HospitalSums {
  alignas(64) Coefficients a{};  // of y - mu
  alignas(64) Coefficients b{};  // of sqrt(w)
  double pearson = 0;
};

/// What a pass sums up.
struct PassSums {
  SquareMatrix information{};  // the lower triangle
  Coefficients score{};
  std::vector<HospitalSums> hospitals;
  double pearsonSquares = 0;
};

/// The numbers of kAtOnce records from the products of their factors, e^-eta.
void EvaluateIndependent(Block& block, std::size_t first, const double* exponentials,
                         const std::uint8_t* responses) noexcept {
  for (std::size_t i = 0; i < FactorTables::kAtOnce; ++i) {
    const double mu = 1 / (1 + exponentials[i]);
    block.weight[first + i] = exponentials[i] * mu * mu;
    block.residual[first + i] = responses[i] - mu;
  }
}

/// The same from e^(-eta/2).
void EvaluateCorrelated(Block& block, std::size_t first, const double* halves,
                        const std::uint8_t* responses) noexcept {
  for (std::size_t i = 0; i < FactorTables::kAtOnce; ++i) {
    const double s = halves[i];
    const double onePlus = 1 + s * s;
    const double quotient = 1 / (s * onePlus);
    const double mu = s * quotient;
    const double root = s * mu;
    block.weight[first + i] = root * root;
    block.root[first + i] = root;
    block.residual[first + i] = responses[i] - mu;
    // (1 - mu) / sqrt(w) = s and -mu / sqrt(w) = -1 / s
    block.pearson[first + i] = responses[i] != 0 ? s : -(quotient * onePlus);
  }
}

void EvaluateBlock(Block& block, const ArrangedDesign& design, const FactorTables& tables,
                   bool useGee) noexcept {
  constexpr std::size_t kAtOnce = FactorTables::kAtOnce;
  alignas(64) std::array<double, kAtOnce> products{};
  for (std::size_t i = 0; i < block.count; i += kAtOnce) {
    std::array<std::uint8_t, kAtOnce> last{};
    const std::uint8_t* responses = design.Source().responses.data() + block.first + i;
    if (i + kAtOnce > block.count) {
      std::copy_n(responses, block.count - i, last.begin());
      responses = last.data();
    }
    tables.Products(products.data(), design.Words() + block.first + i);
    if (useGee) {
      EvaluateCorrelated(block, i, products.data(), responses);
    } else {
      EvaluateIndependent(block, i, products.data(), responses);
    }
  }
}

double Sum(const double* values, std::size_t count) noexcept {
  std::array<double, 32> lanes{};
  std::size_t i = 0;
  for (; i + lanes.size() <= count; i += lanes.size()) {
    for (std::size_t lane = 0; lane < lanes.size(); ++lane) {
      lanes[lane] += values[i + lane];
    }
  }
  double sum = 0;
  for (; i < count; ++i) {
    sum += values[i];
  }
  for (const double lane : lanes) {
    sum += lane;
  }
  return sum;
}

#if defined(__AVX512DQ__)

/// Byte `index` of a word as the mask of eight sums.
__mmask8 MaskOf(const std::uint64_t* word, std::size_t index) noexcept {
  return reinterpret_cast<const std::uint8_t*>(word)[index];
}

/// H(j, k) += w for the records of a column's list and the columns k of the first kRegisters bytes.
/// Returns the sum of the residuals.
template <std::size_t kRegisters>
double AddColumn(double* row, const std::uint16_t* list, std::size_t count,
                 const std::uint64_t* words, const double* weight,
                 const double* residual) noexcept {
  // Few sums wait for each other's additions, so they are held more than once.
  constexpr std::size_t kSets = kRegisters <= 2 ? 4 : 2;
  __m512d sums[kSets][kRegisters];
  double score[kSets] = {};
  for (auto& set : sums) {
    for (__m512d& sum : set) {
      sum = _mm512_setzero_pd();
    }
  }
  const auto add = [&](std::size_t set, std::size_t record) {
    const __m512d w = _mm512_set1_pd(weight[record]);
    for (std::size_t r = 0; r < kRegisters; ++r) {
      sums[set][r] = _mm512_mask_add_pd(sums[set][r], MaskOf(words + record, r), sums[set][r], w);
    }
    score[set] += residual[record];
  };
  std::size_t i = 0;
  for (; i + kSets <= count; i += kSets) {
    for (std::size_t set = 0; set < kSets; ++set) {
      add(set, list[i + set]);
    }
  }
  for (; i < count; ++i) {
    add(0, list[i]);
  }
  double total = 0;
  for (std::size_t set = 0; set < kSets; ++set) {
    for (std::size_t r = 0; r < kRegisters; ++r) {
      _mm512_storeu_pd(row + 8 * r, _mm512_add_pd(_mm512_loadu_pd(row + 8 * r), sums[set][r]));
    }
    total += score[set];
  }
  return total;
}

void AddInformation(PassSums& sums, const Block& block, const ArrangedDesign& design,
                    std::size_t index) {
  using Add = double (*)(double*, const std::uint16_t*, std::size_t, const std::uint64_t*,
                         const double*, const double*) noexcept;
  static constexpr Add kAdd[] = {AddColumn<1>, AddColumn<2>, AddColumn<3>, AddColumn<4>,
                                 AddColumn<5>, AddColumn<6>, AddColumn<7>, AddColumn<8>};
  sums.information[0][0] += Sum(block.weight.data(), block.count);
  sums.score[0] += Sum(block.residual.data(), block.count);
  for (std::size_t j = 1; j < design.Source().columns; ++j) {
    sums.score[j] += kAdd[j / 8](sums.information[j].data(), design.ListBegin(index, j),
                                 design.ListSize(index, j), design.Words() + block.first,
                                 block.weight.data(), block.residual.data());
  }
}

/// Adds the records from `first` to `end` of a block, all of one hospital.
template <std::size_t kRegisters>
void AddHospital(HospitalSums& sums, const Block& block, const std::uint64_t* words,
                 std::size_t first, std::size_t end) noexcept {
  __m512d a[kRegisters];
  __m512d b[kRegisters];
  for (std::size_t r = 0; r < kRegisters; ++r) {
    a[r] = _mm512_load_pd(sums.a.data() + 8 * r);
    b[r] = _mm512_load_pd(sums.b.data() + 8 * r);
  }
  for (std::size_t i = first; i < end; ++i) {
    const __m512d residual = _mm512_set1_pd(block.residual[i]);
    const __m512d root = _mm512_set1_pd(block.root[i]);
    for (std::size_t r = 0; r < kRegisters; ++r) {
      const __mmask8 mask = MaskOf(words + i, r);
      a[r] = _mm512_mask_add_pd(a[r], mask, a[r], residual);
      b[r] = _mm512_mask_add_pd(b[r], mask, b[r], root);
    }
    sums.pearson += block.pearson[i];
  }
  for (std::size_t r = 0; r < kRegisters; ++r) {
    _mm512_store_pd(sums.a.data() + 8 * r, a[r]);
    _mm512_store_pd(sums.b.data() + 8 * r, b[r]);
  }
}

void AddHospital(HospitalSums& sums, const Block& block, const ArrangedDesign& design,
                 std::size_t first, std::size_t end) noexcept {
  using Add = void (*)(HospitalSums&, const Block&, const std::uint64_t*, std::size_t,
                       std::size_t) noexcept;
  static constexpr Add kAdd[] = {AddHospital<1>, AddHospital<2>, AddHospital<3>, AddHospital<4>,
                                 AddHospital<5>, AddHospital<6>, AddHospital<7>, AddHospital<8>};
  kAdd[(design.Source().columns - 1) / 8](sums, block, design.Words() + block.first, first, end);
}

#else

void AddInformation(PassSums& sums, const Block& block, const ArrangedDesign& design,
                    std::size_t /*index*/) {
  for (std::size_t i = 0; i < block.count; ++i) {
    const std::uint64_t word = design.Words()[block.first + i];
    for (std::uint64_t rows = word; rows != 0; rows &= rows - 1) {
      const auto j = static_cast<std::size_t>(std::countr_zero(rows));
      sums.score[j] += block.residual[i];
      for (std::uint64_t k = word & ((rows & -rows) * 2 - 1); k != 0; k &= k - 1) {
        sums.information[j][static_cast<std::size_t>(std::countr_zero(k))] += block.weight[i];
      }
    }
  }
}

void AddHospital(HospitalSums& sums, const Block& block, const ArrangedDesign& design,
                 std::size_t first, std::size_t end) noexcept {
  for (std::size_t i = first; i < end; ++i) {
    for (std::uint64_t bits = design.Words()[block.first + i]; bits != 0; bits &= bits - 1) {
      const auto j = static_cast<std::size_t>(std::countr_zero(bits));
      sums.a[j] += block.residual[i];
      sums.b[j] += block.root[i];
    }
    sums.pearson += block.pearson[i];
  }
}

#endif

/// Adds the records of a block to their hospitals; `hospital` is that of its first record and
/// becomes that of its last.
void AddHospitals(PassSums& sums, const Block& block, const ArrangedDesign& design,
                  std::size_t& hospital) {
  const std::vector<std::int32_t>& start = design.Source().hospitalStart;
  std::size_t i = 0;
  while (true) {
    const std::size_t end =
        std::min(static_cast<std::size_t>(start[hospital + 1]) - block.first, block.count);
    AddHospital(sums.hospitals[hospital], block, design, i, end);
    i = end;
    if (i == block.count) {
      break;
    }
    ++hospital;
  }
  std::array<double, 8> lanes{};
  for (i = 0; i < block.count; i += 8) {
    const std::size_t count = std::min<std::size_t>(8, block.count - i);
    for (std::size_t lane = 0; lane < count; ++lane) {
      lanes[lane] += block.pearson[i + lane] * block.pearson[i + lane];
    }
  }
  sums.pearsonSquares += Sum(lanes.data(), lanes.size());
}

/// The information and the score for coefficients that are all 0: w = 1/4 and mu = 1/2.
void TakeCounts(PassSums& sums, const ArrangedDesign& design) noexcept {
  for (std::size_t j = 0; j < design.Source().columns; ++j) {
    for (std::size_t k = 0; k <= j; ++k) {
      sums.information[j][k] = static_cast<double>(design.Together(j, k)) / 4;
    }
    sums.score[j] = static_cast<double>(design.WithResponse(j)) -
                    static_cast<double>(design.Together(j, j)) / 2;
  }
}

void RunPass(PassSums& sums, const ArrangedDesign& design, const Coefficients& beta, bool useGee,
             bool isFirst) {
  static Block block;
  sums.information = {};
  sums.score = {};
  sums.pearsonSquares = 0;
  std::fill(sums.hospitals.begin(), sums.hospitals.end(), HospitalSums{});
  if (isFirst) {
    TakeCounts(sums, design);
    if (!useGee) {
      return;
    }
  }
  Coefficients factors{};
  for (std::size_t j = 0; j < kMaxColumns; ++j) {
    factors[j] = std::exp(useGee ? -beta[j] / 2 : -beta[j]);
  }
  const FactorTables tables(factors);
  const Design& source = design.Source();
  std::size_t hospital = 0;
  std::size_t index = 0;
  for (block.first = 0; block.first < source.records; block.first += kBlock) {
    block.count = std::min(kBlock, source.records - block.first);
    if (useGee && block.first == static_cast<std::size_t>(source.hospitalStart[hospital + 1])) {
      ++hospital;
    }
    EvaluateBlock(block, design, tables, useGee);
    if (!isFirst) {
      AddInformation(sums, block, design, index);
    }
    if (useGee) {
      AddHospitals(sums, block, design, hospital);
    }
    ++index;
  }
}

/// Turns the hospital sums into the score and the information, and a hospital's `a` into its score.
/// Returns the working correlation alpha.
double Correlate(PassSums& sums, const Design& design) {
  const std::size_t p = design.columns;
  double pairs = 0;
  double pearsonSums = 0;
  const auto sizeOf = [&](std::size_t h) {
    return static_cast<double>(design.hospitalStart[h + 1] - design.hospitalStart[h]);
  };
  for (std::size_t h = 0; h < sums.hospitals.size(); ++h) {
    pairs += sizeOf(h) * (sizeOf(h) - 1);
    pearsonSums += sums.hospitals[h].pearson * sums.hospitals[h].pearson;
  }
  const auto columns = static_cast<double>(p);
  const double phi = sums.pearsonSquares / (static_cast<double>(design.records) - columns);
  const double alpha = (pearsonSums - sums.pearsonSquares) / ((pairs - columns) * phi);
  sums.score = {};
  for (std::size_t index = 0; index < sums.hospitals.size(); ++index) {
    HospitalSums& h = sums.hospitals[index];
    const double c = alpha / ((sizeOf(index) - 1) * alpha + 1);
    for (std::size_t j = 0; j < p; ++j) {
      const double factor = c * h.b[j];
      h.a[j] -= factor * h.pearson;
      sums.score[j] += h.a[j];
      for (std::size_t k = 0; k <= j; ++k) {
        sums.information[j][k] -= factor * h.b[k];
      }
    }
  }
  return alpha;
}

double LargestMagnitude(const Coefficients& values) noexcept {
  double largest = 0;
  for (const double value : values) {
    largest = std::max(largest, std::fabs(value));
  }
  return largest;
}

void SetStandardErrors(Fit& fit, const PassSums& sums, std::size_t p) {
  SquareMatrix inverse{};
  for (std::size_t j = 0; j < p; ++j) {
    inverse[j][j] = 1;
    Solve(inverse[j], sums.information, p);
    fit.standardError[j] = std::sqrt(inverse[j][j] * (1 - fit.alpha));
  }
  // H^-1 (sum of U U^T) H^-1 has the squares of the entries of H^-1 U on its diagonal.
  Coefficients squares{};
  for (const HospitalSums& h : sums.hospitals) {
    Coefficients solved{};
    for (std::size_t j = 0; j < p; ++j) {
      for (std::size_t k = 0; k < p; ++k) {
        solved[k] += inverse[j][k] * h.a[j];
      }
    }
    for (std::size_t j = 0; j < p; ++j) {
      squares[j] += solved[j] * solved[j];
    }
  }
  for (std::size_t j = 0; j < p; ++j) {
    fit.empiricalStandardError[j] = std::sqrt(squares[j]);
  }
}

/// Puts what stands at positions back to the design's columns.
void RestoreOrder(Coefficients& values, const ArrangedDesign& design) noexcept {
  const Coefficients arranged = values;
  for (std::size_t position = 0; position < kMaxColumns; ++position) {
    values[design.ColumnAt(position)] = arranged[position];
  }
}

}  // namespace

Fit FitDesign(const Design& design, double lambda, bool useGee, int passes) {
  const ArrangedDesign arranged(design);
  const std::size_t p = design.columns;
  Fit fit;
  PassSums sums;
  sums.hospitals.resize(useGee ? design.hospitalStart.size() - 1 : 0);
  while (true) {
    RunPass(sums, arranged, fit.beta, useGee, fit.passes == 0);
    if (useGee) {
      fit.alpha = Correlate(sums, design);
    }
    Coefficients step = sums.score;
    for (std::size_t j = 0; j < p; ++j) {
      sums.information[j][j] += lambda;
      step[j] -= lambda * fit.beta[j];
    }
    Factor(sums.information, p);
    Solve(step, sums.information, p);
    ++fit.passes;
    const bool converged = LargestMagnitude(step) <= 1e-8 * LargestMagnitude(fit.beta);
    if (passes > 0 ? fit.passes == passes : converged) {
      break;
    }
    for (std::size_t j = 0; j < p; ++j) {
      fit.beta[j] += step[j];
    }
  }
  SetStandardErrors(fit, sums, p);
  for (Coefficients* values : {&fit.beta, &fit.standardError, &fit.empiricalStandardError}) {
    RestoreOrder(*values, arranged);
  }
  return fit;
}

}  // namespace Hovar::Floor
