// Drags in any direction make squares that stay inside the picture.
#include "app/CropGeometry.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace corvandell {
namespace {

TEST(CropGeometry, PicturesAreFittedToTheViewAndCentred) {
    struct Case {
        PictureSize picture;
        int viewWidth;
        int viewHeight;
        PixelRect expected;
    };
    const std::vector<Case> cases = {
        {{800, 400}, 400, 400, {0, 100, 400, 200}}, // wide: limited by the width
        {{300, 900}, 400, 300, {150, 0, 100, 300}}, // tall: limited by the height
        {{100, 100}, 400, 300, {50, 0, 300, 300}},  // small pictures are enlarged
        {{100000, 1}, 400, 300, {0, 149, 400, 1}},  // never thinner than a pixel
        {{0, 100}, 400, 300, {}},
    };
    for (const auto& [picture, viewWidth, viewHeight, expected] : cases) {
        EXPECT_EQ(fitPictureInView(picture, viewWidth, viewHeight), expected)
            << picture.width << "x" << picture.height << " in " << viewWidth << "x" << viewHeight;
    }
}

TEST(CropGeometry, ANewPictureStartsWithItsLargestCentredSquare) {
    EXPECT_EQ(centredSquare({800, 400}), (CropSquare{200, 0, 400}));
    EXPECT_EQ(centredSquare({0, 900}), CropSquare{});
}

TEST(CropGeometry, ADragMakesASquareInPicturePixelsThatStaysInsideThePicture) {
    // An 800x400 picture drawn at half size in a 400x400 view: at (0, 100), 400x200.
    const PictureSize picture{800, 400};
    const PixelRect placement = fitPictureInView(picture, 400, 400);
    struct Case {
        ViewPoint from;
        ViewPoint to;
        CropSquare expected;
    };
    const std::vector<Case> cases = {
        {{50, 150}, {100, 175}, {100, 100, 100}},  // the larger extent wins: 50 view px = 100 picture px
        {{200, 200}, {150, 120}, {240, 40, 160}},  // up and to the left grows from the anchor backwards
        {{300, 150}, {399, 299}, {600, 100, 200}}, // shrunk to fit: only 200 picture px of room rightward
        {{0, 0}, {400, 400}, {0, 0, 400}},         // a start above the picture starts on its edge
        {{50, 150}, {50, 150}, {}},                // no movement, no square
        {{400, 300}, {450, 350}, {}},              // no room toward the pointer
        {{100, 200}, {100, 201}, {200, 200, 2}},   // the smallest drag is one view pixel
    };
    for (const auto& [from, to, expected] : cases) {
        const CropSquare square = squareFromDrag(placement, picture, from, to);
        EXPECT_EQ(square, expected) << "(" << from.x << "," << from.y << ") to (" << to.x << "," << to.y
                                    << ")";
        EXPECT_GE(square.x, 0);
        EXPECT_GE(square.y, 0);
        EXPECT_LE(square.x + square.side, picture.width);
        EXPECT_LE(square.y + square.side, picture.height);
    }
}

TEST(CropGeometry, MovingTheSquareStopsAtThePictureEdges) {
    const PictureSize picture{800, 400};
    const PixelRect placement = fitPictureInView(picture, 400, 400);
    const CropSquare square{200, 100, 200};
    EXPECT_EQ(movedSquare(square, placement, picture, 10, -5), (CropSquare{220, 90, 200}));
    EXPECT_EQ(movedSquare(square, placement, picture, 500, 500), (CropSquare{600, 200, 200}));
    EXPECT_EQ(movedSquare(CropSquare{}, placement, picture, 10, 10), CropSquare{});
}

TEST(CropGeometry, TheSquareIsDrawnWhereItWasDragged) {
    const PictureSize picture{800, 400};
    const PixelRect placement = fitPictureInView(picture, 400, 400);
    const CropSquare square = squareFromDrag(placement, picture, {50, 150}, {100, 175});
    EXPECT_EQ(squareInView(square, placement, picture), (PixelRect{50, 150, 50, 50}));
    EXPECT_TRUE(isInside(squareInView(square, placement, picture), {99, 199}));
    EXPECT_FALSE(isInside(squareInView(square, placement, picture), {100, 150}));
}

} // namespace
} // namespace corvandell
