#include "UI/PixelIcon.h"

namespace mossbit {

// clang-format off

constinit const PixelGlyph PixelGlyph::speaker = {{
    "....X....",
    "...XX.X..",
    "XXXXX.X.X",
    "XXXXX.X.X",
    "XXXXX.X.X",
    "...XX.X..",
    "....X....",
}};

constinit const PixelGlyph PixelGlyph::mute = {{
    "....X....",
    "...XX....",
    "XXXXX.X.X",
    "XXXXX..X.",
    "XXXXX.X.X",
    "...XX....",
    "....X....",
}};

constinit const PixelGlyph PixelGlyph::plus = {{
    "...X...",
    "...X...",
    "...X...",
    "XXXXXXX",
    "...X...",
    "...X...",
    "...X...",
}};

constinit const PixelGlyph PixelGlyph::minus = {{
    ".......",
    ".......",
    ".......",
    "XXXXXXX",
    ".......",
    ".......",
    ".......",
}};

constinit const PixelGlyph PixelGlyph::loop = {{
    ".XXXXX.",
    "XX...XX",
    "X.....X",
    "X.....X",
    "X.....X",
    "XX...XX",
    ".XXXXX.",
}};

constinit const PixelGlyph PixelGlyph::stop = {{
    ".......",
    ".XXXXX.",
    ".XXXXX.",
    ".XXXXX.",
    ".XXXXX.",
    ".XXXXX.",
    ".......",
}};

constinit const PixelGlyph PixelGlyph::play = {{
    "X...",
    "XX..",
    "XXX.",
    "XXXX",
    "XXX.",
    "XX..",
    "X...",
}};

// clang-format on

} // namespace mossbit
