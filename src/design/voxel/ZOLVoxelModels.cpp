// SPDX-License-Identifier: Apache-2.0
#include "design/voxel/ZOLVoxelModels.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ostrel {

std::string_view rawValue(ZOLVoxelColor color)
{
    constexpr std::array<std::string_view, zolVoxelColors.size()> words { "ink", "mid", "light", "red" };
    return words[static_cast<std::size_t>(color)];
}

std::vector<ZOLVoxelCell> ZOLVoxelModel::signals() const
{
    std::vector<ZOLVoxelCell> cells;
    for (const ZOLVoxel& voxel : voxels)
        if (voxel.c == ZOLVoxelColor::red)
            cells.push_back(voxel.cell());
    return cells;
}

namespace ZOLVoxelModels {

namespace {

using namespace std::literals;
using enum ZOLVoxelColor;

// Each figure as one sees it from the front: a row for each height, the top one first, and in it a group for
// each depth y, the rearmost first. i is ink, m mid, l light, r red, a point no cube.

constexpr std::array familyRows {
    "...i.i... ...i.i..."sv,
    ".iii.iii. .iii.iii."sv,
    "iiii.iiii iiii.iiii"sv,
    "iiii.iiii iiii.iiii"sv,
    "irri.iiii irri.iiii"sv,
    "irri.i... irri.i..."sv,
    "iiii.i..i iiii.i..i"sv,
    "iiii.iiii iiii.iiii"sv,
    ".iii.iii. .iii.iii."sv,
    "...i.i... ...i.i..."sv,
    ".....i... .....i..."sv,
    ".....i... .....i..."sv,
};

constexpr std::array tessitRows {
    ".......i. .......i."sv,
    "........i ........i"sv,
    "iiiiiiiii iiiiiiiir"sv,
    "........i ........i"sv,
    ".......i. .......i."sv,
    "..i...... ..i......"sv,
    ".i....... .i......."sv,
    "iiiiiiiii iiiiiiiii"sv,
    ".i....... .i......."sv,
    "..i...... ..i......"sv,
};

constexpr std::array vormelRows {
    "llllllllllll ............"sv,
    "llllllllllll .ii........."sv,
    "llllllllllll .ii........."sv,
    "llllllllllll .ii.rmmmmmm."sv,
    "llllllllllll .ii........."sv,
    "llllllllllll .ii.mmmmm..."sv,
    "llllllllllll .ii........."sv,
    "llllllllllll .ii.mmmmmm.."sv,
    "llllllllllll .ii........."sv,
    "llllllllllll .ii........."sv,
    "llllllllllll .ii........."sv,
    "llllllllllll ............"sv,
};

constexpr std::array ostrelRows {
    "...... ...... ..mm.. ..mm.. ...... ......"sv,
    "...... ..mm.. .mmmm. .mmmm. ..mm.. ......"sv,
    "..mm.. .mmmm. mmmmmm mmmmmm .mmmm. ..mm.."sv,
    "..mm.. .mmmm. mmmmmm mmmmmm .mmmm. ..mm.."sv,
    "..ii.. .iiii. iiiiir iiiiir .iiii. ..ii.."sv,
    "..ii.. .iiii. iiiiir iiiiir .iiii. ..ii.."sv,
    "..ii.. .iiii. iiiiii iiiiii .iiii. ..ii.."sv,
    "..ii.. .iiii. iiiiii iiiiii .iiii. ..ii.."sv,
    "..ii.. .iiii. iiiiii iiiiii .iiii. ..ii.."sv,
};

constexpr std::array pellamRows {
    "llllllllllll iiiiiiiiiiii"sv,
    "llllllllllll iiiiiiiiiiii"sv,
    "llllllllllll ............"sv,
    "llllllllllll m.m.m.m.m.m."sv,
    "llllllllllll ............"sv,
    "llllllllllll m.m.m.r.m.m."sv,
    "llllllllllll ............"sv,
    "llllllllllll m.m.m.m.m.m."sv,
    "llllllllllll ............"sv,
    "llllllllllll m.m.m.m.m.m."sv,
    "llllllllllll ............"sv,
    "llllllllllll ............"sv,
};

constexpr std::array ruvaneRows {
    "....ii.... ....ii...."sv,
    "....mm.... ....mm...."sv,
    "....mm.... ....mm...."sv,
    "....ll.... ....ll...."sv,
    "immllrlmmi immllllmmi"sv,
    "immllllmmi immllllmmi"sv,
    "....ll.... ....ll...."sv,
    "....mm.... ....mm...."sv,
    "....mm.... ....mm...."sv,
    "....ii.... ....ii...."sv,
};

/// Where the drawn rows lie in the grid.
struct Corner {
    int x; ///< of the first letter
    int y; ///< of the first group
};

ZOLVoxelColor colorOf(char letter)
{
    return letter == 'm' ? mid : letter == 'l' ? light : letter == 'r' ? red : ink;
}

/// The cubes of a drawing whose last row stands at height `bottom`: from the floor up, from the rear to the
/// front, x upward.
template <std::size_t rows>
std::vector<ZOLVoxel> cubes(const std::array<std::string_view, rows>& drawn, Corner corner, int bottom = 0)
{
    std::vector<ZOLVoxel> list;
    int z = bottom;
    for (auto row = drawn.rbegin(); row != drawn.rend(); ++row, ++z) {
        ZOLVoxelCell at { corner.x, corner.y, z };
        for (const char letter : *row) {
            if (letter == ' ') {
                at = { corner.x, at.y + 1, z };
                continue;
            }
            if (letter != '.')
                list.push_back({ at.x, at.y, at.z, colorOf(letter) });
            ++at.x;
        }
    }
    return list;
}

std::array<ZOLVoxelModel, 6> built()
{
    return { {
        { "family", "zolwerk · family profile",
            "head circle, vertical slit with stem, red eye, crescent smile – from zol-logo-light.png",
            cubes(familyRows, { 2, 5 }),
            ZOLVoxelFlash { { { 3, 5, 6 }, { 3, 5, 7 }, { 4, 5, 6 }, { 4, 5, 7 }, { 3, 6, 6 }, { 3, 6, 7 },
                                { 4, 6, 6 }, { 4, 6, 7 } },
                light, 0.14 } },
        { "tessit", "tessit loop", "two opposite arrows, red tip on the outgoing one",
            cubes(tessitRows, { 1, 5 }), ZOLVoxelMirror { "x" } },
        { "vormel", "vormel trim", "panel: light plate, ink sidebar, three rows, red cursor",
            cubes(vormelRows, { 0, 4 }), ZOLVoxelCycle { { { 4, 5, 8 }, { 4, 5, 6 }, { 4, 5, 4 } }, red } },
        { "ostrel", "ostrel", "hex-plan crystal column, stepped tip, red core on the front face",
            cubes(ostrelRows, { 3, 3 }),
            ZOLVoxelFlash { { { 8, 5, 3 }, { 8, 5, 4 }, { 8, 6, 3 }, { 8, 6, 4 } }, red, 0.16 } },
        { "pellam", "pellam dial", "light plate, ink header, six-by-four day grid, red today",
            cubes(pellamRows, { 0, 4 }),
            ZOLVoxelCycle { { { 6, 5, 6 }, { 8, 5, 6 }, { 4, 5, 6 }, { 10, 5, 6 } }, red } },
        // The centre stands twice: the red cell goes to the top, back, to the bottom and back.
        { "ruvane", "ruvane",
            "четыре луча от центра, красный воксель это точка баланса, она ходит по вертикали",
            cubes(ruvaneRows, { 1, 5 }, 1),
            ZOLVoxelCycle { { { 6, 5, 8 }, { 6, 5, 6 }, { 6, 5, 4 }, { 6, 5, 6 } }, red } },
    } };
}

} // namespace

std::span<const ZOLVoxelModel> all()
{
    static const std::array<ZOLVoxelModel, 6> models = built();
    return models;
}

const ZOLVoxelModel& family() { return all()[0]; }
const ZOLVoxelModel& tessit() { return all()[1]; }
const ZOLVoxelModel& vormel() { return all()[2]; }
const ZOLVoxelModel& ostrel() { return all()[3]; }
const ZOLVoxelModel& pellam() { return all()[4]; }
const ZOLVoxelModel& ruvane() { return all()[5]; }

const ZOLVoxelModel* model(std::string_view named)
{
    const auto models = all();
    const auto at = std::ranges::find(models, named, &ZOLVoxelModel::name);
    return at == models.end() ? nullptr : &*at;
}

} // namespace ZOLVoxelModels

} // namespace ostrel
