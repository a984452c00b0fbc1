/// @file
/// How far apart two characters of a font stand.
#pragma once

#include <ft2build.h>
#include FT_FREETYPE_H

#include <memory>

struct hb_font_t;
struct hb_buffer_t;

namespace ql::fonts {

/// Asks a font for its pairs: its kerning feature (of any script), or its older kerning table.
class Kerning {
 public:
  /// @param face outlives this object, at its final size
  explicit Kerning(FT_Face face);
  /// How much further apart than their advances tell two characters stand, 26.6 fixed point; 0 for characters that
  /// the font lacks or joins into one, and for accents.
  FT_Pos between(char32_t left, char32_t right) const;

 private:
  struct Destroy {
    void operator()(hb_font_t* font) const;
    void operator()(hb_buffer_t* buffer) const;
  };
  FT_Face face_;
  std::unique_ptr<hb_font_t, Destroy> font_;
  std::unique_ptr<hb_buffer_t, Destroy> buffer_;
};

}  // namespace ql::fonts
