/// @file
/// Finding the file of an installed font.
#pragma once

#include "platform/fonts/FontFace.h"

#include <optional>
#include <string>

namespace ql::fonts {

/// A face in a font file.
struct FontFile {
  std::string path;
  long index = 0;       ///< of the face, with a named instance in its upper half
  bool bold = false;    ///< the face itself is bold
  bool italic = false;  ///< the face itself slants
};

/// The installed face nearest to a request; DejaVu Sans (or, without it, whatever is nearest) when the family is not
/// installed; nothing when no font is.
std::optional<FontFile> findFont(const FontRequest& request);

}  // namespace ql::fonts
