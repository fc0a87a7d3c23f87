// The text values of the pass: every text of the table read back in every unit for one
// set of frames written out by hand, with the texts worked out apart from the dash's
// table; then the rules around them: the time-out, the refresh by the clock, the gate of
// each unit, settings out of range, and the labels and unit words made from the texts.
#include <map>
#include <set>
#include <vector>

#include "foreground_fixture.h"
#include "text_values.h"

namespace {

struct FRAME_T {
    uint32_T id;
    BYTES_T data;
};
// Gears 4, 3, 3; 3000 RPM; MAP 200 kPa; throttle 95 %; 60 s since start; stoichiometric
// 14.7; equivalence ratios 0.85 target, 1.25 and 0.82 final; EGTs about 800 C; ...
const FRAME_T m_frames[] = {
    {0x101, {0xFF, 0xF4, 0x00, 0x32, 0x00, 0x00, 0x5F, 0x2D}},
    {0x102, {0x1E, 0x00, 0x64, 0x65, 0xEC, 0x32, 0x00, 0xB4}},
    {0x103, {0x00, 0x3C, 0x56, 0x78, 0x9A, 0x00, 0x15, 0xE0}},
    {0x104, {0x00, 0x55, 0x00, 0x1B, 0x58, 0x02, 0x03, 0x10}},
    {0x105, {0x03, 0xE8, 0x04, 0xB0, 0x03, 0xB6, 0x03, 0x20}},
    {0x106, {0x00, 0x01, 0xD4, 0xC0, 0x00, 0x01, 0x81, 0xCD}},
    {0x107, {0xFF, 0xFE, 0xFD, 0xFC, 0xFB, 0xFA, 0xF9, 0xF8}},
    {0x108, {0x0B, 0xB8, 0x00, 0xEA, 0xFF, 0x6A, 0x69, 0x62}},
    {0x109, {0x02, 0xA8, 0x05, 0xE3, 0x00, 0x6E, 0x00, 0x5F}},
    {0x110, {0x0C, 0x14, 0x16, 0x0F, 0x3C, 0x28, 0xFD, 0x00}},
    {0x111, {0x13, 0x88, 0x04, 0xB0, 0x03, 0x84, 0x10, 0xE1}},
    {0x112, {0x02, 0xEE, 0x02, 0xF8, 0x00, 0xEB, 0x01, 0xC8}},
    {0x118, {0x05, 0xBE, 0x05, 0x64, 0x00, 0x30, 0x5A, 0x23}},
    {0x119, {0x01, 0x02, 0x8A, 0x12, 0x04, 0xB0, 0x04, 0xE2}},
    {0x120, {0x00, 0x14, 0x00, 0x0F, 0x00, 0x12, 0x00, 0x0C}},
    {0x125, {0x09, 0xF6, 0x04, 0x9C, 0x04, 0xBA, 0x00, 0xC8}},
    {0x126, {0x83, 0xD6, 0x78, 0x9B, 0x00, 0x00, 0x00, 0x00}},
    {0x127, {0x01, 0xBD, 0x01, 0x40, 0x00, 0x00, 0x00, 0x00}},
    {0x161, {0x00, 0x62, 0x0F, 0xA0, 0x02, 0x26, 0x00, 0x58}},
    {0x162, {0x01, 0x7C, 0x01, 0x86, 0x00, 0x96, 0x00, 0xA0}},
    {0x163, {0x00, 0x05, 0x00, 0xC8, 0x00, 0x6E, 0x00, 0xB4}},
    {0x164, {0x3C, 0x47, 0x00, 0x37, 0x00, 0x52, 0x00, 0x7D}},
    {0x148, {0x1F, 0xBB, 0x1F, 0x72, 0x1F, 0x3F, 0x20, 0x0D}},
    {0x149, {0x1E, 0xDD, 0x1F, 0x4C, 0x1F, 0xD6, 0x1F, 0x98}},
};

void FeedAll(uint32_T except = 0)
{
    for (const FRAME_T& f : m_frames)
        if (f.id != except) Frame(f.id, f.data);
}

// Each text with those frames once every hold has seen them. Units 1 (PSI, MPH, Celsius,
// AFR), 2 (kPa, km/h, Fahrenheit, lambda), 3 (bar, knots, equivalence ratio); a text of
// one format has no unit, temperatures have two.
struct EXPECTED_T {
    S_String** text;
    uint32_T frame;  // the frame whose age guards it
    const char* unit[3];
};
const EXPECTED_T m_expected[] = {
    {&B.ValueString_lq, 0x109, {" 4"}},
    {&B.ValueString_dm, 0x109, {" 3"}},
    {&B.ValueString_di2, 0x109, {" 3"}},
    {&B.ValueString_fd, 0x112, {" 456"}},
    {&B.RPeakValue_a1, 0x112, {" 456"}},
    {&B.ValueString_jk, 0x118, {" 14"}},
    {&B.LPeakValue_p, 0x118, {"0.00"}},
    {&B.ValueString_nr, 0x108, {"2.34"}},
    {&B.RPeakValue_i1, 0x108, {"2.34"}},
    {&B.ValueString_bn, 0x111, {" 4321"}},
    {&B.RPeakValue_l4, 0x111, {"    0"}},
    {&B.ValueString_l5, 0x161, {" 550"}},
    {&B.RPeakValue_bf, 0x161, {" 550"}},
    {&B.ValueString_jb, 0x161, {"   88"}},
    {&B.ValueString_jos, 0x119, {" 650"}},
    {&B.RPeakValue_kr, 0x119, {" 650"}},
    {&B.ValueString_d13, 0x119, {" 18"}},
    {&B.ValueString_cs, 0x104, {"  515"}},
    {&B.ValueString_ar, 0x104, {" 7000"}},
    {&B.ValueString_pb, 0x107, {" -1"}},
    {&B.ValueString_bv, 0x107, {" -2"}},
    {&B.ValueString_o1, 0x107, {" -3"}},
    {&B.ValueString_d1, 0x107, {" -4"}},
    {&B.ValueString_mw, 0x107, {" -5"}},
    {&B.ValueString_nl, 0x107, {" -6"}},
    {&B.ValueString_b1, 0x107, {" -7"}},
    {&B.ValueString_lh, 0x107, {" -8"}},
    {&B.LPeakValue_l, 0x107, {"-1.00"}},
    {&B.LPeakValue_o, 0x107, {"-2.00"}},
    {&B.LPeakValue_g, 0x107, {"-3.00"}},
    {&B.LPeakValue_i, 0x107, {"-4.00"}},
    {&B.LPeakValue_j, 0x107, {"-5.00"}},
    {&B.LPeakValue_h, 0x107, {"-6.00"}},
    {&B.LPeakValue_a, 0x107, {"-7.00"}},
    {&B.LPeakValue, 0x107, {"-8.00"}},
    {&B.ValueString_bf, 0x109, {" 85"}},
    {&B.ValueString_iz, 0x109, {"  85"}},
    {&B.ValueString_jo, 0x108, {" 1.05"}},
    {&B.ValueString_da, 0x108, {" 0.98"}},
    {&B.ValueString_br, 0x102, {" 50"}},
    {&B.ValueString_jsq, 0x164, {" 66"}},
    {&B.ValueString_e3, 0x102, {"  101"}},
    {&B.ValueString_e, 0x102, {"-20.00"}},
    {&B.ValueString_ou, 0x120, {" 18"}},
    {&B.RPeakValue_mk, 0x120, {" 18"}},
    {&B.ValueString_le, 0x120, {" 12"}},
    {&B.RPeakValue_h3, 0x120, {" 12"}},
    {&B.ValueString_jd, 0x126, {" -2"}},
    {&B.RPeakValue_kem, 0x126, {"0.00"}},
    {&B.LPeakValue_f, 0x126, {"-2.25"}},
    {&B.ValueString_jbm, 0x126, {"  4"}},
    {&B.RPeakValue_bx, 0x126, {"3.50"}},
    {&B.LPeakValue_k, 0x126, {"0.00"}},
    {&B.ValueString_mv, 0x127, {"-0.80"}},
    {&B.RPeakValue_g4, 0x127, {"0.00"}},
    {&B.LPeakValue_e, 0x127, {"-0.80"}},
    {&B.ValueString_ac, 0x127, {"0.45"}},
    {&B.RPeakValue_e3, 0x127, {"0.45"}},
    {&B.LPeakValue_m, 0x127, {"0.00"}},
    {&B.ValueString_brl, 0x118, {"    3"}},
    {&B.ValueString_do, 0x108, {" 3000"}},
    {&B.RPeakValue_im, 0x108, {" 3000"}},
    {&B.ValueString_l0e, 0x125, {"25.50"}},
    {&B.ValueString_m5, 0x106, {"120000"}},
    {&B.ValueString_f1, 0x106, {" 98765"}},
    {&B.ValueString_gc, 0x112, {" 2.35"}},
    {&B.ValueString_p5, 0x101, {"-12"}},
    {&B.RPeakValue_ck, 0x101, {" 0"}},
    {&B.ValueString_dh, 0x110, {" 12"}},
    {&B.ValueString_js, 0x101, {" 45"}},
    {&B.RPeakValue_oy, 0x101, {"45.00"}},
    {&B.ValueString_bw, 0x101, {" 95"}},
    {&B.ValueString, 0x102, {"11.40", "180", "1.8"}},
    {&B.ValueString_j, 0x119, {"17.29", " 1.18", " 0.85"}},
    {&B.ValueString_f, 0x125, {"11.76", " 0.80", " 1.25"}},
    {&B.RPeakValue, 0x125, {"11.80", " 0.80", " 1.25"}},
    {&B.ValueString_g, 0x125, {"17.93", " 1.22", " 0.82"}},
    {&B.RPeakValue_n, 0x125, {"12.10", " 0.82", " 1.21"}},
    {&B.ValueString_o, 0x118, {"   35", "  95"}},
    {&B.RPeakValue_m, 0x118, {"   35", "  95"}},
    {&B.ValueString_l, 0x118, {"   90", " 194"}},
    {&B.RPeakValue_g, 0x118, {"   90", " 194"}},
    {&B.ValueString_c, 0x163, {"   16", "  110", " 1.1"}},
    {&B.RPeakValue_f, 0x163, {"   16", "  110", " 1.1"}},
    {&B.ValueString_d, 0x102, {" 100", " 161", "  87"}},
    {&B.RPeakValue_mj, 0x102, {" 100", " 161", "  87"}},
    {&B.ValueString_a, 0x102, {" 101", " 163", "  88"}},
    {&B.RPeakValue_o, 0x102, {" 101", " 163", "  88"}},
    {&B.ValueString_h, 0x148, {" 812", "1494"}},
    {&B.ValueString_p, 0x148, {" 805", "1481"}},
    {&B.ValueString_gd, 0x148, {" 800", "1472"}},
    {&B.ValueString_fh, 0x148, {" 820", "1509"}},
    {&B.ValueString_dv, 0x149, {" 790", "1454"}},
    {&B.ValueString_l0, 0x149, {" 801", "1474"}},
    {&B.ValueString_i, 0x149, {" 815", "1499"}},
    {&B.ValueString_i2, 0x149, {" 809", "1488"}},
    {&B.RPeakValue_d, 0x148, {"  812", "1494"}},
    {&B.RPeakValue_i, 0x148, {"  805", "1481"}},
    {&B.RPeakValue_j, 0x148, {"  800", "1472"}},
    {&B.RPeakValue_b, 0x148, {"  820", "1509"}},
    {&B.RPeakValue_k, 0x149, {"  790", "1454"}},
    {&B.RPeakValue_kq, 0x149, {"  801", "1474"}},
    {&B.RPeakValue_e, 0x149, {"  815", "1499"}},
    {&B.RPeakValue_l, 0x149, {"  809", "1488"}},
    {&B.ValueString_ol, 0x162, {"    7", "  150", " 1.5"}},
    {&B.RPeakValue_bh, 0x162, {" 7.05", "  150", " 1.5"}},
    {&B.ValueString_m, 0x162, {"    8", "  160", " 1.6"}},
    {&B.RPeakValue_i3, 0x162, {" 8.50", "  160", " 1.6"}},
    {&B.ValueString_n, 0x162, {"   55", "  380", " 3.8"}},
    {&B.ValueString_og, 0x162, {"   57", "  390", " 3.9"}},
    {&B.ValueString_ls, 0x161, {"-0.49", "   98", "0.98"}},
    {&B.RPeakValue_ka, 0x161, {"-14.70", "    0", "0.00"}},
    {&B.ValueString_di, 0x125, {"14.30", "  200", " 2.0"}},
    {&B.RPeakValue_a, 0x125, {"14.30", "  200", " 2.0"}},
    {&B.ValueString_f3, 0x164, {"   55", " 131"}},
    {&B.RPeakValue_h, 0x164, {"   55", " 131"}},
    {&B.ValueString_b, 0x105, {" 145", " 1000", "10.0"}},
    {&B.ValueString_or, 0x105, {" 174", " 1200", "12.0"}},
    {&B.ValueString_li, 0x105, {" 138", "  950", " 9.5"}},
    {&B.ValueString_ib, 0x105, {" 116", "  800", " 8.0"}},
    {&B.RPeakValue_jg, 0x105, {" 0.00", "    0", " 0.0"}},
    {&B.RPeakValue_dy, 0x105, {" 0.00", "    0", " 0.0"}},
    {&B.RPeakValue_p, 0x105, {" 0.00", "    0", " 0.0"}},
    {&B.RPeakValue_c, 0x105, {" 0.00", "    0", " 0.0"}},
    {&B.ValueString_ch, 0x163, {"   29", "  200", " 2.0"}},
    {&B.RPeakValue_eg, 0x163, {"   29", "  200", " 2.0"}},
    {&B.ValueString_lsk, 0x109, {" 110", " 230"}},
    {&B.RPeakValue_fb, 0x109, {"  110", " 230"}},
    {&B.ValueString_ps, 0x103, {"   51", "  350", " 3.5"}},
    {&B.RPeakValue_nr, 0x103, {"   51", "  350", " 3.5"}},
    {&B.ValueString_pc, 0x109, {"  95", " 203"}},
    {&B.RPeakValue_ke, 0x109, {"   95", " 203"}},
    {&B.ValueString_p0, 0x163, {"11.40", "  180", " 1.8"}},
    {&B.RPeakValue_fa, 0x163, {"11.40", "  180", " 1.8"}},
    {&B.ValueString_gi, 0x119, {"  174", " 1200", "12.0"}},
    {&B.RPeakValue_a4, 0x119, {"  174", " 1200", "12.0"}},
};

// The numbers of each gauge with the same frames: the value in the unit, the scale and the
// decimals of the value's format, by unit as above.
struct GAUGE_NUMBERS_T {
    real_T* value;
    real_T* displayMin;
    real_T* displayMax;
    uint8_T* numDec;
    int units;
    struct {
        real_T value, min, max;
        uint8_T decimals;
    } unit[3];
};
const GAUGE_NUMBERS_T m_gauges[] = {
    {&B.ValueDouble_fd, &B.DisplayMin_fd, &B.DisplayMax_fd, &B.NumDec_fd, 1, {{456.0, 0.0, 1500.0, 0}}},
    {&B.ValueDouble_jk, &B.DisplayMin_jk, &B.DisplayMax_jk, &B.NumDec_jk, 1, {{13.8, 6.0, 20.0, 0}}},
    {&B.ValueDouble_nr, &B.DisplayMin_nr, &B.DisplayMax_nr, &B.NumDec_nr, 1, {{2.34, 0.0, 15.0, 2}}},
    {&B.ValueDouble_bn, &B.DisplayMin_bn, &B.DisplayMax_bn, &B.NumDec_bn, 1, {{4321.0, 0.0, 15000.0, 0}}},
    {&B.ValueDouble_l5, &B.DisplayMin_l5, &B.DisplayMax_l5, &B.NumDec_l5, 1, {{550.0, 0.0, 1500.0, 0}}},
    {&B.ValueDouble_jos, &B.DisplayMin_jos, &B.DisplayMax_jos, &B.NumDec_jos, 1, {{650.0, 0.0, 1000.0, 0}}},
    {&B.ValueDouble_d13, &B.DisplayMin_d13, &B.DisplayMax_d13, &B.NumDec_d13, 1, {{18.0, 0.0, 50.0, 0}}},
    {&B.ValueDouble_pb, &B.DisplayMin_pb, &B.DisplayMax_pb, &B.NumDec_pb, 1, {{-1.0, -30.0, 0.0, 0}}},
    {&B.ValueDouble_bv, &B.DisplayMin_bv, &B.DisplayMax_bv, &B.NumDec_bv, 1, {{-2.0, -30.0, 0.0, 0}}},
    {&B.ValueDouble_o1, &B.DisplayMin_o1, &B.DisplayMax_o1, &B.NumDec_o1, 1, {{-3.0, -30.0, 0.0, 0}}},
    {&B.ValueDouble_d1, &B.DisplayMin_d1, &B.DisplayMax_d1, &B.NumDec_d1, 1, {{-4.0, -30.0, 0.0, 0}}},
    {&B.ValueDouble_mw, &B.DisplayMin_mw, &B.DisplayMax_mw, &B.NumDec_mw, 1, {{-5.0, -30.0, 0.0, 0}}},
    {&B.ValueDouble_nl, &B.DisplayMin_nl, &B.DisplayMax_nl, &B.NumDec_nl, 1, {{-6.0, -30.0, 0.0, 0}}},
    {&B.ValueDouble_b1, &B.DisplayMin_b1, &B.DisplayMax_b1, &B.NumDec_b1, 1, {{-7.0, -30.0, 0.0, 0}}},
    {&B.ValueDouble_lh, &B.DisplayMin_lh, &B.DisplayMax_lh, &B.NumDec_lh, 1, {{-8.0, -30.0, 0.0, 0}}},
    {&B.ValueDouble_iz, &B.DisplayMin_iz, &B.DisplayMax_iz, &B.NumDec_iz, 1, {{85.0, 0.0, 100.0, 0}}},
    {&B.ValueDouble_jsq, &B.DisplayMin_jsq, &B.DisplayMax_jsq, &B.NumDec_jsq, 1, {{65.5, 0.0, 100.0, 0}}},
    {&B.ValueDouble_e3, &B.DisplayMin_e3, &B.DisplayMax_e3, &B.NumDec_e3, 1, {{101.0, 0.0, 250.0, 0}}},
    {&B.ValueDouble_e, &B.DisplayMin_e, &B.DisplayMax_e, &B.NumDec_e, 1, {{-20.0, -50.0, 0.0, 2}}},
    {&B.ValueDouble_ou, &B.DisplayMin_ou, &B.DisplayMax_ou, &B.NumDec_ou, 1, {{18.0, -5.0, 40.0, 0}}},
    {&B.ValueDouble_le, &B.DisplayMin_le, &B.DisplayMax_le, &B.NumDec_le, 1, {{12.0, -5.0, 40.0, 0}}},
    {&B.ValueDouble_jd, &B.DisplayMin_jd, &B.DisplayMax_jd, &B.NumDec_jd, 1, {{-2.25, -30.0, 30.0, 0}}},
    {&B.ValueDouble_jbm, &B.DisplayMin_jbm, &B.DisplayMax_jbm, &B.NumDec_jbm, 1, {{3.5, -30.0, 30.0, 0}}},
    {&B.ValueDouble_mv, &B.DisplayMin_mv, &B.DisplayMax_mv, &B.NumDec_mv, 1, {{-0.7999999999999998, -2.0, 2.0, 2}}},
    {&B.ValueDouble_ac, &B.DisplayMin_ac, &B.DisplayMax_ac, &B.NumDec_ac, 1, {{0.4500000000000002, -2.0, 2.0, 2}}},
    {&B.ValueDouble_km, &B.DisplayMin_h2, &B.DisplayMax_lf, &B.NumDec_lo, 1, {{3000.0, 0.0, 9000.0, 0}}},
    {&B.ValueDouble_l0e, &B.DisplayMin_l0e, &B.DisplayMax_l0e, &B.NumDec_l0e, 1, {{25.5, -25.0, 50.0, 2}}},
    {&B.ValueDouble_m5, &B.DisplayMin_m5, &B.DisplayMax_m5, &B.NumDec_m5, 1, {{120000.0, 0.0, 150000.0, 0}}},
    {&B.ValueDouble_f1, &B.DisplayMin_f1, &B.DisplayMax_f1, &B.NumDec_f1, 1, {{98765.0, 0.0, 150000.0, 0}}},
    {&B.ValueDouble_gc, &B.DisplayMin_gc, &B.DisplayMax_gc, &B.NumDec_gc, 1, {{2.35, 0.0, 5.0, 2}}},
    {&B.ValueDouble_p5, &B.DisplayMin_p5, &B.DisplayMax_p5, &B.NumDec_p5, 1, {{-12.0, -50.0, 50.0, 0}}},
    {&B.ValueDouble_dh, &B.DisplayMin_dh, &B.DisplayMax_dh, &B.NumDec_dh, 1, {{12.0, 0.0, 100.0, 0}}},
    {&B.ValueDouble_js, &B.DisplayMin_js, &B.DisplayMax_js, &B.NumDec_js, 1, {{45.0, 0.0, 100.0, 0}}},
    {&B.ValueDouble_bw, &B.DisplayMin_bw, &B.DisplayMax_bw, &B.NumDec_bw, 1, {{95.0, 0.0, 100.0, 0}}},
    {&B.ValueDouble_f, &B.DisplayMin_f, &B.DisplayMax_f, &B.NumDec_f, 3, {{11.76, 8.0, 18.0, 2}, {0.8, 0.545, 1.2262, 2}, {1.25, 0.8156, 1.835, 2}}},
    {&B.ValueDouble_g, &B.DisplayMin_g, &B.DisplayMax_g, &B.NumDec_g, 3, {{17.926829268292682, 8.0, 18.0, 2}, {1.2195121951219512, 0.545, 1.2262, 2}, {0.82, 0.8156, 1.835, 2}}},
    {&B.ValueDouble_o, &B.DisplayMin_o, &B.DisplayMax_o, &B.NumDec_o, 2, {{35.0, 0.0, 120.0, 0}, {95.0, 100.0, 240.0, 0}}},
    {&B.ValueDouble_l, &B.DisplayMin_l, &B.DisplayMax_l, &B.NumDec_l, 2, {{90.0, 40.0, 120.0, 0}, {194.0, 100.0, 240.0, 0}}},
    {&B.ValueDouble_c, &B.DisplayMin_c, &B.DisplayMax_c, &B.NumDec_c, 3, {{15.95, 0.0, 150.0, 0}, {110.0, 0.0, 1034.0, 0}, {1.1, 0.0, 10.0, 1}}},
    {&B.ValueDouble_d, &B.DisplayMin_d, &B.DisplayMax_d, &B.NumDec_d, 3, {{100.0, 0.0, 200.0, 0}, {160.9344, 0.0, 300.0, 0}, {86.8976242, 0.0, 200.0, 0}}},
    {&B.ValueDouble_a, &B.DisplayMin_a, &B.DisplayMax_a, &B.NumDec_a, 3, {{101.0, 0.0, 200.0, 0}, {162.543744, 0.0, 300.0, 0}, {87.766600442, 0.0, 200.0, 0}}},
    {&B.ValueDouble_h, &B.DisplayMin_h, &B.DisplayMax_h, &B.NumDec_h, 2, {{812.3, 315.0, 1000.0, 0}, {1494.1399999999999, 100.0, 2000.0, 0}}},
    {&B.ValueDouble_p, &B.DisplayMin_p, &B.DisplayMax_p, &B.NumDec_p, 2, {{805.0, 315.0, 1000.0, 0}, {1481.0, 100.0, 2000.0, 0}}},
    {&B.ValueDouble_gd, &B.DisplayMin_gd, &B.DisplayMax_gd, &B.NumDec_gd, 2, {{799.9, 315.0, 1000.0, 0}, {1471.82, 100.0, 2000.0, 0}}},
    {&B.ValueDouble_fh, &B.DisplayMin_fh, &B.DisplayMax_fh, &B.NumDec_fh, 2, {{820.5, 315.0, 1000.0, 0}, {1508.9, 100.0, 2000.0, 0}}},
    {&B.ValueDouble_dv, &B.DisplayMin_dv, &B.DisplayMax_dv, &B.NumDec_dv, 2, {{790.1, 315.0, 1000.0, 0}, {1454.18, 100.0, 2000.0, 0}}},
    {&B.ValueDouble_l0, &B.DisplayMin_l0, &B.DisplayMax_l0, &B.NumDec_l0, 2, {{801.2, 315.0, 1000.0, 0}, {1474.16, 100.0, 2000.0, 0}}},
    {&B.ValueDouble_i, &B.DisplayMin_i, &B.DisplayMax_i, &B.NumDec_i, 2, {{815.0, 315.0, 1000.0, 0}, {1499.0, 100.0, 2000.0, 0}}},
    {&B.ValueDouble_i2, &B.DisplayMin_i2, &B.DisplayMax_i2, &B.NumDec_i2, 2, {{808.8, 315.0, 1000.0, 0}, {1487.84, 100.0, 2000.0, 0}}},
    {&B.ValueDouble_ol, &B.DisplayMin_ol, &B.DisplayMax_ol, &B.NumDec_ol, 3, {{7.049999999999999, -14.7, 60.0, 0}, {150.0, 0.0, 500.0, 0}, {1.5, 0.0, 5.0, 1}}},
    {&B.ValueDouble_m, &B.DisplayMin_m, &B.DisplayMax_m, &B.NumDec_m, 3, {{8.5, -14.7, 60.0, 0}, {160.0, 0.0, 500.0, 0}, {1.6, 0.0, 5.0, 1}}},
    {&B.ValueDouble_n, &B.DisplayMin_n, &B.DisplayMax_n, &B.NumDec_n, 3, {{55.099999999999994, 0.0, 150.0, 0}, {380.0, 0.0, 1034.0, 0}, {3.8000000000000003, 0.0, 10.0, 1}}},
    {&B.ValueDouble_og, &B.DisplayMin_og, &B.DisplayMax_og, &B.NumDec_og, 3, {{56.55, 0.0, 150.0, 0}, {390.0, 0.0, 1034.0, 0}, {3.9, 0.0, 10.0, 1}}},
    {&B.ValueDouble_ls, &B.DisplayMin_ls, &B.DisplayMax_ls, &B.NumDec_ls, 3, {{-0.4900000000000001, -14.7, 3.62, 2}, {98.0, 0.0, 125.0, 0}, {0.98, 0.0, 1.25, 2}}},
    {&B.ValueDouble_di, &B.DisplayMin_di, &B.DisplayMax_di, &B.NumDec_di, 3, {{14.299999999999999, -14.7, 40.0, 2}, {200.0, 0.0, 375.79, 0}, {2.0, 0.0, 3.75, 1}}},
    {&B.ValueDouble_f3, &B.DisplayMin_f3, &B.DisplayMax_f3, &B.NumDec_f3, 2, {{55.0, 0.0, 120.0, 0}, {131.0, 100.0, 240.0, 0}}},
    {&B.ValueDouble_b, &B.DisplayMin_b, &B.DisplayMax_b, &B.NumDec_b, 3, {{145.0, 600.0, 1600.0, 0}, {1000.0, 4000.0, 11000.0, 0}, {10.0, 40.0, 110.0, 1}}},
    {&B.ValueDouble_or, &B.DisplayMin_or, &B.DisplayMax_or, &B.NumDec_or, 3, {{174.0, 600.0, 1600.0, 0}, {1200.0, 4000.0, 11000.0, 0}, {12.0, 40.0, 110.0, 1}}},
    {&B.ValueDouble_li, &B.DisplayMin_li, &B.DisplayMax_li, &B.NumDec_li, 3, {{137.75, 600.0, 1600.0, 0}, {950.0, 4000.0, 11000.0, 0}, {9.5, 40.0, 110.0, 1}}},
    {&B.ValueDouble_ib, &B.DisplayMin_ib, &B.DisplayMax_ib, &B.NumDec_ib, 3, {{115.99999999999999, 600.0, 1600.0, 0}, {800.0, 4000.0, 11000.0, 0}, {8.0, 40.0, 110.0, 1}}},
    {&B.ValueDouble_ch, &B.DisplayMin_ch, &B.DisplayMax_ch, &B.NumDec_ch, 3, {{28.999999999999996, 0.0, 150.0, 0}, {200.0, 0.0, 1000.0, 0}, {2.0, 0.0, 10.0, 1}}},
    {&B.ValueDouble_lsk, &B.DisplayMin_lsk, &B.DisplayMax_lsk, &B.NumDec_lsk, 2, {{110.0, 40.0, 140.0, 0}, {230.0, 100.0, 240.0, 0}}},
    {&B.ValueDouble_ps, &B.DisplayMin_ps, &B.DisplayMax_ps, &B.NumDec_ps, 3, {{50.75, 0.0, 500.0, 0}, {350.0, 0.0, 1000.0, 0}, {3.5, 0.0, 10.0, 1}}},
    {&B.ValueDouble_pc, &B.DisplayMin_pc, &B.DisplayMax_pc, &B.NumDec_pc, 2, {{95.0, 40.0, 120.0, 0}, {203.0, 100.0, 240.0, 0}}},
    {&B.ValueDouble_p0, &B.DisplayMin_p0, &B.DisplayMax_p0, &B.NumDec_p0, 3, {{11.399999999999999, -14.7, 40.0, 2}, {180.0, 0.0, 375.79, 0}, {1.8, 0.0, 3.75, 1}}},
    {&B.ValueDouble_gi, &B.DisplayMin_gi, &B.DisplayMax_gi, &B.NumDec_gi, 3, {{174.0, 0.0, 2000.0, 0}, {1200.0, 0.0, 13789.51, 0}, {12.0, 0.0, 137.8951, 1}}},
};

// Peaks, targets and set points as numbers, by unit.
struct NUMBER_T {
    real_T* number;
    int units;
    real_T unit[3];
};
const NUMBER_T m_numbers[] = {
    {&B.RPeakDouble_a1, 1, {456.0}},
    {&B.RPeakDouble_i1, 1, {2.3399999141693115}},
    {&B.RPeakDouble_l4, 1, {0.0}},
    {&B.RPeakDouble_bf, 1, {550.0}},
    {&B.RPeakDouble_kr, 1, {650.0}},
    {&B.RPeakDouble_mk, 1, {18.0}},
    {&B.RPeakDouble_h3, 1, {12.0}},
    {&B.RPeakDouble_kem, 1, {0.0}},
    {&B.RPeakDouble_bx, 1, {3.5}},
    {&B.RPeakDouble_g4, 1, {0.0}},
    {&B.RPeakDouble_e3, 1, {0.44999998807907104}},
    {&B.RPeakDouble_mz, 1, {3000.0}},
    {&B.RPeakDouble_ck, 1, {0.0}},
    {&B.RPeakDouble_oy, 1, {45.0}},
    {&B.RPeakDouble, 3, {11.800000190734863, 0.802721101410535, 1.245762691727934}},
    {&B.RPeakDouble_n, 3, {12.100000381469727, 0.8231292776510019, 1.214875994757156}},
    {&B.RPeakDouble_m, 2, {35.0, 95.0}},
    {&B.RPeakDouble_g, 2, {90.0, 194.0}},
    {&B.RPeakDouble_f, 3, {15.95, 110.0, 1.1}},
    {&B.RPeakDouble_mj, 3, {100.0, 160.9344, 86.8976242}},
    {&B.RPeakDouble_o, 3, {101.0, 162.543744, 87.766600442}},
    {&B.RPeakDouble_d, 2, {812.2999877929688, 1494.139978027344}},
    {&B.RPeakDouble_i, 2, {805.0, 1481.0}},
    {&B.RPeakDouble_j, 2, {799.9000244140625, 1471.8200439453126}},
    {&B.RPeakDouble_b, 2, {820.5, 1508.9}},
    {&B.RPeakDouble_k, 2, {790.0999755859375, 1454.1799560546876}},
    {&B.RPeakDouble_kq, 2, {801.2000122070312, 1474.1600219726563}},
    {&B.RPeakDouble_e, 2, {815.0, 1499.0}},
    {&B.RPeakDouble_l, 2, {808.7999877929688, 1487.8399780273437}},
    {&B.RPeakDouble_bh, 3, {7.049999999999999, 150.0, 1.5}},
    {&B.RPeakDouble_i3, 3, {8.5, 160.0, 1.6}},
    {&B.RPeakDouble_ka, 3, {-14.7, 0.0, 0.0}},
    {&B.RPeakDouble_a, 3, {14.299999999999999, 200.0, 2.0}},
    {&B.RPeakDouble_h, 2, {55.0, 131.0}},
    {&B.RPeakDouble_jg, 3, {0.0, 0.0, 0.0}},
    {&B.RPeakDouble_dy, 3, {0.0, 0.0, 0.0}},
    {&B.RPeakDouble_p, 3, {0.0, 0.0, 0.0}},
    {&B.RPeakDouble_c, 3, {0.0, 0.0, 0.0}},
    {&B.RPeakDouble_eg, 3, {28.999999999999996, 200.0, 2.0}},
    {&B.RPeakDouble_fb, 2, {110.0, 230.0}},
    {&B.RPeakDouble_nr, 3, {50.75, 350.0, 3.5}},
    {&B.RPeakDouble_ke, 2, {95.0, 203.0}},
    {&B.RPeakDouble_fa, 3, {11.399999999999999, 180.0, 1.8}},
    {&B.RPeakDouble_a4, 3, {174.0, 1200.0, 12.0}},
    {&B.RPeakDouble_lw, 1, {101.0}},  // the speedometer's peak, as the wheel speed comes
    {&B.SetpointValueDouble, 1, {20.0}},
    {&B.SetpointValueDouble_c, 1, {15.0}},
    {&B.SetpointValueDouble_p, 3, {(180 - ATMOSPHERE_KPA) * PSI_PER_KPA, 180.0, 1.8}},
    {&B.TargetPeakDouble, 3, {14.7 / 0.85, 1 / 0.85, 0.85}},
    {&B.TargetPeakDouble_b, 3, {14.7 / 0.85, 1 / 0.85, 0.85}},
};

int UnitCount(const EXPECTED_T& e)
{
    return e.unit[2] ? 3 : e.unit[1] ? 2 : 1;
}

TEST_F(Foreground, EveryTextInEveryUnit)
{
    for (uint8_T u = 1; u <= 3; u++) {
        Units(u, u, u, u);
        FeedAll();
        Pass();
        FeedAll();
        Pass();
        FeedAll();
        Refresh();
        for (const EXPECTED_T& e : m_expected) {
            // A temperature asked for a third unit keeps the text of its second.
            const int branch = (u < UnitCount(e) ? u : UnitCount(e)) - 1;
            const size_t field = reinterpret_cast<uint8_T*>(e.text) - reinterpret_cast<uint8_T*>(&B);
            EXPECT_EQ(Text(*e.text), e.unit[branch]) << "unit setting " << (int)u << ", text at offset " << field;
        }
    }
}

size_t Offset(const void* field)
{
    return (size_t)(static_cast<const uint8_T*>(field) - reinterpret_cast<const uint8_T*>(&B));
}

TEST_F(Foreground, EveryGaugeNumberInEveryUnit)
{
    for (uint8_T u = 1; u <= 3; u++) {
        Units(u, u, u, u);
        FeedAll();
        Pass();
        FeedAll();
        Pass();
        for (const GAUGE_NUMBERS_T& g : m_gauges) {
            const auto& e = g.unit[(u < g.units ? u : g.units) - 1];
            EXPECT_DOUBLE_EQ(*g.value, e.value) << "unit " << (int)u << ", number at offset " << Offset(g.value);
            EXPECT_EQ(*g.displayMin, e.min) << "unit " << (int)u << ", offset " << Offset(g.displayMin);
            EXPECT_EQ(*g.displayMax, e.max) << "unit " << (int)u << ", offset " << Offset(g.displayMax);
            EXPECT_EQ(*g.numDec, e.decimals) << "unit " << (int)u << ", offset " << Offset(g.numDec);
        }
        for (const NUMBER_T& n : m_numbers) {
            EXPECT_DOUBLE_EQ(*n.number, n.unit[(u < n.units ? u : n.units) - 1])
                << "unit " << (int)u << ", number at offset " << Offset(n.number);
        }
    }

    // Each number of the table is stated here.
    std::set<size_t> stated;
    for (const GAUGE_NUMBERS_T& g : m_gauges)
        for (const void* f : {(const void*)g.value, (const void*)g.displayMin, (const void*)g.displayMax,
                              (const void*)g.numDec})
            stated.insert(Offset(f));
    for (const NUMBER_T& n : m_numbers) stated.insert(Offset(n.number));
    size_t fields = 0;
    for (const TEXT_VALUE_T& v : TEXT_VALUES)
        for (uint16_T f : {v.numbers.number, v.numbers.displayMin, v.numbers.displayMax, v.numbers.numDec})
            if (f != TV_NONE) {
                fields++;
                EXPECT_TRUE(stated.count(f)) << "number at offset " << f;
            }
    EXPECT_EQ(fields, stated.size());
}

TEST_F(Foreground, EachTextTurnsToDashesWithItsOwnFrame)
{
    std::set<uint32_T> guards;
    for (const EXPECTED_T& e : m_expected) guards.insert(e.frame);
    for (uint32_T stopped : guards) {
        SetUp();
        FeedAll();
        Pass();
        // The frame stops; the others go on. 300 passes on, its texts read "---".
        for (int i = 0; i < 300; i++) {
            FeedAll(stopped);
            Timer_7Je7rTestPass(now_);
        }
        FeedAll(stopped);
        Refresh();
        for (const EXPECTED_T& e : m_expected) {
            const std::string text = Text(*e.text);
            if (e.frame == stopped) EXPECT_EQ(text, "---") << std::hex << "0x" << stopped;
            else EXPECT_NE(text, "---") << std::hex << "0x" << stopped << " stopped, 0x" << e.frame << " runs";
        }
    }
}

TEST_F(Foreground, EveryTextOfTheTableIsStatedHere)
{
    std::map<size_t, int> stated;  // offset in B, units
    for (const EXPECTED_T& e : m_expected)
        stated[(size_t)(reinterpret_cast<uint8_T*>(e.text) - reinterpret_cast<uint8_T*>(&B))] = UnitCount(e);
    size_t texts = 0;
    for (const TEXT_VALUE_T& v : TEXT_VALUES) {
        if (v.text == TV_NONE) continue;
        texts++;
        ASSERT_TRUE(stated.count(v.text)) << "text at offset " << v.text;
        EXPECT_EQ(UnitBranches(v.unit), stated[v.text]) << "text at offset " << v.text;
    }
    EXPECT_EQ(texts, std::size(m_expected));
}

TEST_F(Foreground, WorkedCasesOfTheUnits)
{
    // MAP of 101 kPa: about 0 above the atmosphere in PSI, 1.0 bar.
    Frame(0x125, {0, 0, 0, 0, 0, 0, 0x00, 0x65});
    Refresh();
    EXPECT_EQ(Text(B.ValueString_di), "-0.06");
    Units(3, 1, 1, 1);
    Refresh();
    EXPECT_EQ(Text(B.ValueString_di), " 1.0");

    // Oil at 200 kPa is 29 PSI: a plain pressure has no atmosphere taken off.
    Units(1, 1, 1, 1);
    Frame(0x163, {0, 0, 0x00, 0xC8, 0, 0, 0, 0});
    Refresh();
    EXPECT_EQ(Text(B.ValueString_ch), "   29");

    // 100 C is 212 F, 100 MPH is 161 km/h.
    Units(1, 2, 2, 1);
    Frame(0x118, {0, 0, 0, 0, 0, 0, 100, 0});
    Frame(0x102, {0, 0, 100, 0, 0, 0, 0, 0});
    Refresh();
    EXPECT_EQ(Text(B.ValueString_l), " 212");
    EXPECT_EQ(Text(B.ValueString_d), " 161");

    // Stoichiometric 14.7 and an equivalence ratio of 1.25: 11.76 AFR, lambda 0.80, 1.25.
    Frame(0x118, {0x05, 0xBE, 0, 0, 0, 0, 0, 0});
    Frame(0x164, {0, 0, 0, 0, 0, 0, 0x00, 0x7D});
    Frame(0x125, {});
    const char* const airFuel[] = {"11.76", " 0.80", " 1.25"};
    for (uint8_T u = 1; u <= 3; u++) {
        Units(1, 1, 1, u);
        Refresh();
        EXPECT_EQ(Text(B.ValueString_f), airFuel[u - 1]);
    }
    // Below 0.01 the ratio counts as 0.01: nothing divides by 0.
    Frame(0x164, {});
    Frame(0x125, {});
    const char* const lean[] = {"1470.00", "100.00", " 0.01"};
    for (uint8_T u = 1; u <= 3; u++) {
        Units(1, 1, 1, u);
        Refresh();
        EXPECT_EQ(Text(B.ValueString_f), lean[u - 1]);
    }
}

TEST_F(Foreground, ATextReadsDashesFromAge300WhileItsNumberStays)
{
    Frame(0x108, {0x0B, 0xB8, 0, 0, 0, 0, 0, 0});
    Pass();  // age 0
    EXPECT_EQ(Text(B.ValueString_do), " 3000");
    // The clock stands, so no text is refreshed while the frame ages.
    for (int age = 1; age <= 298; age++) Timer_7Je7rTestPass(now_);
    Refresh();  // age 299
    EXPECT_EQ(Text(B.ValueString_do), " 3000");
    EXPECT_EQ(CANFrameAge(0x108), 299);
    Refresh();  // age 300
    EXPECT_EQ(Text(B.ValueString_do), "---");
    EXPECT_EQ(Text(B.RPeakValue_im), "---");
    EXPECT_EQ(B.ValueDouble_km, 3000);
    EXPECT_EQ(B.RPeakDouble_mz, 3000);

    // A frame that never came reads "---" from the first pass.
    EXPECT_EQ(Text(B.ValueString_gi), "---");
}

TEST_F(Foreground, TextsRefreshEvery260msOnTenMillisecondTicks)
{
    std::vector<uint32_T> changes;
    std::string last = Text(B.ValueString_do);
    for (uint16_T rpm = 1; rpm <= 200; rpm++) {
        Frame(0x108, {(uint8_T)(rpm >> 8), (uint8_T)rpm, 0, 0, 0, 0, 0, 0});
        const uint32_T at = now_;
        Pass();
        if (Text(B.ValueString_do) != last) changes.push_back(at);
        last = Text(B.ValueString_do);
    }
    ASSERT_GE(changes.size(), 7u);
    for (size_t i = 1; i < changes.size(); i++) EXPECT_EQ(changes[i] - changes[i - 1], 260u);

    // When ticks are lost the refresh keeps to the clock, not to the count of passes.
    changes.clear();
    for (uint16_T rpm = 1; rpm <= 100; rpm++) {
        Frame(0x108, {(uint8_T)(rpm >> 8), (uint8_T)rpm, 0, 0, 0, 0, 0, 0});
        now_ += 20;
        const uint32_T at = now_;
        Pass();
        if (Text(B.ValueString_do) != last) changes.push_back(at);
        last = Text(B.ValueString_do);
    }
    for (size_t i = 1; i < changes.size(); i++) EXPECT_EQ(changes[i] - changes[i - 1], 270u);
}

TEST_F(Foreground, EachUnitBranchHasAGateOfItsOwn)
{
    Frame(0x125, {0, 0, 0, 0, 0, 0, 0x00, 0xC8});  // 200 kPa
    Refresh();
    EXPECT_EQ(Text(B.ValueString_di), "14.30");

    // kPa has not been shown yet: its gate is open and the next pass formats it.
    Units(2, 1, 1, 1);
    Pass();
    EXPECT_EQ(Text(B.ValueString_di), "  200");
    // The needle's number, the scale and its decimals follow the unit at once, every pass.
    EXPECT_EQ(B.ValueDouble_di, 200);
    EXPECT_EQ(B.DisplayMin_di, 0);
    EXPECT_EQ(B.DisplayMax_di, 375.79);
    EXPECT_EQ(B.NumDec_di, 0);
    EXPECT_EQ(Text(B.PressureUnits), "kPa");

    // Back to PSI within 260 ms of its last refresh: the text waits for PSI's own gate.
    Units(1, 1, 1, 1);
    Pass();
    EXPECT_EQ(Text(B.ValueString_di), "  200");
    EXPECT_DOUBLE_EQ(B.ValueDouble_di, (200 - 101.37931034482759) * 0.145);
    EXPECT_EQ(B.DisplayMin_di, -14.7);
    EXPECT_EQ(B.NumDec_di, 2);
    EXPECT_EQ(Text(B.PressureUnits), "PSI");
    now_ += 230;
    Pass();
    EXPECT_EQ(Text(B.ValueString_di), "14.30");
}

TEST_F(Foreground, AUnitSettingOutOfRangeLeavesTextsNumbersAndWordsAsTheyStood)
{
    FeedAll();
    Pass();
    FeedAll();
    Refresh();
    const std::string map = Text(B.ValueString_di), oil = Text(B.ValueString_lsk);
    const std::string speed = Text(B.ValueString_d), lambda = Text(B.ValueString_f);
    const real_T mapNumber = B.ValueDouble_di, mapMax = B.DisplayMax_di;
    for (uint8_T bad : {0, 4, 255}) {
        Units(bad, bad, (uint8_T)(bad == 4 ? 3 : bad), bad);
        Frame(0x125, {0, 0, 0, 0, 0, 0, 0x01, 0x00});
        Frame(0x109, {0, 0, 0, 0, 0x00, 0x20, 0, 0});
        Refresh();
        EXPECT_EQ(Text(B.ValueString_di), map) << (int)bad;
        EXPECT_EQ(Text(B.ValueString_lsk), oil) << (int)bad;
        EXPECT_EQ(Text(B.ValueString_d), speed) << (int)bad;
        EXPECT_EQ(Text(B.ValueString_f), lambda) << (int)bad;
        EXPECT_EQ(B.ValueDouble_di, mapNumber) << (int)bad;
        EXPECT_EQ(B.DisplayMax_di, mapMax) << (int)bad;
        EXPECT_EQ(Text(B.PressureUnits), "PSI");
        EXPECT_EQ(Text(B.TempUnits), "*C");
        // A text without a unit goes on.
        EXPECT_EQ(Text(B.ValueString_do), " 3000");
    }
}

TEST_F(Foreground, UnitWordsFollowTheirSettings)
{
    const char* const words[3][4] = {
        {"PSI", "MPH", "*C", "AFR"}, {"kPa", "km/h", "*F", "LAMBDA"}, {"bar", "Knts", "*F", "DESEQ"}};
    for (uint8_T u = 1; u <= 3; u++) {
        Units(u, u, u, u);
        Pass();
        EXPECT_EQ(Text(B.PressureUnits), words[u - 1][0]);
        EXPECT_EQ(Text(B.SpeedUnits), words[u - 1][1]);
        EXPECT_EQ(Text(B.TempUnits), words[u - 1][2]);
        EXPECT_EQ(Text(B.FuelUnits), words[u - 1][3]);
    }
}

TEST_F(Foreground, LabelsAreComposedFromTheTextsOfTheSamePass)
{
    Pass();
    EXPECT_EQ(Text(B.quorin_string_printf_j), "MAP (Setpt = ---)");
    EXPECT_EQ(Text(B.quorin_string_printf_m), "AFR1 (Target=---)");

    FeedAll();
    Refresh();
    // 180 kPa set point, 0.85 target.
    EXPECT_EQ(Text(B.quorin_string_printf_j), "MAP (Setpt = 11.40)");
    EXPECT_EQ(Text(B.quorin_string_printf), "WG PRESS (Setpt = 11.40)");
    EXPECT_EQ(Text(B.quorin_string_printf_m), "AFR1 (Target=17.29)");
    EXPECT_EQ(Text(B.quorin_string_printf_f), "AFR2 (Target=17.29)");
    Units(2, 1, 1, 2);
    Pass();
    EXPECT_EQ(Text(B.quorin_string_printf_j), "MAP (Setpt = 180)");
    EXPECT_EQ(Text(B.quorin_string_printf_f), "AFR2 (Target= 1.18)");
}

TEST_F(Foreground, OnAndOffTexts)
{
    Frame(0x109, {0, 0, 0, 0x40, 0, 0, 0, 0});  // manual mode
    Frame(0x119, {});
    Pass();
    EXPECT_EQ(Text(B.quorin_string_o), "ON");
    EXPECT_EQ(Text(B.quorin_string), "OFF");
    Frame(0x109, {});
    Frame(0x119, {0x01, 0, 0, 0, 0, 0, 0, 0});  // converter locked up
    Refresh();
    EXPECT_EQ(Text(B.quorin_string_o), "OFF");
    EXPECT_EQ(Text(B.quorin_string), "ON");
    for (int i = 0; i < 300; i++) Timer_7Je7rTestPass(now_);
    Refresh();
    EXPECT_EQ(Text(B.quorin_string_o), "---");
}

// Whatever a settings file with a right CRC holds, and whatever the bus carries, every
// text stays inside its record and ends in a terminator (the sanitizer build sees any
// access outside the tables).
TEST_F(Foreground, AnySettingAndAnyFrameIsSafe)
{
    uint32_T seed = 99;
    auto next = [&] { return (uint8_T)((seed = seed * 1103515245 + 12345) >> 16); };
    for (int v = 0; v < 256; v++) {
        EEVariables_T& ee = EEVariables_RAMShadow;
        ee.PRESSURE_UNITS = ee.SPEED_UNITS = ee.TEMP_UNITS = ee.AF_UNITS = (uint8_T)v;
        ee.USER_PROFILE = ee.CURRENT_QUAD_SCREEN = ee.SELECTED_QUAD = (uint8_T)v;
        ee.PROFILE_GAUGE_COUNT[v % 3] = (uint8_T)v;
        ee.BoostControl = ee.TractionControl = ee.HighOctane = ee.ALT_TIRE = (uint8_T)v;
        for (const CAN_FRAME_T& f : CAN_FRAMES) {
            if (f.dir != CAN_RX) continue;
            BYTES_T data;
            for (uint8_T& b : data) b = next();
            if (f.port == CAN_PORT2) FramePort2(f.id, data);
            else Frame(f.id, data);
        }
        Refresh();
        for (size_t i = 0; i < TEXT_VALUE_COUNT; i++) {
            const S_String* text = TextValueRecord(i);
            if (text) {
                ASSERT_LT(strnlen(text->string, text->size), text->size) << i;
            }
        }
        for (S_String* label : {B.quorin_string_printf, B.quorin_string_printf_j, B.quorin_string_printf_f,
                                B.quorin_string_printf_m, B.quorin_string, B.quorin_string_o})
            ASSERT_LT(strnlen(label->string, label->size), label->size);
        ASSERT_NE(B.PressureUnits, nullptr);
        ASSERT_NE(B.FuelUnits, nullptr);
    }
}

}  // namespace
