// The square crop of a profile picture: the picture fitted into a view with the chosen
// square drawn over it. Dragging outside the square draws a new one from that corner;
// dragging inside it moves it. It starts with the largest square in the middle, so OK
// alone gives a sensible picture. Enter is OK, Escape is Cancel.
#pragma once

#include <windows.h>

#include "app/CropGeometry.hpp"
#include "base/win/UniqueHandle.hpp"
#include "base/win/Window.hpp"

namespace corvandell::win {

class ProfilePicture;

class CropDialog final : public Window {
public:
    // `picture` must outlive the dialog.
    CropDialog(HINSTANCE instance, HWND owner, const ProfilePicture& picture);
    ~CropDialog() override;

    // Shows the dialog and disables its owner until it ends; false when it could not be made.
    bool create(int showCommand = SW_SHOW);
    // create, then a modal loop until OK or Cancel: the chosen square, or side 0 if cancelled.
    CropSquare run();

    bool isDone() const noexcept { return isDone_; }
    // The square chosen so far, in picture pixels.
    CropSquare selection() const noexcept { return selection_; }
    // The result: the selection after OK, side 0 after Cancel.
    CropSquare result() const noexcept { return result_; }
    // Where the picture is drawn, in client pixels (for a test's or a user's drag).
    PixelRect picturePlacement() const noexcept { return placement_; }

private:
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    LRESULT route(UINT message, WPARAM wParam, LPARAM lParam);
    void onCreate();
    void layout();
    void paint(HDC dc) const;
    void onMouseDown(ViewPoint point);
    void onMouseMove(ViewPoint point);
    void end(bool isAccepted);

    enum class Drag { None, Drawing, Moving };

    HINSTANCE instance_;
    HWND owner_;
    const ProfilePicture& picture_;
    UINT dpi_ = 96;
    UniqueFont font_;
    RECT view_{};         // the area the picture is fitted into, client pixels
    PixelRect placement_; // the picture inside it
    UniqueBitmap scaled_; // the picture at placement size
    CropSquare selection_;
    CropSquare result_;
    Drag drag_ = Drag::None;
    ViewPoint dragStart_;
    CropSquare squareAtDragStart_;
    bool isDone_ = false;
    bool isOwnerEnabled_ = false;
};

} // namespace corvandell::win
