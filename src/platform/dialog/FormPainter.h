/// @file
/// Draws what the drawing library lists with SDL's own software renderer: it needs no graphics driver and leaves the
/// current OpenGL context of the host alone.
#pragma once

#include <memory>

struct ImDrawData;
struct ImFontAtlas;
struct SDL_Renderer;
struct SDL_Texture;
struct SDL_Window;

namespace ql::dialog {

class FormPainter {
 public:
  explicit FormPainter(SDL_Window* window);
  /// False when the window system refused a renderer.
  bool works() const { return renderer_ != nullptr; }
  /// The size of the picture in pixels: with the window's size the ratio of a dense display.
  void size(int& width, int& height) const;
  /// Hands the characters to the renderer; the atlas may then be drawn with.
  void upload(ImFontAtlas& atlas);
  void draw(const ImDrawData& data);

 private:
  struct Free {
    void operator()(SDL_Renderer* renderer) const;
    void operator()(SDL_Texture* texture) const;
  };
  std::unique_ptr<SDL_Renderer, Free> renderer_;
  std::unique_ptr<SDL_Texture, Free> characters_;
};

}  // namespace ql::dialog
