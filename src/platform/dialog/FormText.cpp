#include "platform/dialog/FormText.h"

#include "platform/fonts/FontFace.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include <imgui.h>

namespace ql::dialog {
namespace {

constexpr float kPoints = 10;
constexpr float kBuiltInPixels = 13;
constexpr char32_t kFirst = 0x20, kLastLatin = 0xFF, kFirstControl = 0x7F, kLastControl = 0x9F;
constexpr char32_t kLargest = IM_UNICODE_CODEPOINT_MAX;

std::set<char32_t> charactersOf(const device::FormContent& content) {
  std::set<char32_t> all;
  for (char32_t c = kFirst; c <= kLastLatin; ++c)
    if (c < kFirstControl || c > kLastControl) all.insert(c);
  const auto add = [&all](std::string_view text) {
    for (const char32_t c : fonts::characters(text))
      if (c > kLastControl && c <= kLargest) all.insert(c);
  };
  add(content.checkBox);
  for (const std::string& button : content.buttons) add(button);
  for (const device::FormContent::List& list : content.lists) {
    add(list.label);
    for (const std::string& entry : list.entries) add(entry);
  }
  return all;
}

}  // namespace

std::string shownText(std::string_view text) { return host::toUtf8(text); }

std::string shownCaption(std::string_view caption) {
  std::string shown;
  for (std::size_t i = 0; i < caption.size(); ++i) {
    if (caption[i] == '&' && ++i == caption.size()) break;
    shown += caption[i];
  }
  return shownText(shown);
}

void fillAtlas(ImFontAtlas& atlas, const device::FormContent& content, float scale) {
  const fonts::FontFace face({.face = content.font, .points = kPoints * scale});
  ImFontConfig config;
  if (face.render(U'O').coverage.empty()) {
    config.SizePixels = std::round(kBuiltInPixels * scale);
    atlas.AddFontDefault(&config);
    atlas.Build();
    return;
  }
  // The built-in font carries ours: every character is replaced by a picture.
  static constexpr ImWchar kSpaceOnly[] = {U' ', U' ', 0};
  config.SizePixels = static_cast<float>(face.lineHeight());
  config.GlyphRanges = kSpaceOnly;
  ImFont* font = atlas.AddFontDefault(&config);
  std::vector<std::pair<int, fonts::Glyph>> placed;
  for (const char32_t c : charactersOf(content)) {
    fonts::Glyph glyph = face.render(c);
    const int id =
        atlas.AddCustomRectFontGlyph(font, static_cast<ImWchar>(c), std::max(glyph.width, 1), std::max(glyph.height, 1),
                                     static_cast<float>(glyph.advance),
                                     {static_cast<float>(glyph.left), static_cast<float>(face.ascent() - glyph.top)});
    placed.emplace_back(id, std::move(glyph));
  }
  atlas.Build();
  unsigned char* pixels = nullptr;
  int width = 0;
  atlas.GetTexDataAsAlpha8(&pixels, &width, nullptr);
  for (const auto& [id, glyph] : placed) {
    const ImFontAtlasCustomRect* place = atlas.GetCustomRectByIndex(id);
    if (!place->IsPacked()) continue;
    for (std::int32_t y = 0; y < glyph.height; ++y)
      std::copy_n(glyph.coverage.data() + static_cast<std::ptrdiff_t>(y) * glyph.width, glyph.width,
                  pixels + static_cast<std::ptrdiff_t>(place->Y + y) * width + place->X);
  }
}

}  // namespace ql::dialog
