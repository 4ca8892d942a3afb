// Build-time host tool: writes the program's icon (corvandell.ico) for the resource
// script. Runs on the build machine, so it uses only the portable star code.
//   make-star-icon OUTPUT.ico
#include "app/StarIconFile.hpp"

#include <cstdio>
#include <fstream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make-star-icon OUTPUT.ico\n");
        return 2;
    }
    // The star colour of the window and tray icons (red FA, green CC, blue 15).
    const std::vector<std::uint8_t> bytes =
        corvandell::starIconFile(corvandell::kProgramIconSides, {0xFA, 0xCC, 0x15});
    std::ofstream out(argv[1], std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) {
        std::fprintf(stderr, "make-star-icon: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
