#include "text_format.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

constexpr int FAST_MAX_PRECISION = 3;
constexpr double FAST_LIMIT = 1e15;  // times 10^3 stays below 2^63
constexpr uint64_t POW10[FAST_MAX_PRECISION + 1] = {1, 10, 100, 1000};
constexpr int DIGITS_MAX = 24;

}  // namespace

// |value| * 10^precision rounded to the nearest integer, ties to even, from the exact
// binary value: mantissa * 2^exponent.
static uint64_t _scaled(double magnitude, int precision)
{
    uint64_t bits;
    memcpy(&bits, &magnitude, sizeof(bits));
    const int biased = (int)((bits >> 52) & 0x7FF);
    uint64_t mantissa = bits & ((1ull << 52) - 1);
    int exponent;
    if (biased == 0) {
        exponent = -1074;  // subnormal
    } else {
        mantissa |= 1ull << 52;
        exponent = biased - 1075;
    }
    const uint64_t n = mantissa * POW10[precision];  // below 2^63
    if (exponent >= 0) return n << exponent;         // an integer: below 10^18 by the limit
    const int k = -exponent;
    if (k >= 64) return 0;  // below half a unit of the last place
    const uint64_t q = n >> k;
    const uint64_t rest = n & ((1ull << k) - 1);
    const uint64_t half = 1ull << (k - 1);
    return rest > half || (rest == half && (q & 1)) ? q + 1 : q;
}

int TextFormatFixed(char* out, size_t size, int width, int precision, real_T value)
{
    if (!std::isfinite(value) || precision < 0 || precision > FAST_MAX_PRECISION || width < 0 || width > DIGITS_MAX ||
        !(std::fabs(value) < FAST_LIMIT))
        return snprintf(out, size, "%*.*f", width, precision, value);

    // Digits from the right: decimals, point, integer part, sign, then the padding.
    char text[DIGITS_MAX + 4];
    char* p = text + sizeof(text);
    uint64_t q = _scaled(std::fabs(value), precision);
    for (int i = 0; i < precision; i++) {
        *--p = (char)('0' + q % 10);
        q /= 10;
    }
    if (precision > 0) *--p = '.';
    do {
        *--p = (char)('0' + q % 10);
        q /= 10;
    } while (q);
    if (std::signbit(value)) *--p = '-';
    while (text + sizeof(text) - p < width) *--p = ' ';

    const size_t length = (size_t)(text + sizeof(text) - p);
    if (size > 0) {
        const size_t n = length < size - 1 ? length : size - 1;
        memcpy(out, p, n);
        out[n] = '\0';
    }
    return (int)length;
}
