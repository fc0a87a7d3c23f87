#pragma once
// The dash's font table: six TrueType files embedded in the program (resources/fonts/).
#include "freetype_api.h"

extern const unsigned char TTFONT_ARIAL[];
extern const unsigned int TTFONT_ARIAL_SIZE;
extern const unsigned char TTFONT_COURIER[];
extern const unsigned int TTFONT_COURIER_SIZE;
extern const unsigned char TTFONT_COURBDNUM[];
extern const unsigned int TTFONT_COURBDNUM_SIZE;
extern const unsigned char TTFONT_FUTURE[];
extern const unsigned int TTFONT_FUTURE_SIZE;
extern const unsigned char TTFONT_COMIC[];
extern const unsigned int TTFONT_COMIC_SIZE;
extern const unsigned char TTFONT_MICRO[];
extern const unsigned int TTFONT_MICRO_SIZE;

// In FONT_INDEX_T order.
extern const FTF_FONT_DATA_T gpaFreetypeFontData[FONT_INDEX_END];
extern const U32 gFreetypeNumFonts;
