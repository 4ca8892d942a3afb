// The program's icon file: the window star at every size Windows asks an .ico for, drawn
// from the same corners as the window and tray icons, so the Explorer, Start-menu and
// taskbar icons match the running window. Built at build time by a host tool, never drawn
// by hand.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace corvandell {

struct IconColour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
};

// The sizes of the program's icon, smallest first: shell views pick the nearest one, and
// a missing size is scaled from another and looks blurred.
inline constexpr int kProgramIconSides[] = {16, 24, 32, 48, 64, 128, 256};

// The bytes of an .ico holding one 32-bit image per side (1 to 256): the star in
// `colour`, its edge antialiased through the alpha channel, the AND mask set wherever a
// pixel is fully transparent.
std::vector<std::uint8_t> starIconFile(std::span<const int> sides, IconColour colour);

} // namespace corvandell
