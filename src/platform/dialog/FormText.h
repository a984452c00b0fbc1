/// @file
/// Texts of a form: the characters that a font needs, as pictures.
#pragma once

#include "platform/device/Form.h"

#include <string>
#include <string_view>

struct ImFontAtlas;

namespace ql::dialog {

/// A text in UTF-8. Characters that the drawing library cannot number become question marks.
std::string shownText(std::string_view text);
/// A caption: the same, with ampersands as a reader sees them.
std::string shownCaption(std::string_view caption);

/// Fills an atlas with the installed face nearest to the form's own, as the engine draws its other texts; the drawing
/// library's built-in font where no font is installed. Holds Latin letters and what the form's texts use.
/// @param scale 1 at 96 dots per inch
void fillAtlas(ImFontAtlas& atlas, const device::FormContent& content, float scale);

}  // namespace ql::dialog
