#include "codecs/wmv9/motion_vector_codes.h"

#include "codecs/common/index.h"
#include "codecs/wmv9/tables.h"

namespace codecs::wmv9 {
namespace {

constexpr int kLastClass = 5;
constexpr int kEscape = 35;
constexpr int kBase[] = {0, 1, 3, 7, 15, 31};
constexpr int kExtra[] = {0, 2, 3, 4, 5, 8};
constexpr int kLastExtraOfHalves = 7;
constexpr int kEscapeAcross[] = {9, 10, 12, 13};
constexpr int kEscapeDown[] = {8, 9, 10, 11};

// Six is beyond all classes.
int ClassOfSize(int size, bool halves) {
    const int largest =
        kBase[kLastClass] + (1 << ((halves ? kLastExtraOfHalves : kExtra[kLastClass]) - 1)) - 1;
    if (size > largest) return kLastClass + 1;
    int found = kLastClass;
    while (size < kBase[found]) --found;
    return found;
}

bool IsEscape(int class_x, int class_y) {
    return class_x > kLastClass || class_y > kLastClass || class_x + 6 * class_y == kEscape;
}

int ExtraBitsOf(int vector_class, bool halves) {
    return halves && vector_class == kLastClass ? kLastExtraOfHalves : kExtra[vector_class];
}

Code Extra(int value, int vector_class, bool halves) {
    if (vector_class == 0) return {};
    return {static_cast<std::uint32_t>((std::abs(value) - kBase[vector_class]) * 2 +
                                       (value < 0 ? 1 : 0)),
            static_cast<std::uint8_t>(ExtraBitsOf(vector_class, halves))};
}

}  // namespace

VectorCode CodeOf(MotionVector difference, bool coded, const PictureHeader& header) {
    const bool halves = header.HalfVectors();
    const int x = halves ? difference.x / 2 : difference.x;
    const int y = halves ? difference.y / 2 : difference.y;
    const int class_x = ClassOfSize(std::abs(x), halves);
    const int class_y = ClassOfSize(std::abs(y), halves);
    const int later = (coded ? kCodedSymbols : 0) - 1;
    const auto width = [&](const int* table) {
        return static_cast<std::uint8_t>(table[header.vector_range] - (halves ? 1 : 0));
    };
    if (IsEscape(class_x, class_y))
        return {kEscape + later,
                {static_cast<std::uint32_t>(x), width(kEscapeAcross)},
                {static_cast<std::uint32_t>(y), width(kEscapeDown)}};
    return {class_x + 6 * class_y + later, Extra(x, class_x, halves), Extra(y, class_y, halves)};
}

int VectorBits(MotionVector difference, bool coded, const PictureHeader& header) {
    if (difference == MotionVector() && !coded) return 0;
    const VectorCode code = CodeOf(difference, coded, header);
    const auto& table = kVector[Index(header.vector_table)];
    return table[Index(code.symbol)].length + ExtraBits(code);
}

void PutVector(BitWriter& out, MotionVector difference, bool coded, const PictureHeader& header) {
    const VectorCode code = CodeOf(difference, coded, header);
    const auto& table = kVector[Index(header.vector_table)];
    out.Put(table[Index(code.symbol)]);
    out.Put(code.extra_x);
    out.Put(code.extra_y);
}

void PutIntra(BitWriter& out, bool coded, const PictureHeader& header) {
    const auto& table = kVector[Index(header.vector_table)];
    out.Put(table[Index(kIntraSymbol + (coded ? kCodedSymbols : 0))]);
}

VectorCosts::VectorCosts(const PictureHeader& header) {
    const bool halves = header.HalfVectors();
    shift_ = halves ? 1 : 0;
    for (int size = 0; size < kQuick; ++size)
        classes_[Index(size)] = static_cast<std::uint8_t>(ClassOfSize(size, halves));
    const auto& table = kVector[Index(header.vector_table)];
    for (int x = 0; x < kClasses; ++x) {
        for (int y = 0; y < kClasses; ++y) {
            const bool escape = IsEscape(x, y);
            const int symbol = (escape ? kEscape : x + 6 * y) + kCodedSymbols - 1;
            const int extra = escape ? kEscapeAcross[header.vector_range] +
                                           kEscapeDown[header.vector_range] - (halves ? 2 : 0)
                                     : ExtraBitsOf(x, halves) + ExtraBitsOf(y, halves);
            bits_[Index(x * kClasses + y)] =
                static_cast<std::uint8_t>(table[Index(symbol)].length + extra);
        }
    }
}

}  // namespace codecs::wmv9
