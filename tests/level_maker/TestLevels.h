#pragma once

#include "Description.h"
#include "Maker.h"

#include <string>

namespace ql::maker::test {

/// Two rooms of 256 x 256 x 128 beside each other along x, joined by a passage of 64 x 64 that bends twice, so that the
/// second room is out of sight of most of the first. `extra` is added to the description.
inline std::string twoRooms(const std::string& extra = {}) {
  return R"(
level rooms density=32
sun to=0.3,0.2,0.9 colour=1,1,1
material wall plaster size=64
material sky sky map=fit sky
box   0   0 -16  256 256   0 wall     # first room
box   0   0 128  256 256 144 wall
box -16   0   0    0 256 128 wall
box   0 -16   0  256   0 128 wall
box   0 256   0  256 272 128 wall
box 256   0   0  272  32 128 wall
box 256  96   0  272 256 128 wall
box 256  32  64  272  96 128 wall
box 256   0 -16  400 256   0 wall     # the passage goes north, east and south again
box 256   0  64  400 256  80 wall
box 272  16   0  384  32  64 wall
box 304  32   0  352 192  64 wall
box 272 224   0  384 240  64 wall
box 400   0 -16  656 256   0 wall     # second room
box 400   0 128  656 256 144 wall
box 656   0   0  672 256 128 wall
box 400 -16   0  656   0 128 wall
box 400 256   0  656 272 128 wall
box 384   0   0  400  32 128 wall
box 384  64   0  400 256 128 wall
box 384  32  64  400  64 128 wall
entity {
  classname info_player_start
  origin 128 128 40
}
)" + extra;
}

/// One room with an opening in its roof to the sky, a lamp, a detail box on the floor and a column.
inline std::string oneRoom(const std::string& extra = {}) {
  return R"(
level room density=24
sun to=0.3,0.2,0.9 colour=2,2,1.8
material wall plaster size=64
material stone stone size=64
material sky sky map=fit sky
box   0   0 -16  256 256   0 wall
box   0   0 160  256 256 176 sky
box   0   0 128   96 256 160 wall
box  96  96 128  256 256 160 wall
box -16 -16 -16    0 272 176 wall
box 256 -16 -16  272 272 176 wall
box   0 -16 -16  256   0 176 wall
box   0 256 -16  256 272 176 wall
box 100 100 0 140 140 40 stone detail
revolve 60 60 0 stone 0,16 40,20 120,16
light 200 200 90 colour=1,0.6,0.3 power=90
entity {
  classname info_player_start
  origin 40 128 40
}
)" + extra;
}

inline MadeLevel structureOf(const std::string& description) {
  return makeStructure(parseDescription(description), MakeOptions{});
}

}  // namespace ql::maker::test
