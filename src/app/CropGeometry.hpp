// The square crop of a profile picture: where the picture is drawn in the crop dialog's
// view, and which square of the picture's own pixels a selection made in that view means.
//
// The picture is drawn scaled to fit and centred. The user drags out a square from a
// corner or drags the square to move it; whatever the pointer does, the result is a
// square that lies wholly inside the picture, in picture pixels, so the crop never reads
// outside the bitmap and the avatar is never stretched.
#pragma once

namespace corvandell {

struct ViewPoint {
    int x = 0;
    int y = 0;
};

struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

// A square of picture pixels; side 0 means no selection.
struct CropSquare {
    int x = 0;
    int y = 0;
    int side = 0;
    friend bool operator==(const CropSquare&, const CropSquare&) = default;
};

struct PictureSize {
    int width = 0;
    int height = 0;
};

// The picture scaled (up or down) to fit the view, centred; empty for an empty picture or view.
PixelRect fitPictureInView(PictureSize picture, int viewWidth, int viewHeight);

// The largest square in the middle of the picture: the selection a new picture starts with.
CropSquare centredSquare(PictureSize picture);

// A drag from `from` to `to` in view pixels: a square anchored at the drag's start, its side
// the larger of the drag's extents, growing toward the pointer and shrunk to stay inside the
// picture. A start outside the picture is moved onto its edge first. Side 0 when the drag
// has not moved by a whole picture pixel.
CropSquare squareFromDrag(PixelRect placement, PictureSize picture, ViewPoint from, ViewPoint to);

// The square moved by a drag of (dx, dy) view pixels, stopped at the picture's edges.
CropSquare movedSquare(CropSquare square, PixelRect placement, PictureSize picture, int dxView, int dyView);

// Where the square is drawn in the view.
PixelRect squareInView(CropSquare square, PixelRect placement, PictureSize picture);

bool isInside(PixelRect rect, ViewPoint point);

} // namespace corvandell
