#include "platform/fonts/Kerning.h"

#include <hb-ft.h>
#include <hb.h>

namespace ql::fonts {
namespace {

/// The script of the first character that has one: fonts kern each script by itself.
hb_script_t scriptOf(hb_unicode_funcs_t* unicode, char32_t left, char32_t right) {
  for (const char32_t c : {left, right}) {
    const hb_script_t script = hb_unicode_script(unicode, c);
    if (script != HB_SCRIPT_COMMON && script != HB_SCRIPT_INHERITED && script != HB_SCRIPT_UNKNOWN) return script;
  }
  return HB_SCRIPT_LATIN;
}

bool isAccent(hb_unicode_funcs_t* unicode, char32_t c) {
  return hb_unicode_general_category(unicode, c) == HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK;
}

}  // namespace

void Kerning::Destroy::operator()(hb_font_t* font) const { hb_font_destroy(font); }
void Kerning::Destroy::operator()(hb_buffer_t* buffer) const { hb_buffer_destroy(buffer); }

Kerning::Kerning(FT_Face face) : face_(face), font_(hb_ft_font_create(face, nullptr)), buffer_(hb_buffer_create()) {}

FT_Pos Kerning::between(char32_t left, char32_t right) const {
  constexpr hb_tag_t kOff[] = {HB_TAG('l', 'i', 'g', 'a'), HB_TAG('c', 'l', 'i', 'g'), HB_TAG('c', 'a', 'l', 't')};
  constexpr unsigned kFeatures = 4;
  hb_feature_t features[kFeatures] = {{HB_TAG('k', 'e', 'r', 'n'), 1, HB_FEATURE_GLOBAL_START, HB_FEATURE_GLOBAL_END}};
  for (unsigned i = 1; i < kFeatures; ++i)
    features[i] = {kOff[i - 1], 0, HB_FEATURE_GLOBAL_START, HB_FEATURE_GLOBAL_END};

  const char32_t pair[] = {left, right};
  const hb_codepoint_t glyphs[] = {FT_Get_Char_Index(face_, left), FT_Get_Char_Index(face_, right)};
  hb_unicode_funcs_t* const unicode = hb_unicode_funcs_get_default();
  if (glyphs[0] == 0 || glyphs[1] == 0 || isAccent(unicode, left) || isAccent(unicode, right)) return 0;
  hb_buffer_clear_contents(buffer_.get());
  for (unsigned i = 0; i < 2; ++i) hb_buffer_add(buffer_.get(), pair[i], i);
  hb_buffer_set_content_type(buffer_.get(), HB_BUFFER_CONTENT_TYPE_UNICODE);
  hb_buffer_set_direction(buffer_.get(), HB_DIRECTION_LTR);
  hb_buffer_set_script(buffer_.get(), scriptOf(unicode, left, right));
  hb_shape(font_.get(), buffer_.get(), features, kFeatures);

  unsigned count = 0, places = 0;
  const hb_glyph_info_t* const shaped = hb_buffer_get_glyph_infos(buffer_.get(), &count);
  const hb_glyph_position_t* const at = hb_buffer_get_glyph_positions(buffer_.get(), &places);
  // Other glyphs than the characters' own are forms that this engine does not draw.
  if (count != 2 || places != 2 || shaped[0].codepoint != glyphs[0] || shaped[1].codepoint != glyphs[1]) return 0;
  const hb_position_t apart = at[0].x_advance + at[1].x_offset - at[0].x_offset;
  return apart - hb_font_get_glyph_h_advance(font_.get(), glyphs[0]);
}

}  // namespace ql::fonts
