// Random bytes as strings, wild boxes and anchors: nothing may be written outside the
// part of the layers that the panel uses, and no call may fail.
#include <climits>
#include <random>
#include <string>

#include "text_fixture.h"

namespace {

class Fuzz {
public:
    explicit Fuzz(U32 seed) : m_rng(seed) {}

    U32 Below(U32 n) { return (U32)(m_rng() % n); }

    S32 Coordinate()
    {
        static constexpr S32 EDGES[] = {INT_MIN, INT_MIN + 1, -100000, -1, 0, 1, 159, 160, 239, 240, 319, 320, 479,
                                        480, 799, 800, 959, 960, 100000, INT_MAX - 1, INT_MAX};
        if (Below(3) == 0) return EDGES[Below(sizeof EDGES / sizeof EDGES[0])];
        return (S32)Below(3000) - 1000;
    }

    // Mostly valid UTF-8 of the kinds screens write, with raw bytes mixed in.
    std::string Text()
    {
        static const char* PIECES[] = {"A", "g", "8", " ", ".", "-", ":", "\xC3\xA9", "\xC2\xB0", "\xE2\x82\xAC",
                                       "\xF0\x9F\x98\x80", "\xC2\xAD", "W", "To"};
        std::string s;
        const U32 length = Below(8) == 0 ? 150 + Below(300) : Below(30);
        while (s.size() < length) {
            if (Below(6) == 0) {
                s += (char)(1 + Below(255));
            } else {
                s += PIECES[Below(sizeof PIECES / sizeof PIECES[0])];
            }
        }
        return s;
    }

private:
    std::mt19937 m_rng;
};

TEST_F(TextTest, RandomInputNeverWritesOutsideTheLayers)
{
    // On the small panel everything past 2 * 240 rows of 320 pixels is never drawn.
    const U32 used = 320 * 480;
    for (U32 i = used; i < LAYER_SIZE_PIXELS; i++) {
        Layer1Buffer[i] = (U16)(i * 7 + 1);
        Layer2Buffer[i] = (U16)(i * 13 + 5);
    }
    Fuzz fuzz(20240613);
    for (int round = 0; round < 4000; round++) {
        const std::string text = fuzz.Text();
        const U32 id = fuzz.Below(4) == 0 ? ELEMENTID_INVALID : 100 + fuzz.Below(50);
        const LAYER_T layer = (LAYER_T)fuzz.Below(4);
        const U32 opacity = fuzz.Below(4) == 0 ? 100 : fuzz.Below(200);
        const U16 colour = (U16)fuzz.Below(0x10000);
        switch (fuzz.Below(4)) {
        case 0: {
            const FTF_TEXTBOX_T box{{fuzz.Coordinate(), fuzz.Coordinate(), fuzz.Coordinate(), fuzz.Coordinate()},
                                    fuzz.Below(8),
                                    1 + fuzz.Below(140),
                                    layer,
                                    colour,
                                    (FTF_HORIZONTAL_ALIGNMENT_T)fuzz.Below(4),
                                    (FTF_VERTICAL_ALIGNMENT_T)fuzz.Below(4),
                                    fuzz.Below(3) == 0 ? fuzz.Coordinate() : (int)fuzz.Below(20) - 10};
            EXPECT_LE(FTFBlitTextBoxExEle(id, &box, text.c_str(), opacity), FTF_MAX_GLYPHS);
            break;
        }
        case 1:
            outtextxyExEle(id, fuzz.Coordinate(), fuzz.Coordinate(), text.c_str(), (FONT_INDEX_T)fuzz.Below(8),
                           1 + fuzz.Below(120), (FTF_HORIZONTAL_ALIGNMENT_T)fuzz.Below(4),
                           (FTF_VERTICAL_ALIGNMENT_T)fuzz.Below(4), fuzz.Coordinate(), colour, opacity, layer);
            break;
        case 2:
            NumSetFont((FONT_INDEX_T)fuzz.Below(6), 1 + fuzz.Below(120), (FTF_HORIZONTAL_ALIGNMENT_T)fuzz.Below(4),
                       fuzz.Below(10));
            outnumxyftExEle(id, fuzz.Coordinate(), fuzz.Coordinate(), text.c_str(), colour, opacity, layer);
            break;
        default:
            DrawTextBoxExEle(id, fuzz.Coordinate(), fuzz.Coordinate(), fuzz.Coordinate(), fuzz.Coordinate(),
                             (THICKNESS_T)fuzz.Below(5), colour, 1 + fuzz.Below(120), (FONT_INDEX_T)fuzz.Below(8),
                             colour, text.c_str(), opacity, layer);
            break;
        }
        for (DIRTYRECT_T* d = DirtyRectGetFirst(); d; d = d->pNext) {
            const GFX_RECT_T& r = d->rect;
            ASSERT_TRUE(r.Left >= 0 && r.Top >= 0 && r.Right <= 319 && r.Bottom <= 239 && r.Left <= r.Right &&
                        r.Top <= r.Bottom)
                << r;
        }
        if (round % 50 == 0) {
            DirtyRectFlip();
            ElementFlip();
            ElementFillPrevRect(100 + fuzz.Below(50), ALPHA_COLOR, (LAYER_T)fuzz.Below(3));
        }
    }
    U32 overwritten = 0;
    for (U32 i = used; i < LAYER_SIZE_PIXELS; i++) {
        overwritten += Layer1Buffer[i] != (U16)(i * 7 + 1);
        overwritten += Layer2Buffer[i] != (U16)(i * 13 + 5);
    }
    EXPECT_EQ(overwritten, 0u);
}

}  // namespace
