#include <gtest/gtest.h>

#include <cstring>

#include "crc.h"

namespace {

U32 Crc(const char* text)
{
    return uiCrcCalculation(reinterpret_cast<const U8*>(text), (U32)strlen(text));
}

TEST(Crc, CheckValues)
{
    EXPECT_EQ(Crc("123456789"), 0x31C3u);
    EXPECT_EQ(Crc("abc"), 0x9DD6u);
    EXPECT_EQ(uiCrcCalculation(nullptr, 0), 0u);
    EXPECT_EQ(Crc(""), 0u);
}

}  // namespace
