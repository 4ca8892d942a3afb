// View and picture coordinates meet through the placement rectangle: one picture pixel is
// placement.width / picture.width view pixels in both directions, since the fit keeps the
// aspect ratio. Products are taken in 64 bits so a huge photograph cannot overflow them.
#include "app/CropGeometry.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace corvandell {
namespace {

int scale(int value, int numerator, int denominator) {
    if (denominator <= 0) {
        return 0;
    }
    return static_cast<int>(static_cast<std::int64_t>(value) * numerator / denominator);
}

// A view point in picture pixels, clamped onto the picture.
ViewPoint toPicture(PixelRect placement, PictureSize picture, ViewPoint point) {
    const int x = scale(point.x - placement.x, picture.width, placement.width);
    const int y = scale(point.y - placement.y, picture.height, placement.height);
    return {std::clamp(x, 0, picture.width), std::clamp(y, 0, picture.height)};
}

bool isEmpty(PictureSize picture) {
    return picture.width <= 0 || picture.height <= 0;
}

} // namespace

PixelRect fitPictureInView(PictureSize picture, int viewWidth, int viewHeight) {
    if (isEmpty(picture) || viewWidth <= 0 || viewHeight <= 0) {
        return {};
    }
    // Compare the aspect ratios without division: the wider one is limited by the width.
    const bool isWiderThanView = static_cast<std::int64_t>(picture.width) * viewHeight >=
                                 static_cast<std::int64_t>(picture.height) * viewWidth;
    int width = viewWidth;
    int height = viewHeight;
    if (isWiderThanView) {
        height = std::max(1, scale(picture.height, viewWidth, picture.width));
    } else {
        width = std::max(1, scale(picture.width, viewHeight, picture.height));
    }
    return {(viewWidth - width) / 2, (viewHeight - height) / 2, width, height};
}

CropSquare centredSquare(PictureSize picture) {
    if (isEmpty(picture)) {
        return {};
    }
    const int side = std::min(picture.width, picture.height);
    return {(picture.width - side) / 2, (picture.height - side) / 2, side};
}

CropSquare squareFromDrag(PixelRect placement, PictureSize picture, ViewPoint from, ViewPoint to) {
    if (isEmpty(picture) || placement.width <= 0 || placement.height <= 0) {
        return {};
    }
    const ViewPoint anchor = toPicture(placement, picture, from);
    const ViewPoint pointer = toPicture(placement, picture, to);
    const int dx = pointer.x - anchor.x;
    const int dy = pointer.y - anchor.y;
    const bool isRightward = dx >= 0;
    const bool isDownward = dy >= 0;
    const int roomX = isRightward ? picture.width - anchor.x : anchor.x;
    const int roomY = isDownward ? picture.height - anchor.y : anchor.y;
    const int side = std::min({std::max(std::abs(dx), std::abs(dy)), roomX, roomY});
    if (side <= 0) {
        return {};
    }
    return {isRightward ? anchor.x : anchor.x - side, isDownward ? anchor.y : anchor.y - side, side};
}

CropSquare movedSquare(CropSquare square, PixelRect placement, PictureSize picture, int dxView, int dyView) {
    if (square.side <= 0 || placement.width <= 0 || placement.height <= 0) {
        return square;
    }
    const int dx = scale(dxView, picture.width, placement.width);
    const int dy = scale(dyView, picture.height, placement.height);
    square.x = std::clamp(square.x + dx, 0, std::max(0, picture.width - square.side));
    square.y = std::clamp(square.y + dy, 0, std::max(0, picture.height - square.side));
    return square;
}

PixelRect squareInView(CropSquare square, PixelRect placement, PictureSize picture) {
    if (isEmpty(picture)) {
        return {};
    }
    const int left = placement.x + scale(square.x, placement.width, picture.width);
    const int top = placement.y + scale(square.y, placement.height, picture.height);
    const int right = placement.x + scale(square.x + square.side, placement.width, picture.width);
    const int bottom = placement.y + scale(square.y + square.side, placement.height, picture.height);
    return {left, top, right - left, bottom - top};
}

bool isInside(PixelRect rect, ViewPoint point) {
    return point.x >= rect.x && point.y >= rect.y && point.x < rect.x + rect.width &&
           point.y < rect.y + rect.height;
}

} // namespace corvandell
