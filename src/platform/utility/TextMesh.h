/// @file
/// Text as a solid.
#pragma once

#include "platform/utility/SubsetMesh.h"

#include <memory>
#include <string_view>

namespace ql::fonts {
struct FontRequest;
}

namespace ql::utility {

/// Solid letters have 100 units per em, whatever size the font was asked in.
inline constexpr float kTextEm = 100;

/// The outlines of a text drawn out along z: the first line's baseline starts at the origin and runs along x, the back
/// lies in the plane z = 0, the front faces -z. Lines end at CR, LF or CRLF. Texture coordinates span the whole text.
/// @param deviation the most that straight pieces may leave the curves, thousandths of an em, from 0
/// @param extrusion depth in units, from 0
/// @throws device::DeviceError invalid call: numbers below 0, or a text that shows nothing
std::shared_ptr<SubsetMesh> createText(const fonts::FontRequest& font, std::string_view text, float deviation,
                                       float extrusion);

}  // namespace ql::utility
