// The number formatter against the C library: the same bytes for every width, precision
// and value the screens use, and for the values where rounding is decided at the last bit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

#include "text_format.h"

namespace {

void Same(int width, int precision, double value, size_t size = 32)
{
    char expected[64], actual[64];
    memset(expected, 'x', sizeof(expected));
    memset(actual, 'x', sizeof(actual));
    const int n = snprintf(expected, size, "%*.*f", width, precision, value);
    const int m = TextFormatFixed(actual, size, width, precision, value);
    ASSERT_EQ(m, n) << width << "." << precision << " of " << value;
    ASSERT_EQ(memcmp(actual, expected, size < sizeof(actual) ? size + 1 : sizeof(actual)), 0)
        << "%" << width << "." << precision << "f of " << std::hexfloat << value << ": \"" << expected << "\" and \""
        << actual << "\"";
}

TEST(TextFormat, TiesRoundToEvenAndNegativeZeroKeepsItsSign)
{
    for (double v : {0.5, 1.5, 2.5, 0.125, 0.375, 2.675, 1.005, 0.045, -0.5, -2.5, -0.001, -0.0, 0.0, 1e-300, 5e-324,
                     -0.055000000000000000277, 9.9995, 999999999999999.9, 4294967295.0, 150000.0, -14.7})
        for (int p = 0; p <= 4; p++)
            for (int w : {0, 2, 5, 8}) Same(w, p, v);
}

TEST(TextFormat, NumbersAndOddCasesAsTheLibraryWritesThem)
{
    uint64_t seed = 7;
    auto next = [&] { return seed = seed * 6364136223846793005ull + 1442695040888963407ull; };
    for (int i = 0; i < 200000; i++) {
        const uint64_t r = next();
        double v;
        switch (i % 4) {
        case 0:  // raw field / divisor + offset, as frames give them
            v = (double)(int32_t)(r >> 40) / (double)(1 + (r & 0x3FF)) - (double)((r >> 10) & 0x7F);
            break;
        case 1:  // any bits at all
            memcpy(&v, &r, sizeof(v));
            break;
        case 2:  // near the halves of the last decimal
            v = std::nextafter(((double)(r % 2000000) + 0.5) / 1000.0, (r & 1) ? 1e9 : -1e9);
            break;
        default:
            v = ((double)(int64_t)r) / 1e3;
            break;
        }
        Same((int)(r % 9), (int)((r >> 8) % 4), v);
    }
    Same(5, 2, std::numeric_limits<double>::infinity());
    Same(5, 2, -std::numeric_limits<double>::quiet_NaN());
}

TEST(TextFormat, ATextCutToItsRecord)
{
    for (size_t size : {0, 1, 2, 4, 6})
        for (double v : {-14.70, 123456.0, 0.0}) Same(6, 2, v, size);
}

}  // namespace
