// Dirty rectangles and elements.
#include "display_fixture.h"
#include "b_fill.h"

namespace {

using Bookkeeping = DisplayTest;

TEST_F(Bookkeeping, AddClipsToTheScreenProperAndFeedsAllThreeLists)
{
    DirtyRectAdd(-5, -5, 4, 4);
    DirtyRectAdd(0, 240, 10, 300);  // wholly below the screen: nothing
    DirtyRectAdd(300, 200, 1000, 1000);
    const std::vector<GFX_RECT_T> expected = {{300, 200, 319, 239}, {0, 0, 4, 4}};
    for (int page = 0; page < 3; page++) {
        EXPECT_EQ(CurrentDirty(), expected) << "page " << page;
        DirtyRectFlip();
    }
    EXPECT_TRUE(CurrentDirty().empty()) << "gone after the third frame";
    EXPECT_EQ(DirtyRectTestFreeCount(), DIRTYRECT_POOL_SIZE);
}

TEST_F(Bookkeeping, FixupMergesOnlyOverlapsAndRestartsFromTheHead)
{
    DirtyRectAdd(0, 0, 9, 9);
    DirtyRectAdd(10, 0, 19, 9);  // touches: stays separate
    DirtyRectFixup();
    EXPECT_EQ(CurrentDirty().size(), 2u);
    DirtyRectFlip();

    // List order is newest first: C, B, A. C overlaps B only; the union C+B then
    // reaches A, which was checked against C before: the restart merges it too.
    DirtyRectAdd(0, 0, 10, 9);      // A
    DirtyRectAdd(50, 0, 60, 9);     // B
    DirtyRectAdd(8, 5, 55, 6);      // C
    DirtyRectFixup();
    EXPECT_EQ(CurrentDirty(), (std::vector<GFX_RECT_T>{{0, 0, 60, 9}}));
    DirtyRectAdd(0, 0, 10, 9);
    DirtyRectAdd(10, 0, 19, 9);
    DirtyRectFixup();
    EXPECT_EQ(CurrentDirty(), (std::vector<GFX_RECT_T>{{0, 0, 60, 9}})) << "shares column 10 with the union";
}

TEST_F(Bookkeeping, PoolExhaustionServesTheListsInOrderThenNothing)
{
    DirtyRectAdd(100, 100, 101, 101);
    DirtyRectFlip();  // list 0 gives its record back; lists 1 and 2 keep theirs
    for (U32 i = 0; i < DIRTYRECT_POOL_SIZE / 3 - 1; i++) DirtyRectAdd(0, 0, 1, 1);
    ASSERT_EQ(DirtyRectTestFreeCount(), 1u);
    DirtyRectAdd(7, 7, 8, 8);  // one record: list 0 only
    DirtyRectAdd(9, 9, 9, 9);  // none
    EXPECT_EQ(DirtyRectTestFreeCount(), 0u);
    const GFX_RECT_T r = {7, 7, 8, 8};
    EXPECT_NE(CurrentDirty().front(), r) << "list 1";
    DirtyRectFlip();
    EXPECT_NE(CurrentDirty().front(), r) << "list 2";
    DirtyRectFlip();
    EXPECT_EQ(CurrentDirty().front(), r) << "list 0";
}

TEST_F(Bookkeeping, DisabledModuleKeepsItsListsAndIndex)
{
    DirtyRectAdd(1, 1, 2, 2);
    DirtyRectEnable(FALSE);
    DirtyRectAdd(3, 3, 4, 4);
    DirtyRectFlip();
    EXPECT_EQ(DirtyRectGetFirst(), nullptr);
    DirtyRectEnable(TRUE);
    EXPECT_EQ(CurrentDirty(), (std::vector<GFX_RECT_T>{{1, 1, 2, 2}}));
    DirtyRectDebugEnable(FALSE);  // adds the whole screen
    EXPECT_EQ(CurrentDirty().front(), (GFX_RECT_T{0, 0, 319, 239}));
}

TEST_F(Bookkeeping, ElementIds)
{
    EXPECT_EQ(ElementGetNewId(), 10001u);
    EXPECT_EQ(ElementGetNewId(), 10002u);
    // Static ids work without asking; 5 and 1005 share a bucket but not a record.
    ElementUpdate(5, 0, 0, 1, 1);
    ElementUpdate(1005, 10, 10, 11, 11);
    ElementUpdate(ELEMENTID_INVALID, 0, 0, 5, 5);
    ElementFlip();
    GFX_RECT_T r;
    ASSERT_TRUE(ElementGetPrevRect(5, &r));
    EXPECT_EQ(r, (GFX_RECT_T{0, 0, 1, 1}));
    ASSERT_TRUE(ElementGetPrevRect(1005, &r));
    EXPECT_EQ(r, (GFX_RECT_T{10, 10, 11, 11}));
    EXPECT_FALSE(ElementGetPrevRect(ELEMENTID_INVALID, &r));
    EXPECT_FALSE(ElementGetPrevRect(6, &r));
    EXPECT_FALSE(ElementGetPrevRect(5, nullptr));
}

TEST_F(Bookkeeping, ElementDrawWipeCycle)
{
    const U32 id = ElementGetNewId();
    blockfillExEle(id, 0, 0, 9, 9, RED, 100, LAYER2);
    ElementFillPrevRect(id, ALPHA_COLOR, LAYER2);  // same frame: nothing known yet
    EXPECT_EQ(L2(5, 5), RED);
    blockfillExEle(id, 100, 100, 109, 109, RED, 100, LAYER2);
    blockfillExEle(ELEMENTID_INVALID, 50, 50, 51, 51, GREEN, 100, LAYER2);
    ElementFlip();
    GFX_RECT_T r;
    ASSERT_TRUE(ElementGetPrevRect(id, &r));
    EXPECT_EQ(r, (GFX_RECT_T{0, 0, 109, 109}));
    // Next frame: the wipe clears the whole box, with what others drew inside it.
    ElementFillPrevRect(id, ALPHA_COLOR, LAYER2);
    EXPECT_EQ(L2(5, 5), ALPHA_COLOR);
    EXPECT_EQ(L2(50, 50), ALPHA_COLOR);
    EXPECT_EQ(L2(109, 109), ALPHA_COLOR);
    EXPECT_EQ(L2(110, 110), 0);
    // Not drawn this frame: the place of the last picture is remembered, and wipes repeat.
    ElementFlip();
    EXPECT_TRUE(ElementGetPrevRect(id, &r));
    ElementResetAll();
    EXPECT_FALSE(ElementGetPrevRect(id, &r));
    EXPECT_GT(ElementGetNewId(), id) << "ids survive a reset";
}

TEST_F(Bookkeeping, ElementPoolFullLeavesNewIdsUntracked)
{
    for (U32 id = 0; id < ELEMENT_POOL_SIZE; id++) ElementUpdate(id, 0, 0, 1, 1);
    ElementUpdate(ELEMENT_POOL_SIZE + 7, 0, 0, 1, 1);
    ElementFlip();
    GFX_RECT_T r;
    EXPECT_TRUE(ElementGetPrevRect(ELEMENT_POOL_SIZE - 1, &r));
    EXPECT_FALSE(ElementGetPrevRect(ELEMENT_POOL_SIZE + 7, &r));
}

}  // namespace
