#include "codecs/wma/fft.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <numbers>
#include <utility>

#include "codecs/common/index.h"

namespace codecs::wma {
namespace {

// Real and imaginary parts of one number, or of a row of them.
struct Complex {
    float re, im;
};
struct Row {
    float* re;
    float* im;
    Complex At(int k) const { return {re[k], im[k]}; }
    void Set(int k, Complex value) const {
        re[k] = value.re;
        im[k] = value.im;
    }
    Row Skip(int count) const { return {re + count, im + count}; }
};

Complex operator+(Complex a, Complex b) { return {a.re + b.re, a.im + b.im}; }
Complex operator-(Complex a, Complex b) { return {a.re - b.re, a.im - b.im}; }
Complex operator*(Complex a, Complex b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

// A step of the self-sorting transform by fours: the results of four rows lie one after the other,
// so no reordering follows.
void ByFours(Row from, Row to, int rows_apart, int row, const Complex (&turn)[3]) {
    const Row a = from, b = from.Skip(rows_apart), c = b.Skip(rows_apart), d = c.Skip(rows_apart);
    float* __restrict out_re = to.re;
    float* __restrict out_im = to.im;
    for (int k = 0; k < row; ++k) {
        const Complex even = a.At(k) + c.At(k);
        const Complex even_rest = a.At(k) - c.At(k);
        const Complex odd = b.At(k) + d.At(k);
        const Complex rest = b.At(k) - d.At(k);
        const Complex odd_rest = {rest.im, -rest.re};
        const Complex sum = even + odd;
        const Complex first = (even_rest + odd_rest) * turn[0];
        const Complex second = (even - odd) * turn[1];
        const Complex third = (even_rest - odd_rest) * turn[2];
        out_re[k] = sum.re;
        out_im[k] = sum.im;
        out_re[k + row] = first.re;
        out_im[k + row] = first.im;
        out_re[k + 2 * row] = second.re;
        out_im[k + 2 * row] = second.im;
        out_re[k + 3 * row] = third.re;
        out_im[k + 3 * row] = third.im;
    }
}

}  // namespace

Fft::Fft(int points)
    : points_(points),
      cosines_(Index(points)),
      sines_(Index(points)),
      other_real_(Index(points)),
      other_imaginary_(Index(points)) {
    assert(std::has_single_bit(static_cast<unsigned>(points)));
    for (int n = 0; n < points; ++n) {
        const double angle = 2 * std::numbers::pi * n / points;
        cosines_[Index(n)] = static_cast<float>(std::cos(angle));
        sines_[Index(n)] = static_cast<float>(std::sin(angle));
    }
}

void Fft::Forward(std::span<float> real, std::span<float> imaginary) {
    Row from{real.data(), imaginary.data()};
    Row to{other_real_.data(), other_imaginary_.data()};
    int row = 1;
    int left = points_;  // points of the transforms that are still to be done
    for (; left >= 4; left /= 4, row *= 4) {
        const int quarter = left / 4;
        for (int j = 0; j < quarter; ++j) {
            const auto turn = [&](int times) {
                const std::size_t place = Index(j * row * times);
                return Complex{cosines_[place], -sines_[place]};
            };
            ByFours(from.Skip(row * j), to.Skip(4 * row * j), row * quarter, row,
                    {turn(1), turn(2), turn(3)});
        }
        std::swap(from, to);
    }
    if (left == 2) {
        for (int k = 0; k < row; ++k) {
            const Complex a = from.At(k);
            const Complex b = from.At(k + row);
            to.Set(k, a + b);
            to.Set(k + row, a - b);
        }
        std::swap(from, to);
    }
    if (from.re == real.data()) return;
    std::copy(other_real_.begin(), other_real_.end(), real.begin());
    std::copy(other_imaginary_.begin(), other_imaginary_.end(), imaginary.begin());
}

}  // namespace codecs::wma
