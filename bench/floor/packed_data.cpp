#include "packed_data.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace Hovar::Floor {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;
constexpr std::size_t kChunk = 64;          // bytes that are classified at once
constexpr std::size_t kLongestLine = 4096;  // of which a part can be left from the last block

[[noreturn]] void Refuse(const char* reason) {
  static_cast<void>(std::fprintf(stderr, "hovar_floor: %s\n", reason));
  std::exit(2);
}

/// One bit for each of 64 bytes.
struct ByteClasses {
  std::uint64_t comma;
  std::uint64_t lineFeed;
  std::uint64_t zero;
  std::uint64_t one;
};

#if defined(__AVX512BW__)

std::uint64_t BytesEqual(__m512i bytes, char wanted) noexcept {
  return _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(wanted));
}

ByteClasses Classify(const char* text) noexcept {
  const __m512i bytes = _mm512_loadu_si512(text);
  return {BytesEqual(bytes, ','), BytesEqual(bytes, '\n'), BytesEqual(bytes, '0'),
          BytesEqual(bytes, '1')};
}

#elif defined(__AVX2__)

struct TwoHalves {
  __m256i low;
  __m256i high;
};

std::uint64_t BytesEqual(const TwoHalves& bytes, char wanted) noexcept {
  const __m256i pattern = _mm256_set1_epi8(wanted);
  const auto mask = [&](__m256i half) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(half, pattern)));
  };
  return std::uint64_t{mask(bytes.high)} << 32 | mask(bytes.low);
}

ByteClasses Classify(const char* text) noexcept {
  const TwoHalves bytes{_mm256_loadu_si256(reinterpret_cast<const __m256i*>(text)),
                        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text + 32))};
  return {BytesEqual(bytes, ','), BytesEqual(bytes, '\n'), BytesEqual(bytes, '0'),
          BytesEqual(bytes, '1')};
}

#else

ByteClasses Classify(const char* text) noexcept {
  ByteClasses classes{};
  for (std::size_t i = 0; i < kChunk; ++i) {
    classes.comma |= std::uint64_t{text[i] == ','} << i;
    classes.lineFeed |= std::uint64_t{text[i] == '\n'} << i;
    classes.zero |= std::uint64_t{text[i] == '0'} << i;
    classes.one |= std::uint64_t{text[i] == '1'} << i;
  }
  return classes;
}

#endif

/// The bits of `source` at the set bits of `mask`, moved together.
std::uint64_t ExtractBits(std::uint64_t source, std::uint64_t mask) noexcept {
#if defined(__BMI2__)
  return _pext_u64(source, mask);
#else
  std::uint64_t result = 0;
  for (std::uint64_t place = 1; mask != 0; place <<= 1, mask &= mask - 1) {
    result |= (source & mask & -mask) != 0 ? place : 0;
  }
  return result;
#endif
}

/// A line's cells after the hospital ID as two rows of bits.
class CellBits {
 public:
  /// Y, up to 60 indicators and twice 63 covariates.
  static constexpr int kMost = 187;

  /// Up to 64 cells; there must not be more than kMost already.
  void Append(std::uint64_t value, std::uint64_t missing, int count) noexcept {
    const auto word = static_cast<std::size_t>(count_) / 64;
    const int shift = count_ % 64;
    value_[word] |= value << shift;
    value_[word + 1] |= value >> 1 >> (63 - shift);
    missing_[word] |= missing << shift;
    missing_[word + 1] |= missing >> 1 >> (63 - shift);
    count_ += count;
  }
  int Count() const noexcept { return count_; }
  std::uint64_t Value(int first, int count) const noexcept { return Part(value_, first, count); }
  std::uint64_t Missing(int first, int count) const noexcept {
    return Part(missing_, first, count);
  }

 private:
  static std::uint64_t Part(const std::uint64_t* words, int first, int count) noexcept {
    const auto word = static_cast<std::size_t>(first) / 64;
    const int shift = first % 64;
    const std::uint64_t bits = words[word] >> shift | words[word + 1] << 1 << (63 - shift);
    return count == 0 ? 0 : bits & ~std::uint64_t{0} >> (64 - count);
  }

  std::uint64_t value_[5] = {};
  std::uint64_t missing_[5] = {};
  int count_ = 0;
};

class LineParser {
 public:
  LineParser(PackedData& data, std::int32_t poaCount, std::size_t fileSize)
      : data_(data), poaCount_(poaCount), fileSize_(fileSize) {}

  /// Parses the whole lines of a block; 64 bytes after it can be read.
  void ParseBlock(const char* text, const char* end) {
    if (cellCount_ == 0) {
      text = ParseHeader(text, end);
    }
    while (text != end) {
      text = ParseRecord(text);
    }
  }

 private:
  const char* ParseHeader(const char* text, const char* end) {
    const char* const lineEnd = std::find(text, end, '\n');
    cellCount_ = static_cast<int>(std::count(text, lineEnd, ',')) - 1;
    const int covariates = cellCount_ - 1 - poaCount_;
    if (covariates < 0 || covariates % 2 != 0 || covariates / 2 > 63 || poaCount_ > 60) {
      Refuse("the file's shape is not one that the floor can read");
    }
    data_.columns = covariates / 2 + 1;
    return lineEnd + 1;
  }

  const char* ParseRecord(const char* text) {
    const std::uint64_t commas = Classify(text).comma;
    const std::uint64_t behindFirst = commas & (commas - 1);
    if (behindFirst == 0) {
      Refuse("the key and the hospital ID take more than 64 bytes");
    }
    const char* const id = text + std::countr_zero(commas) + 1;
    const char* const idEnd = text + std::countr_zero(behindFirst);
    CellBits cells;
    const char* const next = ParseCells(cells, idEnd + 1);
    if (cells.Count() != cellCount_) {
      Refuse("variable number of fields");
    }
    BeginRecord(text, next, {id, static_cast<std::size_t>(idEnd - id)});
    Store(cells);
    return next;
  }

  static const char* ParseCells(CellBits& cells, const char* text) {
    std::uint64_t separatorBefore = 1;
    std::uint64_t oneBefore = 0;
    while (true) {
      const ByteClasses bytes = Classify(text);
      // The bits up to the line feed, all of them where there is none.
      const std::uint64_t line = bytes.lineFeed ^ (bytes.lineFeed - 1);
      const std::uint64_t separators = (bytes.comma | bytes.lineFeed) & line;
      const std::uint64_t ones = bytes.one & line;
      const std::uint64_t behindSeparator = separators << 1 | separatorBefore;
      const std::uint64_t digits = (bytes.zero | ones) & line;
      // Everything is a separator or a digit, and a digit stands after a separator.
      if ((((~separators & ~digits) | (digits & ~behindSeparator)) & line) != 0) {
        Refuse("a cell is neither empty nor 0 nor 1");
      }
      cells.Append(ExtractBits(ones << 1 | oneBefore, separators),
                   ExtractBits(behindSeparator, separators), std::popcount(separators));
      if (cells.Count() > CellBits::kMost) {
        Refuse("variable number of fields");
      }
      if (bytes.lineFeed != 0) {
        return text + std::countr_zero(bytes.lineFeed) + 1;
      }
      separatorBefore = separators >> 63;
      oneBefore = ones >> 63;
      text += kChunk;
    }
  }

  void BeginRecord(const char* line, const char* next, std::string_view hospital) {
    const auto used = static_cast<std::size_t>(data_.records);
    if (used == data_.flags.Capacity()) {
      const std::size_t guess = fileSize_ / static_cast<std::size_t>(next - line);
      const std::size_t capacity = std::max(guess + guess / 32 + 64, 2 * used);
      data_.z.Grow(capacity, used);
      data_.x.Grow(capacity, used);
      data_.xMissing.Grow(capacity, used);
      data_.flags.Grow(capacity, used);
    }
    if (used == 0 || !IsLastHospital(hospital)) {
      hospital_ = hospital;
      // So that IsLastHospital can read eight bytes.
      hospital_.reserve(sizeof(std::uint64_t));
      data_.hospitalStart.push_back(data_.records);
    }
  }

  /// Reads up to seven bytes after the ID, which the line's cells or the buffer's end have.
  bool IsLastHospital(std::string_view hospital) const noexcept {
    if (hospital.size() != hospital_.size()) {
      return false;
    }
    if (hospital.size() > sizeof(std::uint64_t)) {
      return hospital == hospital_;
    }
    std::uint64_t a = 0;
    std::uint64_t b = 0;
    std::memcpy(&a, hospital.data(), sizeof a);
    std::memcpy(&b, hospital_.data(), sizeof b);
    const std::size_t unused = 8 * (sizeof a - hospital.size());
    // The first bytes are the lower ones; an empty ID leaves none.
    return unused == 64 || (a ^ b) << unused == 0;
  }

  void Store(const CellBits& cells) {
    const int covariates = data_.columns - 1;
    const int firstZ = 1 + poaCount_;
    if (cells.Missing(0, 1) != 0 || cells.Missing(firstZ, covariates) != 0) {
      Refuse("an empty Y or Z cell");
    }
    const bool outcome = cells.Value(0, 1) != 0;
    const bool presentIsMissing = cells.Missing(1, poaCount_) != 0;
    const bool present = cells.Value(1, poaCount_) != 0 && (outcome || presentIsMissing);
    const std::uint64_t xMissing = cells.Missing(firstZ + covariates, covariates) << 1;
    const bool hasMissing = presentIsMissing || xMissing != 0;
    const auto record = static_cast<std::size_t>(data_.records++);
    data_.z[record] = cells.Value(firstZ, covariates) << 1 | 1;
    data_.x[record] = cells.Value(firstZ + covariates, covariates) << 1 | 1;
    data_.xMissing[record] = xMissing;
    data_.flags[record] = static_cast<std::uint8_t>(
        (outcome ? kOutcome : 0) | (present ? kPresent : 0) |
        (presentIsMissing ? kPresentIsMissing : 0) | (hasMissing ? kRecordHasMissing : 0));
    data_.complete += hasMissing ? 0 : 1;
    data_.completeWithoutP += hasMissing || present ? 0 : 1;
  }

  PackedData& data_;
  std::int32_t poaCount_;
  std::size_t fileSize_;
  int cellCount_ = 0;
  std::string hospital_;
};

}  // namespace

PackedData ReadPackedData(const std::string& path, std::int32_t poaCount) {
  const int file = open(path.c_str(), O_RDONLY);
  struct stat status {};
  if (file < 0 || fstat(file, &status) != 0) {
    Refuse("the data file could not be opened");
  }
  PackedData data;
  LineParser parser(data, poaCount, static_cast<std::size_t>(status.st_size));
  const auto buffer = std::make_unique<char[]>(kLongestLine + kBlock + kChunk);
  std::size_t kept = 0;  // bytes of a line that the last block cut
  while (true) {
    const ssize_t count = read(file, buffer.get() + kept, kBlock);
    if (count <= 0) {
      break;
    }
    const std::size_t used = kept + static_cast<std::size_t>(count);
    const std::size_t whole = std::string_view(buffer.get(), used).rfind('\n') + 1;
    parser.ParseBlock(buffer.get(), buffer.get() + whole);
    kept = used - whole;
    if (kept > kLongestLine) {
      Refuse("a line is too long");
    }
    std::memmove(buffer.get(), buffer.get() + whole, kept);
  }
  close(file);
  data.hospitalStart.push_back(data.records);
  return data;
}

}  // namespace Hovar::Floor
