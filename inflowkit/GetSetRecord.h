#pragma once

// Field access to the rate/IPR exchange record (_tGetSetData). The caller owns the record's
// definition; the library only knows where each field sits and reads or writes it by byte offset,
// so no struct of ours is ever laid over the caller's memory.
//
//   offset 0    int32      iSize (whole record, kSize)
//          4    int32      iWellIndex
//          16   double[10] oil rate, STB/day
//          96   double[10] water rate, STB/day
//          176  double[10] gas rate, MMscf/day
//          256  double[10] pressure, psig
//          336  double[10] mass rate
//          416  double[10] temperature
//          496  int32      iNumPoints, rows in use

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "inflowkit/InflowKit.h"

namespace inflowkit::getset {

inline constexpr std::size_t kSize = 105368;
inline constexpr int kMaxRows = 10;
// Magnitudes at or above this mark an entry that holds no value.
inline constexpr double kNoValue = 3.2e35;

enum class Column : std::size_t {
    kOil = 16,
    kWater = 96,
    kGas = 176,
    kPressure = 256,
    kMass = 336,
    kTemperature = 416,
};

inline constexpr std::size_t kSizeAt = 0;
inline constexpr std::size_t kWellIndexAt = 4;
inline constexpr std::size_t kNumPointsAt = 496;

inline bool hasValue(double v) {
    return std::isfinite(v) && std::fabs(v) < kNoValue;
}

inline int32_t readInt(const _tGetSetData* record, std::size_t at) {
    int32_t v = 0;
    std::memcpy(&v, reinterpret_cast<const unsigned char*>(record) + at, sizeof v);
    return v;
}

inline void writeInt(_tGetSetData* record, std::size_t at, int32_t v) {
    std::memcpy(reinterpret_cast<unsigned char*>(record) + at, &v, sizeof v);
}

// `row` must lie in [0, kMaxRows).
inline double read(const _tGetSetData* record, Column column, int row) {
    double v = 0.0;
    std::memcpy(&v,
                reinterpret_cast<const unsigned char*>(record) + static_cast<std::size_t>(column) +
                    sizeof(double) * static_cast<std::size_t>(row),
                sizeof v);
    return v;
}

inline void write(_tGetSetData* record, Column column, int row, double v) {
    std::memcpy(reinterpret_cast<unsigned char*>(record) + static_cast<std::size_t>(column) +
                    sizeof(double) * static_cast<std::size_t>(row),
                &v, sizeof v);
}

// Rows in use, clamped to what the record can hold.
inline int rowCount(const _tGetSetData* record) {
    const int32_t n = readInt(record, kNumPointsAt);
    return n < 0 ? 0 : n > kMaxRows ? kMaxRows : static_cast<int>(n);
}

// A zeroed record owned by the library, for the callbacks to fill. Heap storage from operator new
// is aligned for any fundamental type, so callers may view it through their own struct.
class OwnedRecord {
  public:
    OwnedRecord() : bytes_(kSize) {}

    // Clears the record and labels it for `wellIndex`.
    _tGetSetData* reset(int32_t wellIndex) {
        std::memset(bytes_.data(), 0, bytes_.size());
        writeInt(get(), kSizeAt, static_cast<int32_t>(kSize));
        writeInt(get(), kWellIndexAt, wellIndex);
        return get();
    }

    _tGetSetData* get() { return reinterpret_cast<_tGetSetData*>(bytes_.data()); }

  private:
    std::vector<unsigned char> bytes_;
};

}  // namespace inflowkit::getset
