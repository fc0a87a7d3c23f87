#pragma once
// The layout that knock, system information and the fault list share: the background
// picture, a title on the back layer, the live texts as one element on the front layer.
#include "freetype_api.h"

constexpr U16 LIST_SCREEN_TEXT_COLOUR = 0xFFFD;
constexpr U32 LIST_SCREEN_TEXT_SIZE = 12;

// Both layers blanked (the front one transparent), the background and the title.
void ListScreenCreate(const char* title);
// One line of the list's font (font 0, size 12, top aligned) as the screen's element.
void ListScreenText(U32 elementId, S32 x, S32 y, const char* text, FTF_HORIZONTAL_ALIGNMENT_T align, S32 spacing,
                    U16 colour, LAYER_T layer);
