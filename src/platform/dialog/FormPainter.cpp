#include "platform/dialog/FormPainter.h"

#include <SDL.h>
#include <imgui.h>

namespace ql::dialog {

static_assert(sizeof(SDL_Color) == sizeof(ImU32) && sizeof(ImDrawVert) == 20, "colours are handed over as they lie");

void FormPainter::Free::operator()(SDL_Renderer* renderer) const { SDL_DestroyRenderer(renderer); }
void FormPainter::Free::operator()(SDL_Texture* texture) const { SDL_DestroyTexture(texture); }

FormPainter::FormPainter(SDL_Window* window) : renderer_(SDL_CreateRenderer(window, -1, SDL_RENDERER_SOFTWARE)) {}

void FormPainter::size(int& width, int& height) const { SDL_GetRendererOutputSize(renderer_.get(), &width, &height); }

void FormPainter::upload(ImFontAtlas& atlas) {
  unsigned char* pixels = nullptr;
  int width = 0, height = 0;
  atlas.GetTexDataAsRGBA32(&pixels, &width, &height);
  characters_.reset(
      SDL_CreateTexture(renderer_.get(), SDL_PIXELFORMAT_ABGR8888, SDL_TEXTUREACCESS_STATIC, width, height));
  if (characters_) {
    SDL_UpdateTexture(characters_.get(), nullptr, pixels, 4 * width);
    SDL_SetTextureBlendMode(characters_.get(), SDL_BLENDMODE_BLEND);
    SDL_SetTextureScaleMode(characters_.get(), SDL_ScaleModeNearest);
  }
  atlas.SetTexID(characters_.get());
}

void FormPainter::draw(const ImDrawData& data) {
  SDL_Renderer* renderer = renderer_.get();
  SDL_SetRenderDrawColor(renderer, 255, 255, 255, 255);
  SDL_RenderClear(renderer);
  for (int i = 0; i < data.CmdListsCount; ++i) {
    const ImDrawList& list = *data.CmdLists[i];
    for (const ImDrawCmd& command : list.CmdBuffer) {
      if (command.UserCallback != nullptr || command.ElemCount == 0) continue;
      const ImVec4& clip = command.ClipRect;
      const SDL_Rect area{static_cast<int>(clip.x), static_cast<int>(clip.y), static_cast<int>(clip.z - clip.x),
                          static_cast<int>(clip.w - clip.y)};
      if (area.w <= 0 || area.h <= 0) continue;
      SDL_RenderSetClipRect(renderer, &area);
      const ImDrawVert* vertices = list.VtxBuffer.Data + command.VtxOffset;
      SDL_RenderGeometryRaw(
          renderer, static_cast<SDL_Texture*>(command.GetTexID()), &vertices->pos.x, sizeof(ImDrawVert),
          reinterpret_cast<const SDL_Color*>(&vertices->col), sizeof(ImDrawVert), &vertices->uv.x, sizeof(ImDrawVert),
          list.VtxBuffer.Size - static_cast<int>(command.VtxOffset), list.IdxBuffer.Data + command.IdxOffset,
          static_cast<int>(command.ElemCount), sizeof(ImDrawIdx));
    }
  }
  SDL_RenderSetClipRect(renderer, nullptr);
  SDL_RenderPresent(renderer);
}

}  // namespace ql::dialog
