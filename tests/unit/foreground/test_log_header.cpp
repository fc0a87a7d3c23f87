// The constant pieces of a log file's header and the values of its columns.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Velnor_Dorvik_V6c.h"
#include "log_columns.h"

namespace {

template <size_t N>
std::string Piece(const char (&piece)[N])
{
    return std::string(piece, N);
}

TEST(LogHeader, PiecesAsTheFileCarriesThem)
{
    const ConstParam_Velnor_Dorvik_V6c& p = Velnor_Dorvik_V6c_ConstP;
    const std::string names = Piece(p.Constant6_Value_e);
    EXPECT_EQ(names.substr(0, 26), ",PCM1.P9.RPM,PCM1.P1.MAP,P");
    EXPECT_NE(names.find(",PCM2.P145.Ref_Win_Int3,PCM1.P145.Ref_Win_Int4,"), std::string::npos);
    EXPECT_EQ(names.substr(names.size() - 24), ",PCM1.P22.InletPressure\n");

    const std::string ranges = Piece(p.Constant6_Value_i);
    EXPECT_EQ(ranges.substr(0, 32), ",Range::0 10000, Range::0 500, R");
    EXPECT_EQ(ranges.substr(ranges.size() - 17), ", Range::0 200, \n");

    const std::string values = Piece(p.Constant7_Value_f);
    EXPECT_EQ(values.substr(0, 20), "DateTime,Value,Value");
    EXPECT_EQ(values.substr(values.size() - 7), ",Value\n");

    const std::string units = Piece(p.Constant7_Value_i);
    EXPECT_EQ(units.substr(0, 27), "seconds,RPM,KPA,%,AFR,Multi");
    EXPECT_EQ(units.substr(units.size() - 5), ",KPA\n");

    for (const std::string& piece : {names, ranges, values, units}) {
        EXPECT_EQ(piece.find('\0'), std::string::npos);
        EXPECT_EQ(piece.find('\n'), piece.size() - 1);
    }
}

TEST(LogHeader, ColumnsReadTheirSignalsOfEveryWidth)
{
    B.RPM = 6123;
    B.MAP_p = 250;
    B.TPS_g = 77;
    B.Knk_Win_Int1 = 4294967295u;
    B.InletPressure = 99;
    EXPECT_EQ(LogColumnValue(0), 6123.0);
    EXPECT_EQ(LogColumnValue(1), 250.0);
    EXPECT_EQ(LogColumnValue(2), 77.0);
    EXPECT_EQ(LogColumnValue(121), 4294967295.0);  // column 123, PCM1.P140.Knk_Win_Int1
    EXPECT_EQ(LogColumnValue(152), 99.0);
    EXPECT_EQ(LogColumnValue(153), 0.0);
    memset(&B, 0, sizeof(B));
}

}  // namespace
